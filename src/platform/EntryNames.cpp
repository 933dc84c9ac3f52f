#include "platform/EntryNames.h"

#include <QFile>

#include "platform/Disk.h"
#include "platform/EntryCopy.h"
#include "platform/FilesystemPath.h"

namespace venlo
{

bool makeFolder(const QString &path, QString &why)
{
    std::error_code error;
    if (disk::create_directory(filesystemPath(path), error))
        return true;
    // A folder that is there already is no error of the call, but none was made.
    why = systemWords(error ? error : std::make_error_code(std::errc::file_exists));
    return false;
}

QString shortenedName(QString name, qsizetype longest)
{
    while (name.size() > 1 && QFile::encodeName(name).size() > longest)
        name.chop(name.back().isLowSurrogate() ? 2 : 1);
    return name;
}

bool giveName(const QString &from, const QString &to, QString &why)
{
    std::error_code error;
    if (renameEntry(filesystemPath(from), filesystemPath(to), false, error))
        return true;
    why = systemWords(error);
    return false;
}

} // namespace venlo
