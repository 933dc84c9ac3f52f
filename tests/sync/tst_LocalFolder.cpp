#include "platform/EntryLook.h"
#include "support/Shortcuts.h"
#include "sync/LocalFolder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

using namespace venlo;

/// What a local folder holds, as a comparison takes it.
class tst_LocalFolder : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void files();
#ifdef Q_OS_UNIX
    void linksToFoldersAreNotFollowed();
    void linksToFilesAreFiles();
    void deadLinksArePassed();
    void namesThatAreNoTextArePassed();
#else
    void shortcutsAreFiles_data();
    void shortcutsAreFiles();
#endif
    void missingIsAnError();
    void unreadableIsAnError();

private:
    [[nodiscard]] QString at(const char *name) const;
    void write(const QString &path, const QByteArray &bytes) const;
    [[nodiscard]] LocalEntry entry(const QString &name) const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_LocalFolder::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

QString tst_LocalFolder::at(const char *name) const
{
    return m_folder->filePath(QString::fromUtf8(name));
}

void tst_LocalFolder::write(const QString &path, const QByteArray &bytes) const
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

LocalEntry tst_LocalFolder::entry(const QString &name) const
{
    const auto entries = readLocalFolder(m_folder->path());
    if (!entries)
        return {};
    for (const LocalEntry &one : entries.value()) {
        if (one.name == name)
            return one;
    }
    return {};
}

void tst_LocalFolder::files()
{
    write(at("a b%#.txt"), QByteArray(1234, 'x'));
    write(at(".hidden"), "1");
    QVERIFY(QDir().mkdir(at("写真")));
    const auto entries = readLocalFolder(m_folder->path());
    QVERIFY(entries);
    QCOMPARE(entries.value().size(), size_t(3));
    const LocalEntry file = entry(QStringLiteral("a b%#.txt"));
    QCOMPARE(file.size, 1234);
    QVERIFY(file.kind == LocalEntry::Kind::File);
    QVERIFY(std::abs(file.modified.secsTo(QDateTime::currentDateTime())) < 60);
    QVERIFY(entry(QStringLiteral("写真")).kind == LocalEntry::Kind::Folder);
    QCOMPARE(entry(QStringLiteral(".hidden")).size, 1);
}

#ifdef Q_OS_UNIX
void tst_LocalFolder::linksToFoldersAreNotFollowed()
{
    QVERIFY(QFile::link(m_folder->path(), at("loop")));
    const LocalEntry link = entry(QStringLiteral("loop"));
    QVERIFY(link.kind == LocalEntry::Kind::Passed);
    QVERIFY(!link.why.isEmpty());
    QVERIFY(isLink(at("loop")));
    QVERIFY(!isLink(m_folder->path()));
}

void tst_LocalFolder::linksToFilesAreFiles()
{
    write(at("target"), "12345");
    QVERIFY(QFile::link(at("target"), at("link")));
    const LocalEntry link = entry(QStringLiteral("link"));
    QVERIFY(link.kind == LocalEntry::Kind::File);
    QCOMPARE(link.size, 5);
}

void tst_LocalFolder::deadLinksArePassed()
{
    QVERIFY(QFile::link(at("nowhere"), at("dead")));
    QVERIFY(entry(QStringLiteral("dead")).kind == LocalEntry::Kind::Passed);
}

void tst_LocalFolder::namesThatAreNoTextArePassed()
{
    const QByteArray path = QFile::encodeName(m_folder->path()) + "/\xff\xfe.txt";
    FILE *file = std::fopen(path.constData(), "wb");
    QVERIFY(file != nullptr);
    QCOMPARE(std::fclose(file), 0);
    const auto entries = readLocalFolder(m_folder->path());
    QCOMPARE(entries.value().size(), size_t(1));
    QVERIFY(entries.value().front().kind == LocalEntry::Kind::Passed);
    QCOMPARE(std::remove(path.constData()), 0);
}
#else
void tst_LocalFolder::shortcutsAreFiles_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("to a larger file") << QStringLiteral("file.lnk");
    QTest::newRow("to a folder") << QStringLiteral("folder.lnk");
    QTest::newRow("to nothing") << QStringLiteral("nothing.lnk");
}

void tst_LocalFolder::shortcutsAreFiles()
{
    QFETCH(QString, name);
    QTemporaryDir elsewhere;
    QVERIFY(test::makeShortcuts(m_folder->path(), elsewhere.path()));
    const LocalEntry shortcut = entry(name);
    QVERIFY(shortcut.kind == LocalEntry::Kind::File);
    QFile file(m_folder->filePath(name));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(shortcut.size, file.readAll().size());
    QVERIFY(shortcut.size < test::shortcutTargetSize);
    // What is asked of it later agrees to the last digit.
    const EntryLook look(m_folder->filePath(name));
    QCOMPARE(shortcut.size, look.size());
    QCOMPARE(shortcut.modified, look.lastModified());
    QVERIFY(!isLink(m_folder->filePath(name)));
}
#endif

void tst_LocalFolder::missingIsAnError()
{
    const auto entries = readLocalFolder(at("none"));
    QVERIFY(!entries);
    QVERIFY(entries.error().words.startsWith(at("none")));
}

void tst_LocalFolder::unreadableIsAnError()
{
    const QString file = at("file");
    write(file, "x");
    QVERIFY2(!readLocalFolder(file), "a file is no empty folder");
    QVERIFY(QDir().mkdir(at("shut")));
    QFile::setPermissions(at("shut"), QFile::Permissions());
    const bool open = QDir(at("shut")).isReadable();
    const auto entries = readLocalFolder(at("shut"));
    QFile::setPermissions(at("shut"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    if (open)
        QSKIP("the administrator reads everything");
    QVERIFY(!entries);
}

QTEST_APPLESS_MAIN(tst_LocalFolder)
#include "tst_LocalFolder.moc"
