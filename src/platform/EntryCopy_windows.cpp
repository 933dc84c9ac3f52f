#include "platform/EntryCopy.h"

#include <windows.h>

namespace venlo
{

namespace
{
std::error_code lastError()
{
    return {static_cast<int>(GetLastError()), std::system_category()};
}

struct Ticker {
    const CopyTick &tick;
    qint64 told = 0;
};

DWORD CALLBACK moved(LARGE_INTEGER /*size*/, LARGE_INTEGER done, LARGE_INTEGER /*streamSize*/,
                     LARGE_INTEGER /*streamDone*/, DWORD /*stream*/, DWORD /*reason*/,
                     HANDLE /*source*/, HANDLE /*target*/, void *context)
{
    auto *ticker = static_cast<Ticker *>(context);
    const qint64 more = done.QuadPart - ticker->told;
    ticker->told = done.QuadPart;
    return ticker->tick(more) ? PROGRESS_CONTINUE : PROGRESS_CANCEL;
}

HANDLE openEntry(const std::filesystem::path &path, DWORD access)
{
    return CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                       nullptr, OPEN_EXISTING,
                       FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
}

bool flush(const std::filesystem::path &path)
{
    const HANDLE file = openEntry(path, GENERIC_WRITE);
    if (file == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_ACCESS_DENIED; // a read-only copy cannot be opened so
    const bool flushed = FlushFileBuffers(file) != FALSE;
    CloseHandle(file);
    return flushed;
}
} // namespace

CopyEnd copyFileWhole(const std::filesystem::path &from, const std::filesystem::path &to,
                      bool durable, const CopyTick &tick, std::error_code &why)
{
    Ticker ticker{tick};
    BOOL cancelled = FALSE;
    // A cancelled or failed copy is removed by the system itself.
    if (CopyFileExW(from.c_str(), to.c_str(), moved, &ticker, &cancelled,
                    COPY_FILE_FAIL_IF_EXISTS) == FALSE) {
        why = lastError();
        return why.value() == ERROR_REQUEST_ABORTED ? CopyEnd::Cancelled : CopyEnd::Failed;
    }
    if (!durable || flush(to))
        return CopyEnd::Done;
    why = lastError();
    DeleteFileW(to.c_str());
    return CopyEnd::Failed;
}

void keepLook(const std::filesystem::path &from, const std::filesystem::path &to)
{
    const HANDLE source = openEntry(from, FILE_READ_ATTRIBUTES);
    const HANDLE target = openEntry(to, FILE_WRITE_ATTRIBUTES);
    FILETIME created = {};
    FILETIME read = {};
    FILETIME written = {};
    if (source != INVALID_HANDLE_VALUE && target != INVALID_HANDLE_VALUE &&
        GetFileTime(source, &created, &read, &written) != FALSE)
        SetFileTime(target, &created, &read, &written);
    if (source != INVALID_HANDLE_VALUE)
        CloseHandle(source);
    if (target != INVALID_HANDLE_VALUE)
        CloseHandle(target);
    // A file's came with its content.
    const DWORD attributes = GetFileAttributesW(from.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 &&
        (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0)
        SetFileAttributesW(to.c_str(),
                           attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN |
                                         FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE));
}

bool renameEntry(const std::filesystem::path &from, const std::filesystem::path &to, bool replace,
                 std::error_code &why)
{
    const DWORD flags = MOVEFILE_WRITE_THROUGH | (replace ? MOVEFILE_REPLACE_EXISTING : 0U);
    if (MoveFileExW(from.c_str(), to.c_str(), flags) != FALSE)
        return true;
    why = lastError();
    return false;
}

void flushFolder(const std::filesystem::path & /*folder*/)
{
    // Every rename is written through.
}

} // namespace venlo
