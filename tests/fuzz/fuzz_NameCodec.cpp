// Names as bytes: decoding never fails, and what is valid UTF-8 goes back as it came.
#include "ftp/protocol/NameCodec.h"

#include "FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray bytes = fuzzInput(data, size);
    venlo::NameCodec codec;
    codec.reset(!bytes.isEmpty() && (bytes.at(0) & 1) != 0);
    const QByteArray name = bytes.mid(1);
    const QString decoded = codec.decode(name);
    promise(name.isEmpty() == decoded.isEmpty());
    (void)codec.encode(decoded);
    if (decoded.toUtf8() == name) {
        codec.reset(true);
        promise(codec.encode(decoded) == name);
    }
    return 0;
}
