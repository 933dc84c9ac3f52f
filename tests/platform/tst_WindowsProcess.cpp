#include <cstdio>
#include <functional>

#include <windows.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include "platform/Appearance.h"
#include "platform/CrashDump.h"
#include "platform/Process.h"
#include "platform/ShellOpen.h"

using namespace venlo;

namespace
{

constexpr const char *tellsTo = "VENLO_TEST_TELLS";

/// Started by a test: writes how it was started, under the final name only when that is whole.
int tellHowStarted()
{
    const QString path = qEnvironmentVariable(tellsTo);
    QFile told(path + QStringLiteral(".new"));
    const QByteArray words =
        (executableBaseName() + QLatin1Char('\n') + rawCommandLine(0, nullptr)).toUtf8();
    const bool whole = told.open(QIODevice::WriteOnly) && told.write(words) == words.size();
    told.close();
    return whole && told.rename(path) ? 0 : 1;
}

/// One of the registry's tops leads to an empty place of the test's own, for this process only.
class OwnRegistry
{
public:
    explicit OwnRegistry(HKEY top) : m_top(top)
    {
        RegCreateKeyExW(HKEY_CURRENT_USER, place, 0, nullptr, REG_OPTION_NON_VOLATILE,
                        KEY_ALL_ACCESS, nullptr, &m_key, nullptr);
        m_led = RegOverridePredefKey(m_top, m_key) == ERROR_SUCCESS;
    }
    ~OwnRegistry()
    {
        RegOverridePredefKey(m_top, nullptr);
        RegCloseKey(m_key);
        RegDeleteTreeW(HKEY_CURRENT_USER, place);
    }
    OwnRegistry(const OwnRegistry &) = delete;
    OwnRegistry &operator=(const OwnRegistry &) = delete;

    [[nodiscard]] bool leadsThere() const { return m_led; }

private:
    static constexpr const wchar_t *place = L"Software\\VenloTools\\tst_WindowsProcess";
    HKEY m_top;
    HKEY m_key = nullptr;
    bool m_led = false;
};

/// The program among others: how it is started, what it starts, what it reads of the machine.
class tst_WindowsProcess : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void commandLine_data();
    void commandLine();
    void aProgramWithABlankInItsPath();
    void opensByAssociation();
    void opensThroughAShortcut();
    void nothingToOpen();
    void editorStarts();
    void registeredEditor_data();
    void registeredEditor();
    void darkDesktopOfTheRegistry();
    void crashDumpsWithoutTheHeap();

private:
    [[nodiscard]] QString at(const QString &name) const { return m_folder->filePath(name); }
    [[nodiscard]] QStringList told() const;
    [[nodiscard]] QStringList start(const QString &program, const QString &arguments) const;
    [[nodiscard]] QString document() const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

/// Wine looks for associations at the machine's, the system at the user's first.
QStringList classes()
{
    return {QStringLiteral("HKEY_CURRENT_USER\\Software\\Classes"),
            QStringLiteral("HKEY_LOCAL_MACHINE\\Software\\Classes")};
}

void tst_WindowsProcess::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    qputenv(tellsTo, at(QStringLiteral("told")).toUtf8());
    // Documents of a kind of our own are opened with this program.
    const QString program = QDir::toNativeSeparators(QCoreApplication::applicationFilePath());
    for (const QString &place : classes()) {
        QSettings settings(place, QSettings::NativeFormat);
        settings.setValue(QStringLiteral(".venlotest/."), QStringLiteral("VenloFtp.Test"));
        settings.setValue(QStringLiteral("VenloFtp.Test/shell/open/command/."),
                          QStringLiteral("\"%1\" \"%2\"").arg(program, QStringLiteral("%1")));
    }
}

void tst_WindowsProcess::cleanup()
{
    for (const QString &place : classes()) {
        QSettings settings(place, QSettings::NativeFormat);
        settings.remove(QStringLiteral(".venlotest"));
        settings.remove(QStringLiteral("VenloFtp.Test"));
    }
    qunsetenv(tellsTo);
}

/// The started program's base name and its command line.
QStringList tst_WindowsProcess::told() const
{
    QFile file(at(QStringLiteral("told")));
    return file.open(QIODevice::ReadOnly)
               ? QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'))
               : QStringList();
}

QStringList tst_WindowsProcess::start(const QString &program, const QString &arguments) const
{
    QProcess process;
    process.setProgram(program);
    process.setNativeArguments(arguments);
    process.start();
    return process.waitForFinished() && process.exitCode() == 0 ? told() : QStringList();
}

QString tst_WindowsProcess::document() const
{
    QFile file(at(QStringLiteral("資料 1.venlotest")));
    return file.open(QIODevice::WriteOnly) ? QDir::toNativeSeparators(file.fileName()) : QString();
}

void tst_WindowsProcess::commandLine_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("line");
    const auto row = [](const char *name, const char *arguments, const char *line) {
        QTest::newRow(name) << QString::fromUtf8(arguments) << QString::fromUtf8(line);
    };
    row("none", "", "");
    row("as it stands", "/b syncup|公開 サイト", "/b syncup|公開 サイト");
    row("not split, not unquoted", "put|C:\\a b|\"x\"|/\\\"|a.txt",
        "put|C:\\a b|\"x\"|/\\\"|a.txt");
    row("the shell's quotation marks", "\"/b syncup|公開\"", "/b syncup|公開");
    row("two quoted parts are no such", "\"a\" \"b\"", "\"a\" \"b\"");
    row("more blanks before", "  \t /b syncup|A", "/b syncup|A");
    row("outside the code page", "syncup|한글 é", "syncup|한글 é");
}

