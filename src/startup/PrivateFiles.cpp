#include "startup/PrivateFiles.h"

#include <QDir>

#include "platform/Files.h"

namespace venlo
{

namespace
{
/// The database with its journals and copies, settings, logs and notes; in a folder that somebody
/// named there may be other files, which are not the program's to touch.
QStringList ownFiles()
{
    return {QStringLiteral("dbFtp*.mdb*"),  QStringLiteral("User.xml"),
            QStringLiteral("FtpErr.Log"),   QStringLiteral("FtpEvent*.Log"),
            QStringLiteral("Upload.note"),  QStringLiteral("Run.lock"),
            QStringLiteral("Downloads-*.*")};
}

QString outcome(const QString &name, bool closed)
{
    return name + (closed ? QStringLiteral(" was open to other users: closed to them")
                          : QStringLiteral(" is open to other users and cannot be closed to them"));
}
} // namespace

QStringList closeToOthers(const QString &userDataFolder, bool ownFolder)
{
    QStringList lines;
    const QDir folder(userDataFolder);
    if (!folder.exists())
        return lines;
    if (ownFolder && openToOthers(folder.path()))
        lines.append(outcome(folder.path(), makePrivateFolder(folder.path())));
    for (const QString &name : folder.entryList(ownFiles(), QDir::Files | QDir::Hidden)) {
        const QString path = folder.filePath(name);
        if (openToOthers(path))
            lines.append(outcome(name, makePrivateFile(path)));
    }
    return lines;
}

} // namespace venlo
