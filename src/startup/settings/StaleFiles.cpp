#include "startup/settings/StaleFiles.h"

#include <QDateTime>
#include <QDir>

#include "platform/Files.h"

namespace venlo
{

namespace
{
constexpr qint64 staleAfterSeconds = 3600;
}

void removeStale(const QString &folder, const QString &pattern)
{
    const QDateTime limit = QDateTime::currentDateTimeUtc().addSecs(-staleAfterSeconds);
    const auto filter = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    const QFileInfoList found = QDir(folder).entryInfoList({pattern}, filter);
    for (const QFileInfo &entry : found) {
        if (entry.lastModified() > limit)
            continue;
        if (entry.isDir() && !entry.isSymLink()) {
            QString why;
            // What stays is tried again by the next run.
            static_cast<void>(removeFolderTree(entry.absoluteFilePath(), why));
        } else {
            QFile::remove(entry.absoluteFilePath());
        }
    }
}

} // namespace venlo