void tst_WindowsProcess::commandLine()
{
    QFETCH(QString, arguments);
    QFETCH(QString, line);
    QCOMPARE(start(QCoreApplication::applicationFilePath(), arguments),
             (QStringList{QStringLiteral("tst_WindowsProcess"), line}));
}

void tst_WindowsProcess::aProgramWithABlankInItsPath()
{
    QVERIFY(QDir().mkpath(at(QStringLiteral("a b"))));
    const QString copy = at(QStringLiteral("a b/転送 ﾂｰﾙ.EXE"));
    QVERIFY(QFile::copy(QCoreApplication::applicationFilePath(), copy));
    QCOMPARE(start(copy, QStringLiteral("open|A")),
             (QStringList{QStringLiteral("転送 ﾂｰﾙ"), QStringLiteral("open|A")}));
}

void tst_WindowsProcess::opensByAssociation()
{
    const QString path = document();
    QVERIFY(openWithAssociated(path));
    QTRY_COMPARE_WITH_TIMEOUT(told().value(1), path, 20000);
}

void tst_WindowsProcess::opensThroughAShortcut()
{
    const QString path = document();
    const QString written = writeShortcut(at(QStringLiteral("資料.lnk")), path);
    QVERIFY(!written.isEmpty());
    QVERIFY(openShortcut(written, path));
    QTRY_VERIFY_WITH_TIMEOUT(!told().isEmpty(), 20000);
    QCOMPARE(QFileInfo(told().value(1)), QFileInfo(path));
}

void tst_WindowsProcess::nothingToOpen()
{
    QVERIFY(!openWithAssociated(at(QStringLiteral("gone.venlotest"))));
    QVERIFY(writeShortcut(at(QStringLiteral("none/a.lnk")), document()).isEmpty());
    QVERIFY(!openInTextEditor(at(QStringLiteral("gone.exe")), document()));
}

void tst_WindowsProcess::editorStarts()
{
    const QString path = document();
    QVERIFY(
        openInTextEditor(QDir::toNativeSeparators(QCoreApplication::applicationFilePath()), path));
    QTRY_COMPARE_WITH_TIMEOUT(told().value(1), path, 20000);
}

void tst_WindowsProcess::registeredEditor_data()
{
    QTest::addColumn<QString>("registered");
    QTest::addColumn<QString>("editor");
    QTest::newRow("none") << QString() << QStringLiteral("notepad.exe");
    QTest::newRow("a path") << QStringLiteral("C:\\編集\\ed.exe")
                            << QStringLiteral("C:\\編集\\ed.exe");
    QTest::newRow("an option goes")
        << QStringLiteral("\"C:\\E d\\ed.exe\" /v") << QStringLiteral("\"C:\\E d\\ed.exe\" ");
}

void tst_WindowsProcess::registeredEditor()
{
    QFETCH(QString, registered);
    const OwnRegistry machine(HKEY_LOCAL_MACHINE);
    QVERIFY(machine.leadsThere());
    const std::wstring value = registered.toStdWString();
    if (!value.empty())
        QCOMPARE(RegSetKeyValueW(HKEY_LOCAL_MACHINE,
                                 L"SOFTWARE\\Microsoft\\Internet Explorer\\View Source Editor\\"
                                 L"Editor Name",
                                 nullptr, REG_SZ, value.c_str(),
                                 static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t))),
                 LSTATUS{ERROR_SUCCESS});
    QTEST(textEditorCommand(), "editor");
}

void tst_WindowsProcess::darkDesktopOfTheRegistry()
{
    const OwnRegistry user(HKEY_CURRENT_USER);
    QVERIFY(user.leadsThere());
    QVERIFY(!darkDesktop());
    for (const DWORD light : {DWORD{0}, DWORD{1}}) {
        QCOMPARE(RegSetKeyValueW(HKEY_CURRENT_USER,
                                 L"Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\"
                                 L"Personalize",
                                 L"AppsUseLightTheme", REG_DWORD, &light, sizeof light),
                 LSTATUS{ERROR_SUCCESS});
        QCOMPARE(darkDesktop(), light == 0);
    }
}

void tst_WindowsProcess::crashDumpsWithoutTheHeap()
{
    using GetFlags = HRESULT(WINAPI *)(HANDLE, DWORD *);
    const FARPROC found = GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "WerGetFlags");
    DWORD flags = 0;
    keepMemoryOutOfCrashDumps();
    if (found == nullptr || FAILED(reinterpret_cast<GetFlags>(reinterpret_cast<void *>(found))(
                                GetCurrentProcess(), &flags)))
        QSKIP("this system makes no error reports");
    QCOMPARE(flags & 1U, 1U); // WER_FAULT_REPORTING_FLAG_NOHEAP
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsSet(tellsTo))
        return tellHowStarted();
    const QGuiApplication application(argc, argv);
    tst_WindowsProcess test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_WindowsProcess.moc"
