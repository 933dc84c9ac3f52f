#include "localpane/FolderPaths.h"

#include <cstdlib>

#include <QDir>
#include <QFileInfo>

namespace venlo
{

namespace
{
const QChar separator = QDir::separator();

bool isDriveLetter(const QString &path)
{
    return path.size() == 2 && path.at(0).isLetter() && path.at(1) == QLatin1Char(':');
}
} // namespace

QString tidyFolder(const QString &path)
{
    if (path.isEmpty())
        return path;
    const QString clean = QDir::cleanPath(QDir::fromNativeSeparators(path));
    const bool bareDrive = separator == QLatin1Char('\\') && isDriveLetter(clean);
    return QDir::toNativeSeparators(bareDrive ? clean + QLatin1Char('/') : clean);
}

QString topOf(const QString &path)
{
    const QString tidy = tidyFolder(path);
    if (separator != QLatin1Char('\\'))
        return QStringLiteral("/");
    if (tidy.startsWith(QLatin1String("\\\\"))) {
        const qsizetype server = tidy.indexOf(separator, 2);
        const qsizetype share = server < 0 ? -1 : tidy.indexOf(separator, server + 1);
        return share < 0 ? tidy : tidy.left(share);
    }
    return tidy.left(2) + separator;
}

bool isBareDrive(const QString &folder)
{
    return !folder.isEmpty() && isSameFolder(folder, topOf(folder));
}

QString parentFolder(const QString &path)
{
    const QString tidy = tidyFolder(path);
    const QString top = topOf(tidy);
    const qsizetype cut = tidy.lastIndexOf(separator);
    return cut < top.size() ? top : tidy.left(cut);
}

Qt::CaseSensitivity nameCase()
{
    return separator == QLatin1Char('\\') ? Qt::CaseInsensitive : Qt::CaseSensitive;
}

bool isSameFolder(const QString &one, const QString &other)
{
    return one.compare(other, nameCase()) == 0;
}

QStringList namesBelow(const QString &root, const QString &path, bool &found)
{
    found = isSameFolder(root, path);
    if (found || root.isEmpty())
        return {};
    const QString inside = root.endsWith(separator) ? root : root + separator;
    found = path.startsWith(inside, nameCase());
    return found ? path.mid(inside.size()).split(separator, Qt::SkipEmptyParts) : QStringList();
}

bool folderExists(const QString &path)
{
    const QFileInfo info(path);
    return info.isAbsolute() && info.isDir();
}

FolderStamp FolderStamp::of(const QString &folder)
{
    constexpr qint64 coarsest =
        20; // milliseconds between two ticks of the clock files are dated by
    const QDateTime date = QFileInfo(folder).lastModified();
    // A date ahead of the clock (another machine's) never comes again with the next change.
    return {date, std::abs(date.msecsTo(QDateTime::currentDateTime())) <= coarsest};
}

QString nearestExisting(const QString &path)
{
    QString folder = tidyFolder(path);
    while (!folderExists(folder) && !isBareDrive(folder)) {
        const QString above = parentFolder(folder);
        if (above.size() >= folder.size()) // it names no drive
            break;
        folder = above;
    }
    if (folderExists(folder))
        return folder;
    const QString home = tidyFolder(QDir::homePath());
    return folderExists(home) ? home : topOf(QDir::rootPath());
}

} // namespace venlo
