#include <csignal>
#include <memory>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include "platform/Files.h"
#include "startup/settings/SettingsFile.h"
#include "support/ScriptedPerson.h"

#ifdef Q_OS_UNIX
#include <sys/resource.h>
#endif

namespace venlo
{

using test::ScriptedPerson;

/// What reaches the disk, and what does not when the disk refuses.
class tst_SettingsSaving : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void bytes();
    void missingFileIsCreated();
    void filesArePrivate();
    void nothingElseIsLeft();
    void oldLeftoversGo();
    void changedSinceRead();
    void theLastSaveWins();
    void theLastChangeWins();
    void anUnchangedDocumentComesBack();
    void folderMissing();
    void folderInPlaceOfTheFile();
    void notLoadedIsNotSaved();
#ifdef Q_OS_UNIX
    void fullDiskKeepsTheOldFile();
#endif

private:
    [[nodiscard]] QByteArray content() const;
    [[nodiscard]] QStringList everything() const;
    void edit(yIni &settings, const QString &value) const;

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
};

namespace
{
constexpr auto fileMode = QFile::ReadOwner | QFile::WriteOwner;
constexpr auto otherUsers = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                            QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
} // namespace

void tst_SettingsSaving::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_path = m_folder->filePath(QStringLiteral("User.xml"));
}

QByteArray tst_SettingsSaving::content() const
{
    QFile file(m_path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

QStringList tst_SettingsSaving::everything() const
{
    return QDir(m_folder->path())
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

void tst_SettingsSaving::edit(yIni &settings, const QString &value) const
{
    bool ok = false;
    settings.GetTxt(m_path, ok);
    QVERIFY(ok);
    settings.GetGtx(QStringLiteral("A"));
    settings.SetVal(QStringLiteral("K"), value);
    settings.SetGtx();
}

void tst_SettingsSaving::bytes()
{
    ScriptedPerson person;
    yIni settings(person);
    edit(settings, QStringLiteral("表é&#x41;"));
    bool ok = false;
    settings.SetTxt(ok);
    QVERIFY(ok);
    QCOMPARE(content(), QByteArray("<?xml version='1.0' encoding='Shift-JIS' ?>\r\n"
                                   "<\x89\x5E\x97\x70>\r\n"
                                   "   <A>\r\n"
                                   "      <K>\x95\x5C&#x00E9;&#x41;</K>\r\n"
                                   "   </A>\r\n"
                                   "</\x89\x5E\x97\x70>"));
    yIni again(person);
    again.GetTxt(m_path, ok);
    again.GetGtx(QStringLiteral("A"));
    const auto value = again.vGtVal(QStringLiteral("K"), QString());
    QVERIFY(value.ok());
    QCOMPARE(value.value().toString(), QStringLiteral("表é&#x41;"));
}

void tst_SettingsSaving::missingFileIsCreated()
{
    ScriptedPerson person;
    yIni settings(person);
    bool ok = false;
    settings.GetTxt(m_path, ok);
    QVERIFY(ok);
    QCOMPARE(content(), QByteArray());
    QVERIFY(person.verify());
}

void tst_SettingsSaving::filesArePrivate()
{
#ifdef Q_OS_UNIX
    ScriptedPerson person;
    yIni settings(person);
    edit(settings, QStringLiteral("v"));
    QCOMPARE(QFile::permissions(m_path) & (fileMode | otherUsers), fileMode);
    QVERIFY(QFile::setPermissions(m_path, fileMode | otherUsers));
    bool ok = false;
    settings.SetTxt(ok);
    QVERIFY(ok);
    QCOMPARE(QFile::permissions(m_path) & (fileMode | otherUsers), fileMode);
#else
    QVERIFY(QFileInfo(m_folder->path()).isDir());
#endif
}

void tst_SettingsSaving::nothingElseIsLeft()
{
    ScriptedPerson person;
    yIni settings(person);
    edit(settings, QStringLiteral("v"));
    for (int i = 0; i < 3; ++i) {
        bool ok = false;
        settings.SetTxt(ok);
        QVERIFY(ok);
    }
    QCOMPARE(everything(), QStringList{QStringLiteral("User.xml")});
}

void tst_SettingsSaving::oldLeftoversGo()
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    const auto leave = [&](const char *name, qint64 age) {
        QFile file(m_folder->filePath(QString::fromLatin1(name)));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.close();
        QVERIFY(setModifiedTime(file.fileName(), now.addSecs(-age)));
    };
    leave(".User.xml.aBc123", 7200);
    leave(".User.xml.young1", 60);
    leave(".Other.xml.aBc123", 7200);
    ScriptedPerson person;
    yIni settings(person);
    edit(settings, QStringLiteral("v"));
    bool ok = false;
    settings.SetTxt(ok);
    QVERIFY(ok);
    QStringList left = everything();
    left.sort();
    QCOMPARE(left, (QStringList{QStringLiteral(".Other.xml.aBc123"),
                                QStringLiteral(".User.xml.young1"), QStringLiteral("User.xml")}));
}

/// A run that changed nothing has nothing to save; one that did has, written meanwhile or not.
void tst_SettingsSaving::changedSinceRead()
{
    ScriptedPerson person;
    bool ok = false;
    yIni run(person);
    edit(run, QStringLiteral("first"));
    QVERIFY(run.changed());
    run.SetTxt(ok);
    QVERIFY(ok);
    QVERIFY2(run.changed(), "another process may have put the old value back");
    yIni reader(person);
    reader.GetTxt(m_path, ok);
    QVERIFY(!reader.changed());
    reader.GetGtx(QStringLiteral("A"));
    reader.SetGtx();
    QVERIFY(!reader.changed());
    QVERIFY(QFile::remove(m_path));
    QVERIFY(reader.changed());
}

/// A window saves what it shows, also where that is what it read.
void tst_SettingsSaving::theLastSaveWins()
{
    ScriptedPerson person;
    bool ok = false;
    yIni first(person);
    edit(first, QStringLiteral("first"));
    first.SetTxt(ok);
    yIni reader(person);
    reader.GetTxt(m_path, ok);
    yIni window(person);
    edit(window, QStringLiteral("window's"));
    window.SetTxt(ok);
    QVERIFY(content().contains("<K>window's</K>"));
    reader.SetTxt(ok);
    QVERIFY(content().contains("<K>first</K>"));
}

void tst_SettingsSaving::theLastChangeWins()
{
    ScriptedPerson person;
    bool ok = false;
    yIni one(person);
    yIni two(person);
    edit(one, QStringLiteral("one"));
    edit(two, QStringLiteral("two"));
    two.SetTxt(ok);
    one.SetTxt(ok);
    QVERIFY(content().contains("<K>one</K>"));
    QVERIFY(!content().contains("two"));
}

void tst_SettingsSaving::anUnchangedDocumentComesBack()
{
    ScriptedPerson person;
    bool ok = false;
    yIni settings(person);
    edit(settings, QStringLiteral("v"));
    settings.SetTxt(ok);
    QVERIFY(QFile::remove(m_path));
    settings.SetTxt(ok);
    QVERIFY(content().contains("<K>v</K>"));
}

void tst_SettingsSaving::folderMissing()
{
    m_path = m_folder->filePath(QStringLiteral("none/User.xml"));
    ScriptedPerson person;
    yIni settings(person);
    bool ok = false;
    settings.GetTxt(m_path, ok);
    QVERIFY(!ok);
    settings.GetGtx(QStringLiteral("A"));
    settings.SetVal(QStringLiteral("K"), 1);
    settings.SetGtx();
    settings.SetTxt(ok);
    QVERIFY(!ok);
    QVERIFY(person.verify());

    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("none")));
    settings.SetTxt(ok);
    QVERIFY(ok);
    QVERIFY(content().contains("<K>1</K>"));
}

