#include <cstring>

#include <windows.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include "platform/FileClipboard.h"
#include "platform/FileLook.h"
#include "platform/ScriptedShellPerson.h"
#include "platform/ShellFileOperation.h"
#include "platform/ShellOpen.h"
#include "platform/SpecialFolders.h"
#include "platform/Wine.h"

using namespace venlo;
using venlo::test::ScriptedShellPerson;

namespace
{

bool writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// What only this system has: its shell and its registry.
class tst_WindowsShell : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void shellCopies();
    void shellMoves();
    void shellDeletes();
    void aDeepTreeGoesPastTheShell();
    void clipboard_data();
    void clipboard();
    void clipboardOfAnotherProgram();
    void shortcut();
    void shortcutToAnAddress();
    void driveIcon();
    void settingsInTheRegistry();
    void specialFolders();

private:
    [[nodiscard]] QString at(const QString &name) const { return m_folder->filePath(name); }
    [[nodiscard]] QString deepFolder() const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_WindowsShell::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

QString tst_WindowsShell::deepFolder() const
{
    QString path = at(QStringLiteral("deep"));
    for (int i = 0; i < 7; ++i)
        path += QLatin1Char('/') + QString(50, QLatin1Char('d'));
    return QDir().mkpath(path) ? path : QString();
}

ShellFileOrder order(ShellVerb verb, const QString &from, const QString &to = {})
{
    return {verb, {QDir::toNativeSeparators(from)}, QDir::toNativeSeparators(to), true, true, 0};
}

void tst_WindowsShell::shellCopies()
{
    QVERIFY(writeFile(at(QStringLiteral("お知らせ.txt")), "1"));
    QVERIFY(QDir().mkpath(at(QStringLiteral("to"))));
    ScriptedShellPerson person;
    QVERIFY(runShellFileOperation(order(ShellVerb::Copy, at(QStringLiteral("お知らせ.txt")),
                                        at(QStringLiteral("to"))),
                                  person)
                .complete);
    QCOMPARE(contentOf(at(QStringLiteral("to/お知らせ.txt"))), QByteArray("1"));
    QVERIFY(QFile::exists(at(QStringLiteral("お知らせ.txt"))));
}

void tst_WindowsShell::shellMoves()
{
    QVERIFY(QDir().mkpath(at(QStringLiteral("from/sub"))));
    QVERIFY(QDir().mkpath(at(QStringLiteral("to"))));
    QVERIFY(writeFile(at(QStringLiteral("from/sub/a.txt")), "2"));
    ScriptedShellPerson person;
    QVERIFY(
        runShellFileOperation(
            order(ShellVerb::Move, at(QStringLiteral("from")), at(QStringLiteral("to"))), person)
            .complete);
    QCOMPARE(contentOf(at(QStringLiteral("to/from/sub/a.txt"))), QByteArray("2"));
    QVERIFY(!QFile::exists(at(QStringLiteral("from"))));
}

void tst_WindowsShell::shellDeletes()
{
    QVERIFY(writeFile(at(QStringLiteral("a.txt")), "3"));
    ScriptedShellPerson person;
    QVERIFY(runShellFileOperation(order(ShellVerb::Delete, at(QStringLiteral("a.txt"))), person)
                .complete);
    QVERIFY(!QFile::exists(at(QStringLiteral("a.txt"))));
}

void tst_WindowsShell::aDeepTreeGoesPastTheShell()
{
    const QString deep = deepFolder();
    QVERIFY(!deep.isEmpty());
    QVERIFY(writeFile(deep + QStringLiteral("/a.txt"), "4"));
    QVERIFY(QDir().mkpath(at(QStringLiteral("to"))));
    ScriptedShellPerson person;
    QVERIFY(
        runShellFileOperation(
            order(ShellVerb::Copy, at(QStringLiteral("deep")), at(QStringLiteral("to"))), person)
            .complete);
    QString copy = deep;
    copy.replace(at(QStringLiteral("deep")), at(QStringLiteral("to/deep")));
    QCOMPARE(contentOf(copy + QStringLiteral("/a.txt")), QByteArray("4"));
    QVERIFY(runShellFileOperation(order(ShellVerb::Delete, at(QStringLiteral("deep"))), person)
                .complete);
    QVERIFY(!QFile::exists(at(QStringLiteral("deep"))));
}

void tst_WindowsShell::clipboard_data()
{
    QTest::addColumn<QStringList>("paths");
    QTest::addColumn<quint32>("effect");
    QTest::newRow("cut") << QStringList{QStringLiteral("C:\\a.txt")} << cutEffect;
    QTest::newRow("copied, Japanese")
        << QStringList{QStringLiteral("C:\\公開\\お知らせ.html"), QStringLiteral("C:\\b")}
        << copyEffect;
    QTest::newRow("not in the code page")
        << QStringList{QStringLiteral("C:\\한글.txt"), QStringLiteral("C:\\ﾃｽﾄ")} << copyEffect;
}

void tst_WindowsShell::clipboard()
{
    QFETCH(QStringList, paths);
    QFETCH(quint32, effect);
    putFilesOnClipboard(paths, effect);
    const FileClip clip = filesOnClipboard();
    QCOMPARE(clip.paths, paths);
    QCOMPARE(clip.effect, effect);
}

/// Without "Preferred DropEffect", and wide.
void tst_WindowsShell::clipboardOfAnotherProgram()
{
    const QStringList paths{QStringLiteral("C:\\한글.txt"), QStringLiteral("D:\\b")};
    bool wide = true;
    const QByteArray block = dropFilesBlock(paths, wide);
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, static_cast<SIZE_T>(block.size()));
    std::memcpy(GlobalLock(memory), block.constData(), static_cast<size_t>(block.size()));
    GlobalUnlock(memory);
    QVERIFY(OpenClipboard(nullptr) != FALSE && EmptyClipboard() != FALSE);
    const bool put = SetClipboardData(CF_HDROP, memory) != nullptr;
    CloseClipboard();
    QVERIFY(put);
    QCOMPARE(filesOnClipboard().paths, paths);
    QCOMPARE(filesOnClipboard().effect, dropEffectNone);
}

