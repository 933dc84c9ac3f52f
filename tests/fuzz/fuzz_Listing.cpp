// Lines of a listing in any dialect; an odd first byte makes it MLSD.
#include "ftp/protocol/ListingParser.h"
#include "ftp/protocol/NameCodec.h"

#include "FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray bytes = fuzzInput(data, size);
    const bool mlsd = !bytes.isEmpty() && (bytes.at(0) & 1) != 0;
    venlo::NameCodec codec;
    venlo::ListingParser parser(mlsd ? venlo::ListingParser::Source::Mlsd
                                     : venlo::ListingParser::Source::List,
                                codec, QDate(2026, 11, 21));
    for (const QByteArray &line : bytes.mid(1).split('\n'))
        parser.addLine(line);
    const venlo::Listing listing = parser.take();
    for (const venlo::ListedEntry &entry : listing.entries) {
        promise(!entry.rawName.isEmpty() && entry.rawName != "." && entry.rawName != "..");
        promise(!entry.rawName.contains('/') && !entry.rawName.contains('\0') &&
                !entry.rawName.contains('\r'));
        promise(entry.size >= 0);
    }
    return 0;
}
