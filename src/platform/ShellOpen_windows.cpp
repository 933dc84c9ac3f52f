#include "platform/ShellOpen.h"

#include <string>

#include <windows.h>

#include <objbase.h>
#include <shellapi.h>
#include <shldisp.h>
#include <shlobj.h>

#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QSettings>
#include <QWindow>

namespace venlo
{

namespace
{
/// COM for the length of a call, whoever set it up before.
class ComScope
{
public:
    ComScope() : m_result(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
    ~ComScope()
    {
        if (SUCCEEDED(m_result))
            CoUninitialize();
    }
    ComScope(const ComScope &) = delete;
    ComScope &operator=(const ComScope &) = delete;

private:
    HRESULT m_result;
};

/// An interface that is released when its scope ends.
template <class Interface>
class ComPointer
{
public:
    ComPointer() = default;
    ~ComPointer()
    {
        if (m_held != nullptr)
            m_held->Release();
    }
    ComPointer(const ComPointer &) = delete;
    ComPointer &operator=(const ComPointer &) = delete;

    [[nodiscard]] bool create(REFCLSID id)
    {
        return SUCCEEDED(CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, __uuidof(Interface),
                                          reinterpret_cast<void **>(&m_held)));
    }
    template <class Other>
    [[nodiscard]] bool query(const ComPointer<Other> &other)
    {
        return SUCCEEDED(
            other->QueryInterface(__uuidof(Interface), reinterpret_cast<void **>(&m_held)));
    }
    Interface *operator->() const { return m_held; }

private:
    Interface *m_held = nullptr;
};

/// The window in front owns what the shell shows.
HWND ownerWindow()
{
    const QWindow *window = QGuiApplication::focusWindow();
    return window != nullptr ? reinterpret_cast<HWND>(window->winId()) : nullptr;
}

bool shellExecute(const wchar_t *verb, const QString &path)
{
    const std::wstring native = QDir::toNativeSeparators(path).toStdWString();
    const HINSTANCE result =
        ShellExecuteW(ownerWindow(), verb, native.c_str(), nullptr, nullptr, SW_SHOW);
    return reinterpret_cast<INT_PTR>(result) > 32; // up to 32 are errors
}
/// Paths are stored as paths; an address is no path and goes in as an item of the shell.
bool leadTo(const ComPointer<IShellLinkW> &link, const QString &target)
{
    if (!target.contains(QLatin1String("://")))
        return SUCCEEDED(link->SetPath(QDir::toNativeSeparators(target).toStdWString().c_str()));
    PIDLIST_ABSOLUTE item = nullptr;
    if (FAILED(SHParseDisplayName(target.toStdWString().c_str(), nullptr, &item, 0, nullptr)))
        return false;
    const bool stored = SUCCEEDED(link->SetIDList(item));
    CoTaskMemFree(item);
    return stored;
}
} // namespace

bool openWithAssociated(const QString &path)
{
    return shellExecute(L"open", path);
}

bool exploreFolder(const QString &path)
{
    return shellExecute(L"explore", path);
}

bool searchFolder(const QString &path)
{
    const ComScope com;
    ComPointer<IShellDispatch> shell;
    if (shell.create(CLSID_Shell) && SUCCEEDED(shell->FindFiles()))
        return true;
    return shellExecute(L"find", path);
}

QString textEditorCommand()
{
    const QSettings registered(
        QStringLiteral("HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Internet Explorer\\"
                       "View Source Editor\\Editor Name"),
        QSettings::NativeFormat);
    return editorOfRegistered(registered.value(QStringLiteral(".")).toString());
}

bool openInTextEditor(const QString &editor, const QString &path)
{
    std::wstring line = editorCommandLine(editor, path).toStdWString();
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    PROCESS_INFORMATION started = {};
    if (CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                       &started) == FALSE)
        return false;
    CloseHandle(started.hThread);
    CloseHandle(started.hProcess);
    return true;
}

QString writeShortcut(const QString &path, const QString &target)
{
    const ComScope com;
    ComPointer<IShellLinkW> link;
    ComPointer<IPersistFile> file;
    if (!link.create(CLSID_ShellLink) || !file.query(link))
        return {};
    const QString written = QDir::toNativeSeparators(path);
    if (!leadTo(link, target))
        return {};
    return SUCCEEDED(file->Save(written.toStdWString().c_str(), TRUE)) ? written : QString();
}

bool openShortcut(const QString &written, const QString & /*target*/)
{
    return shellExecute(L"open", written);
}

} // namespace venlo
