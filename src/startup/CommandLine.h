#pragma once

#include <QString>
#include <QStringList>

namespace venlo
{

/// Containment without regard to letter case: position becomes the 1-based place of the first
/// occurrence of part in text, 0 when there is none. An empty part is found at 1, but is not held:
/// the result is then false.
bool InStrHas(const QString &text, const QString &part, qsizetype &position);

/// What the command line asks for. A value; reads no file and checks no verb for arguments.
///
/// Grammar: the path of a launch record (it holds "UT_ACT.pdat"), or "/b" and a verb followed by
/// arguments, each introduced by "|". Anything else is an empty verb, which shows the window.
struct CommandLine {
    QString raw;              ///< everything behind the program's name
    QString verb;             ///< lower case, trimmed; may be a part of a verb that runs nothing
    QStringList arguments;    ///< 0 is the verb part as written, 1.. the arguments as they stand
    QString launchRecordPath; ///< empty unless a launch record is named
    bool batch = false;       ///< "/b" stood before the first "|"

    [[nodiscard]] static CommandLine parse(const QString &raw);
};

} // namespace venlo
