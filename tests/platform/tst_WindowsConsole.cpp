#include <cstdio>
#include <string>

#include <windows.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTest>

#include "platform/Console.h"
#include "platform/Interrupt.h"

using namespace venlo;

namespace
{

constexpr const char *part = "VENLO_TEST_PART";
constexpr int interruptedStatus = 42;
constexpr int limitMs = 20000;
constexpr const wchar_t *readyName = L"VenloFtp.tst_WindowsConsole.ready";

QString line()
{
    return QStringLiteral("ｱｯﾌﾟﾛｰﾄﾞ a.html ｶﾝﾘｮｳ");
}

// --- The started program, which has no console of its own ---

int printLines()
{
    const ConsoleStreams streams = joinConsole();
    for (std::FILE *stream : {streams.results, streams.messages}) {
        const QByteArray bytes = consoleText(stream, line()) + '\n';
        std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stream);
        std::fflush(stream);
    }
    return 0;
}

int waitForInterrupt()
{
    (void)joinConsole();
    noteInterrupts();
    const HANDLE ready = OpenEventW(EVENT_MODIFY_STATE, FALSE, readyName);
    SetEvent(ready);
    CloseHandle(ready);
    QElapsedTimer time;
    time.start();
    while (!interrupted() && time.elapsed() < limitMs)
        Sleep(20);
    return interrupted() ? interruptedStatus : 1;
}

// --- The test, which has a console ---

/// Started without a console, with nothing for its streams unless output is a handle.
class Child
{
public:
    explicit Child(const char *what, HANDLE output = nullptr)
    {
        qputenv(part, what);
        std::wstring program =
            QDir::toNativeSeparators(QCoreApplication::applicationFilePath()).toStdWString();
        STARTUPINFOW start = {};
        start.cb = sizeof start;
        if (output != nullptr) {
            start.dwFlags = STARTF_USESTDHANDLES;
            start.hStdOutput = output;
        }
        PROCESS_INFORMATION started = {};
        if (CreateProcessW(nullptr, program.data(), nullptr, nullptr, TRUE, DETACHED_PROCESS,
                           nullptr, nullptr, &start, &started) != FALSE) {
            m_process = started.hProcess;
            CloseHandle(started.hThread);
        }
        qunsetenv(part);
    }
    ~Child()
    {
        if (m_process == nullptr)
            return;
        TerminateProcess(m_process, 1);
        CloseHandle(m_process);
    }
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    /// Its exit status, -1 when it did not end.
    [[nodiscard]] int status() const
    {
        DWORD code = 0;
        const bool ended = m_process != nullptr &&
                           WaitForSingleObject(m_process, limitMs) == WAIT_OBJECT_0 &&
                           GetExitCodeProcess(m_process, &code) != FALSE;
        return ended ? static_cast<int>(code) : -1;
    }

private:
    HANDLE m_process = nullptr;
};

/// A screen of this process's console, empty in the beginning, shown while it is there.
class Screen
{
public:
    Screen()
        : m_handle(CreateConsoleScreenBuffer(GENERIC_READ | GENERIC_WRITE,
                                             FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                             CONSOLE_TEXTMODE_BUFFER, nullptr)),
          m_before(CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE,
                               FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                               nullptr))
    {
        SetConsoleActiveScreenBuffer(m_handle);
    }
    ~Screen()
    {
        SetConsoleActiveScreenBuffer(m_before);
        CloseHandle(m_before);
        CloseHandle(m_handle);
    }
    Screen(const Screen &) = delete;
    Screen &operator=(const Screen &) = delete;

    [[nodiscard]] QString row(SHORT number) const
    {
        std::wstring text(80, L' ');
        DWORD read = 0;
        ReadConsoleOutputCharacterW(m_handle, text.data(), static_cast<DWORD>(text.size()),
                                    {0, number}, &read);
        return QString::fromStdWString(text.substr(0, read)).trimmed();
    }

private:
    HANDLE m_handle;
    HANDLE m_before;
};

/// An unattended run seen from the console that it was started from.
class tst_WindowsConsole : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void printsInTheConsolesCodePage_data();
    void printsInTheConsolesCodePage();
    void redirectedOutputIsInTheSystems();
    void ctrlCIsNoted();
};

void tst_WindowsConsole::initTestCase()
{
    if (GetConsoleCP() != 0)
        return;
    FreeConsole(); // a process that was started without one may count as having it all the same
    if (AllocConsole() == FALSE)
        QSKIP("no console can be had here");
}

void tst_WindowsConsole::printsInTheConsolesCodePage_data()
{
    QTest::addColumn<UINT>("page");
    QTest::newRow("Japanese") << UINT{932};
    QTest::newRow("UTF-8") << UINT{65001};
}

void tst_WindowsConsole::printsInTheConsolesCodePage()
{
    QFETCH(UINT, page);
    QVERIFY(SetConsoleOutputCP(page) != FALSE);
    const Screen screen;
    QCOMPARE(Child("print").status(), 0);
    QCOMPARE(screen.row(0), line());
    QCOMPARE(screen.row(1), line());
}

void tst_WindowsConsole::redirectedOutputIsInTheSystems()
{
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    HANDLE from = nullptr;
    HANDLE into = nullptr;
    QVERIFY(CreatePipe(&from, &into, &inherited, 0) != FALSE);
    QVERIFY(SetConsoleOutputCP(65001) != FALSE);
    const Screen screen;
    QCOMPARE(Child("print", into).status(), 0);
    CloseHandle(into);
    char bytes[256] = {};
    DWORD size = 0;
    QVERIFY(ReadFile(from, bytes, sizeof bytes, &size, nullptr) != FALSE);
    CloseHandle(from);
    QCOMPARE(QByteArray(bytes, static_cast<qsizetype>(size)), line().toLocal8Bit() + "\r\n");
    QCOMPARE(screen.row(0), line()); // the messages, which were not redirected
    QCOMPARE(screen.row(1), QString());
}

void tst_WindowsConsole::ctrlCIsNoted()
{
    const HANDLE ready = CreateEventW(nullptr, TRUE, FALSE, readyName);
    const Child child("wait");
    QCOMPARE(WaitForSingleObject(ready, limitMs), DWORD{WAIT_OBJECT_0});
    CloseHandle(ready);
    QVERIFY(SetConsoleCtrlHandler(nullptr, TRUE) != FALSE); // it is not meant for the test
    QVERIFY(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0) != FALSE);
    QCOMPARE(child.status(), interruptedStatus);
    QVERIFY(SetConsoleCtrlHandler(nullptr, FALSE) != FALSE);
}

} // namespace

int main(int argc, char **argv)
{
    const QByteArray mine = qgetenv(part);
    if (mine == "print")
        return printLines();
    if (mine == "wait")
        return waitForInterrupt();
    const QCoreApplication application(argc, argv);
    tst_WindowsConsole test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_WindowsConsole.moc"
