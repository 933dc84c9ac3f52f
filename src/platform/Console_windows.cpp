#include "platform/Console.h"

#include <io.h>
#include <windows.h>

namespace venlo
{

namespace
{
/// A file or pipe that the starter gave, or a console that is there already.
bool leadsSomewhere(DWORD stream)
{
    const HANDLE handle = GetStdHandle(stream);
    return handle != nullptr && handle != INVALID_HANDLE_VALUE &&
           GetFileType(handle) != FILE_TYPE_UNKNOWN;
}

/// A stream to the console that was joined. The standard ones are not opened anew: not every C
/// library does that with one that was never open.
std::FILE *consoleStream(std::FILE *otherwise)
{
    // Without the right to read, a console does not even tell that it is one. Binary: its code page
    // is the line's already, and a line feed alone begins a new line there.
    std::FILE *stream = std::fopen("CONOUT$", "w+b");
    if (stream == nullptr)
        return otherwise;
    // A line goes there as a whole: the bytes of one character in two pieces are none.
    constexpr std::size_t longestLine = 65536; // bytes; two paths and some words
    (void)std::setvbuf(stream, nullptr, _IOFBF, longestLine);
    return stream;
}

bool isConsole(std::FILE *stream)
{
    DWORD mode = 0;
    const int descriptor = _fileno(stream);
    return descriptor >= 0 &&
           GetConsoleMode(reinterpret_cast<HANDLE>(_get_osfhandle(descriptor)), &mode) != FALSE;
}
} // namespace

void useSystemEncoding()
{
    // The C library keeps its own: it would convert once more what a console gets in its code page.
}

ConsoleStreams joinConsole()
{
    ConsoleStreams streams;
    const bool results = leadsSomewhere(STD_OUTPUT_HANDLE);
    const bool messages = leadsSomewhere(STD_ERROR_HANDLE);
    // Joined for one of them or for Ctrl+C alone; started from no console there is none to join.
    if (AttachConsole(ATTACH_PARENT_PROCESS) == FALSE)
        return streams;
    if (!results)
        streams.results = consoleStream(stdout);
    if (!messages)
        streams.messages = consoleStream(stderr);
    return streams;
}

QByteArray consoleText(std::FILE *stream, const QString &line)
{
    const UINT page = isConsole(stream) ? GetConsoleOutputCP() : 0;
    if (page == 0 || line.isEmpty())
        return line.toLocal8Bit();
    const auto *wide = reinterpret_cast<const wchar_t *>(line.utf16());
    const int units = static_cast<int>(line.size());
    QByteArray bytes(line.size() * 4, Qt::Uninitialized); // no code page takes more for one unit
    const int length = WideCharToMultiByte(page, 0, wide, units, bytes.data(),
                                           static_cast<int>(bytes.size()), nullptr, nullptr);
    return length > 0 ? bytes.left(length) : line.toLocal8Bit();
}

} // namespace venlo
