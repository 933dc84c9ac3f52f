#include "platform/FileLook.h"

#include <windows.h>

#include <shellapi.h>

#include <QFileInfo>
#include <QImage>
#include <QPixmap>

#include "platform/FilesystemPath.h"
#include "platform/LongPath_windows.h"

namespace venlo
{

namespace
{
constexpr UINT smallIcon = SHGFI_ICON | SHGFI_SMALLICON; // 257

/// Asks the shell about a path. What it cannot find (a path beyond its length limit) is judged by
/// the name alone.
bool askShell(const QString &path, UINT flags, SHFILEINFOW &answer)
{
    const std::wstring native = shownPath(filesystemPath(path)).toStdWString();
    if (SHGetFileInfoW(native.c_str(), 0, &answer, sizeof answer, flags) != 0)
        return true;
    const QFileInfo info(path);
    const DWORD kind = info.isDir() ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
    const std::wstring name = info.fileName().toStdWString();
    return SHGetFileInfoW(name.c_str(), kind, &answer, sizeof answer,
                          flags | SHGFI_USEFILEATTRIBUTES) != 0;
}
} // namespace

FileIcon fileIcon(const QString &path)
{
    SHFILEINFOW answer = {};
    if (!askShell(path, smallIcon, answer) || answer.hIcon == nullptr)
        return {};
    const QPixmap picture = QPixmap::fromImage(QImage::fromHICON(answer.hIcon));
    DestroyIcon(answer.hIcon);
    return {answer.iIcon, QIcon(picture)};
}

QString fileTypeName(const QString &path)
{
    SHFILEINFOW answer = {};
    return askShell(path, SHGFI_TYPENAME, answer) ? QString::fromWCharArray(answer.szTypeName)
                                                  : QString();
}

QString attributeLetters(const EntryLook &info)
{
    const DWORD bits = GetFileAttributesW(longPath(info.absoluteFilePath()).c_str());
    if (bits == INVALID_FILE_ATTRIBUTES)
        return {};
    QString letters;
    if ((bits & FILE_ATTRIBUTE_READONLY) != 0)
        letters += QLatin1Char('R');
    if ((bits & FILE_ATTRIBUTE_SYSTEM) != 0)
        letters += QLatin1Char('S');
    if ((bits & FILE_ATTRIBUTE_HIDDEN) != 0)
        letters += QLatin1Char('H');
    if ((bits & FILE_ATTRIBUTE_ARCHIVE) != 0)
        letters += QLatin1Char('A');
    return letters;
}

} // namespace venlo
