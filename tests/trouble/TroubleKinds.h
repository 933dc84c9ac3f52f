#pragma once

#include <functional>
#include <vector>

#include <QByteArray>
#include <QList>
#include <QString>

#include "support/ScriptedServer.h"
#include "support/Trees.h"

namespace venlo::test
{

/// What this machine does to an operation.
enum class Trouble {
    None,
    DiskFull,          ///< of the local folder
    UserDataFull,      ///< the database and the logs cannot grow
    ReadOnlyRoot,      ///< the local folder takes no entries
    ReadOnlyFolder,    ///< a folder in it does not
    ReadOnlyFiles,     ///< files may be read only
    Unreadable,        ///< files may not be read at all, as those another program has locked
    DeniedFolder,      ///< a folder in the middle may not be opened
    DeniedEntries,     ///< it shows its names and nothing else
    VanishedRoot,      ///< the local folder is gone
    VanishedEntries,   ///< a folder and a file are gone that were chosen
    VanishesMeanwhile, ///< the same, once the first bytes move
    Grows,             ///< files get longer each time they are sent
    Shrinks,           ///< files get shorter while they are sent
    ShrinksAlways,
    NameTooLong,   ///< 200 kana: 600 bytes here
    LinkInstead,   ///< a folder has become a link to another one
    LinkMeanwhile, ///< it does so once the first bytes move
    LinkInRemoval, ///< it does so between the last look and a deletion in it
    Leftover,      ///< temporary downloads of a run that was killed
    ClockSetBack   ///< everything there is lies in the future
};

[[nodiscard]] QByteArray nameOf(Trouble trouble);

/// The folder that trouble comes to, and the files.
struct TroubleSpots {
    QByteArray folder; ///< relative
    QList<QByteArray> files;
    QByteArray firstMoved; ///< name whose transfer is the moment of what happens meanwhile
};

/// Brings one kind of trouble into a local folder, and takes it away again.
class TroubleMaker
{
public:
    /// top: holds "here", the local folder, and "outside", which is nobody's business.
    TroubleMaker(Trouble trouble, TroubleSpots spots, const QString &top);
    ~TroubleMaker();
    TroubleMaker(const TroubleMaker &) = delete;
    TroubleMaker &operator=(const TroubleMaker &) = delete;

    [[nodiscard]] QString here() const { return m_top + QStringLiteral("/here"); }
    [[nodiscard]] QString outside() const { return m_top + QStringLiteral("/outside"); }
    /// verb: of the commands that move bytes.
    void begin(ScriptedServer &server, const QByteArray &verb);
    void relieve(ScriptedServer &server);

private:
    [[nodiscard]] QString at(const QByteArray &relative) const;
    void rights(const QByteArray &relative, unsigned mode);
    void vanish() const;
    void putLink();
    void fillDisk();
    void meanwhile(ScriptedServer &server, const QByteArray &verb);
    void whenSent(ScriptedServer &server, const std::function<void(const QString &)> &change,
                  bool always);

    Trouble m_trouble;
    TroubleSpots m_spots;
    QString m_top;
    std::vector<std::pair<QString, unsigned>> m_rights; ///< as they were
};

} // namespace venlo::test
