#include "sync/LocalReadAhead.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "support/Trees.h"

using namespace venlo;
using namespace std::chrono_literals;

namespace
{
QStringList names(const LocalReadAhead::Entries &entries)
{
    QStringList list;
    for (const LocalEntry &entry : entries)
        list += entry.name;
    list.sort();
    return list;
}
} // namespace

/// What the comparison is given of a folder, however far the reader has come.
class tst_LocalReadAhead : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void everyFolderAsItIs();
    void whatCannotBeReadIsAnError();
    void oldEntriesAreReadAgain();
    void freshEntriesAreNot();
    void handedOutOnce();
    void nothingStaysBehindTheEnd();

private:
    [[nodiscard]] QString at(const QString &name) const { return m_folder->filePath(name); }
    /// The root's names with "later" made behind the reader's look, where it comes in time.
    [[nodiscard]] QStringList rootAfterChange(LocalReadAhead &ahead, int patience) const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_LocalReadAhead::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(test::makeTree(m_folder->path(),
                           {{"a.txt", "1"}, {"sub/b.txt", "22"}, {"sub/deep/写真.txt", "333"}}));
}

QStringList tst_LocalReadAhead::rootAfterChange(LocalReadAhead &ahead, int patience) const
{
    QFile::remove(at(QStringLiteral("later")));
    ahead.begin(m_folder->path());
    QTest::qWait(patience); // ms
    QFile file(at(QStringLiteral("later")));
    if (!file.open(QIODevice::WriteOnly))
        return {};
    file.close();
    const auto entries = ahead.take(m_folder->path());
    return entries ? names(entries.value()) : QStringList();
}

void tst_LocalReadAhead::everyFolderAsItIs()
{
    for (const bool started : {false, true}) {
        LocalReadAhead ahead;
        if (started)
            ahead.begin(m_folder->path());
        QStringList folders{m_folder->path()};
        int files = 0;
        while (!folders.isEmpty()) {
            const QString folder = folders.takeLast();
            const auto entries = ahead.take(folder);
            QVERIFY(entries);
            for (const LocalEntry &entry : entries.value()) {
                const QString path = entryPath(folder, entry);
                QVERIFY2(QFileInfo::exists(path), qPrintable(path));
                QCOMPARE(entry.kind == LocalEntry::Kind::Folder, QFileInfo(path).isDir());
                if (entry.kind == LocalEntry::Kind::Folder) {
                    folders += path;
                    continue;
                }
                QCOMPARE(entry.size, QFileInfo(path).size());
                ++files;
            }
        }
        QCOMPARE(files, 3);
    }
}

void tst_LocalReadAhead::whatCannotBeReadIsAnError()
{
    LocalReadAhead ahead;
    ahead.begin(at(QStringLiteral("none")));
    QVERIFY(!ahead.take(at(QStringLiteral("none"))));
    QVERIFY2(ahead.take(m_folder->path()), "another folder is read all the same");
}

void tst_LocalReadAhead::oldEntriesAreReadAgain()
{
    LocalReadAhead ahead(0ms);
    QCOMPARE(
        rootAfterChange(ahead, 50),
        QStringList({QStringLiteral("a.txt"), QStringLiteral("later"), QStringLiteral("sub")}));
}

void tst_LocalReadAhead::freshEntriesAreNot()
{
    const QStringList before{QStringLiteral("a.txt"), QStringLiteral("sub")};
    QStringList seen;
    for (int patience = 10; seen != before && patience < 10'000; patience *= 3) {
        LocalReadAhead ahead(1h);
        seen = rootAfterChange(ahead, patience);
    }
    QCOMPARE(seen, before);
}

void tst_LocalReadAhead::handedOutOnce()
{
    LocalReadAhead ahead(1h);
    (void)rootAfterChange(ahead, 50);
    const auto again = ahead.take(m_folder->path());
    QVERIFY(again);
    QVERIFY(names(again.value()).contains(QStringLiteral("later")));
}

void tst_LocalReadAhead::nothingStaysBehindTheEnd()
{
    LocalReadAhead ahead(1h);
    ahead.begin(m_folder->path());
    QTest::qWait(50);
    ahead.end();
    QVERIFY(QFile::remove(at(QStringLiteral("a.txt"))));
    const auto entries = ahead.take(m_folder->path());
    QVERIFY(entries);
    QCOMPARE(names(entries.value()), QStringList({QStringLiteral("sub")}));
}

QTEST_GUILESS_MAIN(tst_LocalReadAhead)
#include "tst_LocalReadAhead.moc"
