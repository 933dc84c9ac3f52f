#include "platform/TemporaryName.h"

#include <algorithm>
#include <utility>

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include "platform/Disk.h"
#include "platform/FilesystemPath.h"

namespace venlo
{

namespace
{
constexpr QLatin1String prefix(".venlo-");
constexpr QLatin1String suffix(".part");
constexpr int digits = 8;

bool isLowerHex(QChar c)
{
    return (c >= QLatin1Char('0') && c <= QLatin1Char('9')) ||
           (c >= QLatin1Char('a') && c <= QLatin1Char('f'));
}
} // namespace

QString newTemporaryName()
{
    const quint32 number = QRandomGenerator::global()->generate();
    return prefix + QStringLiteral("%1").arg(number, digits, 16, QLatin1Char('0')) + suffix;
}

bool isTemporaryName(const QString &fileName)
{
    if (fileName.size() != prefix.size() + digits + suffix.size() || !fileName.startsWith(prefix) ||
        !fileName.endsWith(suffix))
        return false;
    const QString number = fileName.mid(prefix.size(), digits);
    return std::all_of(number.begin(), number.end(), isLowerHex);
}

int sweepTemporaryNames(const QString &folder, const QDateTime &before, const QStringList &live)
{
    // By the names alone: the folder may hold thousands of other files.
    QFileInfoList entries;
    std::error_code error;
    const QString inside = folder + QLatin1Char('/');
    disk::directory_iterator item(filesystemPath(inside), error);
    for (const disk::directory_iterator end; !error && item != end; item.increment(error)) {
        const QString name = shownPath(item->path().filename());
        if (isTemporaryName(name))
            entries.append(QFileInfo(inside + name));
    }
    int deleted = 0;
    for (const QFileInfo &entry : std::as_const(entries)) {
        if (!entry.isDir() && entry.lastModified() < before &&
            !live.contains(entry.absoluteFilePath()) && QFile::remove(entry.filePath()))
            ++deleted;
    }
    return deleted;
}

} // namespace venlo
