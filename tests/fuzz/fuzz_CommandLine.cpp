// Command lines: a verb is one of the known ones or a part of them, or empty.
#include "startup/CommandLine.h"

#include "FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const auto line = venlo::CommandLine::parse(QString::fromUtf8(fuzzInput(data, size)));
    promise(line.verb.isEmpty() ||
            QStringLiteral("syncup.syncdown.put.get.open.openp").contains(line.verb));
    promise(line.verb.isEmpty() || !line.arguments.isEmpty());
    return 0;
}