void tst_WindowsShell::shortcut()
{
    QVERIFY(writeFile(at(QStringLiteral("target.txt")), "8"));
    const QString written =
        writeShortcut(at(QStringLiteral("公開.lnk")), at(QStringLiteral("target.txt")));
    QCOMPARE(written, QDir::toNativeSeparators(at(QStringLiteral("公開.lnk"))));
    QCOMPARE(QFileInfo(QFileInfo(written).symLinkTarget()).fileName(),
             QStringLiteral("target.txt"));
}

void tst_WindowsShell::shortcutToAnAddress()
{
    if (venlo::test::underWine())
        QSKIP("Wine's shell has no items for addresses");
    const QString written = writeShortcut(at(QStringLiteral("help.lnk")),
                                          QStringLiteral("https://help.invalid/ftp/main.htm"));
    QVERIFY(!written.isEmpty());
    QVERIFY(contentOf(written).contains("help.invalid") ||
            contentOf(written).contains(QByteArray("h\0e\0l\0p\0.\0i\0n\0v\0a", 17)));
}

/// A bare drive is its top, not the folder that happens to be current on it.
void tst_WindowsShell::driveIcon()
{
    const FileIcon drive = fileIcon(QStringLiteral("C:"));
    QCOMPARE(drive.number, fileIcon(QStringLiteral("C:\\")).number);
    QVERIFY(!drive.icon.isNull());
}

void tst_WindowsShell::settingsInTheRegistry()
{
    setProgramSetting(QStringLiteral("tst_WindowsShell"), QStringLiteral("C:\\公開\\a.exe"));
    QCOMPARE(programSetting(QStringLiteral("tst_WindowsShell")), QStringLiteral("C:\\公開\\a.exe"));
    HKEY key = nullptr;
    QCOMPARE(
        RegOpenKeyExW(HKEY_CURRENT_USER, L"Software\\VenloTools\\Path", 0, KEY_SET_VALUE, &key),
        LSTATUS{ERROR_SUCCESS});
    QCOMPARE(RegDeleteValueW(key, L"tst_WindowsShell"), LSTATUS{ERROR_SUCCESS});
    RegCloseKey(key);
}

void tst_WindowsShell::specialFolders()
{
    for (const SpecialFolder folder :
         {SpecialFolder::ApplicationData, SpecialFolder::MyDocuments, SpecialFolder::SendTo}) {
        const QString path = FsGtSpFld(folder);
        QVERIFY2(QDir(path).isAbsolute() && !path.contains(QLatin1Char('/')) &&
                     !path.endsWith(QLatin1Char('\\')),
                 qPrintable(path));
    }
}

} // namespace

QTEST_MAIN(tst_WindowsShell)
#include "tst_WindowsShell.moc"
