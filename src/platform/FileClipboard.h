#pragma once

#include <memory>

#include <QByteArray>
#include <QString>
#include <QStringList>

class QMimeData;

namespace venlo
{

/// Preferred drop effects: what whoever pastes a list of files is to do with them.
constexpr quint32 dropEffectNone = 0;
constexpr quint32 dropEffectCopy = 1;
constexpr quint32 dropEffectMove = 2;
constexpr quint32 cutEffect = 2;
constexpr quint32 copyEffect = 5; ///< copy and link

/// Files and folders as the clipboard carries them between programs.
struct FileClip {
    QStringList paths;
    quint32 effect = dropEffectNone; ///< none when whoever put them there did not say
};

/// Replaces what the clipboard holds.
void putFilesOnClipboard(const QStringList &paths, quint32 effect);
/// Empty when it holds no files.
[[nodiscard]] FileClip filesOnClipboard();

/// The list as the desktops write it: text/uri-list and their markers for cut and copy.
[[nodiscard]] std::unique_ptr<QMimeData> fileClipData(const QStringList &paths, quint32 effect);
/// Reads it back; only local files count.
[[nodiscard]] FileClip readFileClipData(const QMimeData &data);
/// Paths of the local files that a drop or the clipboard holds, with native separators.
[[nodiscard]] QStringList localPaths(const QMimeData &data);

/// A CF_HDROP block: the header of 20 bytes (offset of the list, point 0,0, not client area, wide
/// or not), the paths ended by NUL each, and a second NUL. The paths are in the single-byte code
/// page (CP932) unless one of them does not survive it; then all of them are UTF-16, as they are
/// when wide asks for it. Tells in wide what they are.
[[nodiscard]] QByteArray dropFilesBlock(const QStringList &paths, bool &wide);

} // namespace venlo