void tst_SettingsSaving::folderInPlaceOfTheFile()
{
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("User.xml")));
    ScriptedPerson person;
    yIni settings(person);
    bool ok = false;
    settings.GetTxt(m_path, ok);
    QVERIFY(!ok);
    settings.SetTxt(ok);
    QVERIFY(!ok);
    QVERIFY(QFileInfo(m_path).isDir());
    QVERIFY(person.verify());
}

void tst_SettingsSaving::notLoadedIsNotSaved()
{
    ScriptedPerson person;
    yIni settings(person);
    bool ok = false;
    settings.SetTxt(ok);
    QVERIFY(!ok);
}

#ifdef Q_OS_UNIX
void tst_SettingsSaving::fullDiskKeepsTheOldFile()
{
    ScriptedPerson person;
    yIni settings(person);
    edit(settings, QStringLiteral("before"));
    bool ok = false;
    settings.SetTxt(ok);
    const QByteArray before = content();
    QVERIFY(before.contains("before"));

    edit(settings, QStringLiteral("after"));
    rlimit limit = {};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &limit), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small = {32, limit.rlim_max};
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
    ok = false;
    settings.SetTxt(ok);
    const int restored = setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, handler);
    QCOMPARE(restored, 0);
    QVERIFY(!ok);
    QCOMPARE(content(), before);
    QCOMPARE(everything(), QStringList{QStringLiteral("User.xml")});
}
#endif

} // namespace venlo

QTEST_APPLESS_MAIN(venlo::tst_SettingsSaving)
#include "tst_SettingsSaving.moc"
