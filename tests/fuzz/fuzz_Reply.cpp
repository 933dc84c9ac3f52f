// Replies of a control connection, in pieces: the first byte says how long a piece is.
#include "ftp/protocol/Reply.h"

#include "FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray bytes = fuzzInput(data, size);
    const qsizetype piece = bytes.isEmpty() ? 1 : 1 + static_cast<quint8>(bytes.at(0));
    venlo::ReplyParser parser;
    for (qsizetype from = 1; from < bytes.size(); from += piece) {
        parser.feed(bytes.mid(from, piece));
        while (const auto reply = parser.next()) {
            promise(reply->code >= 100 && reply->code <= 599);
            (void)venlo::parsePwdPath(*reply);
            (void)venlo::parseEpsvPort(*reply);
            (void)venlo::parsePasvPort(*reply);
            (void)venlo::parseMdtm(*reply);
        }
    }
    return 0;
}
