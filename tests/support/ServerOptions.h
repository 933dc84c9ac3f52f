#pragma once

#include <QByteArray>
#include <QDateTime>

namespace venlo::test
{

/// How STAT with a path is answered.
enum class StatPath {
    Unknown,       ///< 502
    Listed,        ///< "." and ".." first; a path that is not there shows nothing, without an error
    WithoutItself, ///< neither "." nor ".."
    ItselfForAll,  ///< "." and "..", and names that begin with ".", only with "-a"
    FirstHalf,     ///< the other entries are left out without a word
    NotHeeded      ///< the current directory is shown whatever the path
};

/// How "-a" in front of STAT's path is answered.
enum class StatAll {
    Taken,         ///< all of the folder is shown, "." and ".." first
    PartOfThePath, ///< which is not there
    Nothing,       ///< a status without a line
    Refused,       ///< 501
    WithoutItself, ///< the entries only
    FirstHalf,     ///< of them, behind "." and ".."
    NotHeeded      ///< the current directory is shown whatever the path
};

/// How LIST looks.
enum class ListDialect {
    Unix,    ///< ls -l: minutes for half a year, then the year
    UnixDay, ///< ls -l with the year for every entry: only the day is known
    Dos,     ///< MM-dd-yy hh:mmAM <DIR> name
    Eplf     ///< +m...,s...,/,\tname (times in UTC)
};

/// What becomes of the lines, other than ABOR, that come while a transfer runs.
enum class EarlyLines {
    InOrder,        ///< they wait for its end (RFC 959)
    EndTheTransfer, ///< the first ends it without a completion reply, and is answered
    AnswerFirst,    ///< the same, and the completion reply comes behind that answer
    CompleteIt,     ///< the same behind a completion reply that knows no better
    Dropped,
    Refused, ///< each is answered at once with 503
    CloseConnection
};

/// What kind of server a ScriptedServer is. Set before start().
struct ServerOptions {
    QByteArray user = "user";
    QByteArray password = "pass";
    QByteArray greeting = "scripted";
    QByteArray home = "/";
    bool ipv6 = false;

    // What it can do; what it cannot is answered with 500 and not shown by FEAT.
    bool feat = true;
    bool epsv = true;
    bool pasv = true;
    bool active = true; ///< PORT and EPRT
    bool mlsd = true;
    bool mfmt = true;
    bool mdtm = true;
    bool mdtmSets =
        false; ///< "MDTM time name" sets the time; otherwise that is a name with a blank
    bool size = true;
    bool utf8 = true;
    bool abor = true;

    ListDialect dialect = ListDialect::Unix;
    int listOffsetSeconds = 9 * 3600; ///< what LIST's wall clock is ahead of UTC
    QDateTime summerUntil;            ///< times before it show an hour more in LIST and STAT
    bool listsDotNames = false;       ///< in LIST and MLSD
    StatPath stat = StatPath::Unknown;
    StatAll statAll = StatAll::PartOfThePath;
    bool statShowsDotNames = true;
    /// The host in the PASV reply, "127,0,0,1" form.
    QByteArray pasvHost = "127,0,0,1";
    /// Whatever is asked for is there and done: any directory can be entered and listed, any file
    /// fetched ("evil"), and what is deleted, made or sent was.
    bool agreesToAll = false;
    /// Closes the control connection after every reply from the login on.
    bool closesAfterEachCommand = false;
    /// The data connection is opened before the opening reply (what most servers do).
    bool acceptsBeforeOpening = true;
    EarlyLines earlyLines = EarlyLines::InOrder;
    bool firstLineOnly = false;    ///< of what comes in one go; the rest is lost
    bool forgetsPortAtCwd = false; ///< that EPSV or PASV gave
};

} // namespace venlo::test
