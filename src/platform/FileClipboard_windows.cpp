#include "platform/FileClipboard.h"

#include <algorithm>
#include <cstring>
#include <string>

#include <windows.h>

#include <shellapi.h>

#include <QDir>

namespace venlo
{

namespace
{
/// Registered once, with the first call.
UINT dropEffectFormat()
{
    static const UINT format = RegisterClipboardFormatW(L"Preferred DropEffect");
    return format;
}

/// Owns what is put on the clipboard; without an owner the system takes nothing.
HWND ownerWindow()
{
    static const HWND window = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE,
                                               nullptr, GetModuleHandleW(nullptr), nullptr);
    return window;
}

/// Another program may have it open for a moment.
bool openWithin(HWND owner)
{
    constexpr int attempts = 10;
    constexpr DWORD pauseMs = 10;
    for (int i = 0; i < attempts; ++i) {
        if (OpenClipboard(owner) != FALSE)
            return true;
        Sleep(pauseMs);
    }
    return false;
}

/// The open clipboard; closed with its scope.
class OpenedClipboard
{
public:
    explicit OpenedClipboard(HWND owner = nullptr) : m_open(openWithin(owner)) {}
    ~OpenedClipboard()
    {
        if (m_open)
            CloseClipboard();
    }
    OpenedClipboard(const OpenedClipboard &) = delete;
    OpenedClipboard &operator=(const OpenedClipboard &) = delete;
    [[nodiscard]] explicit operator bool() const { return m_open; }

private:
    bool m_open;
};

void put(UINT format, const QByteArray &bytes)
{
    const HGLOBAL memory =
        GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, static_cast<SIZE_T>(bytes.size()));
    void *target = memory == nullptr ? nullptr : GlobalLock(memory);
    if (target == nullptr)
        return;
    std::memcpy(target, bytes.constData(), static_cast<size_t>(bytes.size()));
    GlobalUnlock(memory);
    if (SetClipboardData(format, memory) == nullptr) // otherwise the clipboard owns it
        GlobalFree(memory);
}

/// Readers take single bytes for text of the machine's code page.
bool machineReads932(const QStringList &paths)
{
    constexpr UINT japanese = 932;
    return GetACP() == japanese || std::all_of(paths.begin(), paths.end(), [](const QString &path) {
               return std::all_of(path.begin(), path.end(),
                                  [](QChar c) { return c.unicode() < 0x80; });
           });
}

QStringList droppedPaths(HDROP drop)
{
    QStringList paths;
    const UINT count = DragQueryFileW(drop, 0xFFFFFFFF, nullptr, 0);
    for (UINT i = 0; i < count; ++i) {
        std::wstring path(DragQueryFileW(drop, i, nullptr, 0) + 1, L'\0');
        const UINT length = DragQueryFileW(drop, i, path.data(), static_cast<UINT>(path.size()));
        paths << QString::fromWCharArray(path.data(), static_cast<int>(length));
    }
    return paths;
}

quint32 preferredEffect()
{
    const HANDLE memory = GetClipboardData(dropEffectFormat());
    if (memory == nullptr || GlobalSize(memory) < sizeof(DWORD))
        return dropEffectNone;
    const void *bytes = GlobalLock(memory);
    if (bytes == nullptr)
        return dropEffectNone;
    quint32 effect = dropEffectNone;
    std::memcpy(&effect, bytes, sizeof effect);
    GlobalUnlock(memory);
    return effect;
}
} // namespace

void putFilesOnClipboard(const QStringList &paths, quint32 effect)
{
    const OpenedClipboard clipboard(ownerWindow());
    if (!clipboard || EmptyClipboard() == FALSE)
        return;
    QStringList native;
    for (const QString &path : paths)
        native << QDir::toNativeSeparators(path);
    bool wide = !machineReads932(native);
    put(CF_HDROP, dropFilesBlock(native, wide));
    put(dropEffectFormat(), QByteArray(reinterpret_cast<const char *>(&effect), sizeof effect));
}

FileClip filesOnClipboard()
{
    const OpenedClipboard clipboard;
    const HANDLE drop = clipboard ? GetClipboardData(CF_HDROP) : nullptr;
    if (drop == nullptr)
        return {};
    return {droppedPaths(static_cast<HDROP>(drop)), preferredEffect()};
}

} // namespace venlo
