#include "faults/FaultKinds.h"

#include <QHash>

namespace venlo::test
{

namespace
{
using Kind = RelayFault::Kind;

struct Shape {
    const char *name;
    Kind kind;
    const char *reply = "";
    qint64 bytes = 0;
};

constexpr Shape anywhere[] = {
    {"dropped", Kind::Drop},
    {"reset", Kind::Reset},
    {"stalled", Kind::Stall},
    {"421", Kind::Reply, "421 closing\r\n"},
    {"426", Kind::Reply, "426 aborted\r\n"},
    {"450", Kind::Reply, "450 busy\r\n"},
    {"451", Kind::Reply, "451 local error\r\n"},
    {"452", Kind::Reply, "452 no space\r\n"},
    {"530", Kind::Reply, "530 not logged in\r\n"},
    {"550", Kind::Reply, "550 no\r\n"},
    {"552", Kind::Reply, "552 quota\r\n"},
    {"half reply", Kind::HalfReply},
    {"half reply, dropped", Kind::HalfReplyDrop},
    {"garbage", Kind::Garbage},
    {"late", Kind::Delay},
    {"done, dropped", Kind::DropAfter},
    {"done, reset", Kind::ResetAfter},
    {"done, stalled", Kind::StallAfter},
    {"done, 421", Kind::ReplyAfter, "421 closing\r\n"},
    {"done, 426", Kind::ReplyAfter, "426 aborted\r\n"},
    {"done, 451", Kind::ReplyAfter, "451 local error\r\n"},
    {"done, 550", Kind::ReplyAfter, "550 no\r\n"},
};

constexpr Shape preparing[] = {
    {"closed port", Kind::ClosedPort},
    {"wrong address", Kind::WrongAddress},
};

constexpr Shape moving[] = {
    {"data and control dropped", Kind::DataDrop, "", 100},
    {"data reset", Kind::DataReset, "", 100},
    {"data stalled", Kind::DataStall, "", 100},
    {"data closed at once, 226", Kind::DataTruncate, "", 0},
    {"data closed early, 226", Kind::DataTruncate, "", 100},
    {"data cut, 426", Kind::DataCut, "426 cut\r\n", 100},
    {"data cut, 451", Kind::DataCut, "451 disk\r\n", 100},
    {"data cut, 552", Kind::DataCut, "552 quota\r\n", 0},
    {"data slow", Kind::DataSlow},
};

template <size_t Size>
void add(std::vector<NamedFault> &faults, const Shape (&shapes)[Size], const RelayFault &step)
{
    const bool lists = step.verb == "LIST" || step.verb == "MLSD";
    for (const Shape &shape : shapes) {
        // Said each time, that is what an empty directory looks like.
        if (lists && step.always && shape.kind == Kind::DataTruncate && shape.bytes == 0)
            continue;
        RelayFault fault = step;
        fault.kind = shape.kind;
        fault.reply = shape.reply;
        fault.bytes = shape.bytes;
        faults.push_back({step.verb + ' ' + QByteArray::number(step.occurrence) +
                              (step.always ? " on, " : ", ") + shape.name,
                          fault});
    }
}
} // namespace

std::vector<NamedFault> faultsAt(const QByteArray &verb, int occurrence, bool always)
{
    const RelayFault step{verb, occurrence, always};
    std::vector<NamedFault> faults;
    add(faults, anywhere, step);
    if (verb == "EPSV" || verb == "PASV")
        add(faults, preparing, step);
    if (verb == "LIST" || verb == "MLSD" || verb == "RETR" || verb == "STOR")
        add(faults, moving, step);
    return faults;
}

std::vector<NamedFault> faultsOf(const QList<QByteArray> &verbs, bool always)
{
    QHash<QByteArray, int> seen;
    std::vector<NamedFault> faults;
    for (const QByteArray &verb : verbs) {
        if (verb == "QUIT")
            continue;
        for (NamedFault &fault : faultsAt(verb, ++seen[verb], always))
            faults.push_back(std::move(fault));
    }
    return faults;
}

} // namespace venlo::test
