// Launch records of any length.
#include "startup/LaunchRecord.h"

#include "FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const auto record = venlo::LaunchRecord::parse(fuzzInput(data, size));
    promise(!record.usable() || (record.width > 0 && record.height > 0));
    return 0;
}
