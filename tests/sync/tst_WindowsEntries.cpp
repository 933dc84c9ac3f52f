// Local entries as only Windows has them, compared and worked on: shortcuts and short names.
#include "platform/Files.h"
#include "support/ScriptedServer.h"
#include "support/ShortName.h"
#include "support/Shortcuts.h"
#include "sync/Execution.h"
#include "sync/SyncWorld.h"
#include "sync/WorkTables.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace venlo;
using namespace venlo::test;

namespace
{
const QString pub = QStringLiteral("/pub");
const QDateTime noon(QDate(2024, 5, 6), QTime(3, 0, 10), Qt::UTC);

/// A server and a comparison of it with a local folder.
struct Compared {
    Compared() { server.makeFolder("/pub"); }

    [[nodiscard]] QString path(const char *inside) const
    {
        return world.local() + QLatin1Char('/') + QString::fromUtf8(inside);
    }
    [[nodiscard]] bool write(const std::vector<TreeRow> &rows) const
    {
        return makeTree(world.local(), rows);
    }
    [[nodiscard]] bool compare(bool down)
    {
        if (!server.start())
            return false;
        world.registerSite(server.server(), server.user(), server.password());
        if (!world.connectToSite())
            return false;
        review = std::make_unique<SyncReview>(world.compare(down, pub));
        review->load(world.database);
        return true;
    }
    [[nodiscard]] int execute()
    {
        Execution execution(world.worker, world.person, world.flags);
        return execution.run(*review, true);
    }
    [[nodiscard]] QByteArray content(const char *inside) const
    {
        QFile file(path(inside));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
    }
    [[nodiscard]] QStringList reasons() const
    {
        QStringList texts;
        for (const Outcome &outcome : world.person.outcomes(Outcome::Kind::GivenUp))
            texts += outcome.why;
        return texts;
    }

    ScriptedServer server;
    SyncWorld world;
    QTemporaryDir elsewhere;
    std::unique_ptr<SyncReview> review;
};
} // namespace

class tst_WindowsEntries : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void shortcutsAreWhatWasCompared();
    void aShortcutThatChanged();
    void theShortNameOfAnotherFile();
    void theShortNameOfAnotherFolder();
};

void tst_WindowsEntries::shortcutsAreWhatWasCompared()
{
    Compared c;
    QVERIFY(c.write({{"old/f", "f", noon}}));
    QVERIFY(makeShortcuts(c.world.local(), c.elsewhere.path()));
    QVERIFY(makeShortcuts(c.path("old"), c.elsewhere.path()));
    QVERIFY(c.compare(true));
    QCOMPARE(c.review->pendingCount(), 4);
    const int row = rowOf(*c.review, QStringLiteral("/file.lnk"));
    QCOMPARE(c.review->row(row).other.size, c.content("file.lnk").size());
    QVERIFY(c.review->row(row).other.size < shortcutTargetSize);
    QCOMPARE(c.execute(), 1);
    QCOMPARE(c.reasons(), QStringList());
    QCOMPARE(
        QDir(c.world.local()).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot),
        QStringList());
    QVERIFY(QFile::exists(c.elsewhere.filePath(QStringLiteral("target.bin"))));
    QVERIFY(QFile::exists(c.elsewhere.filePath(QStringLiteral("target/inside"))));
}

/// Changes of the shortcut count, those of what it leads to do not.
void tst_WindowsEntries::aShortcutThatChanged()
{
    Compared c;
    QVERIFY(makeShortcuts(c.world.local(), c.elsewhere.path()));
    QVERIFY(c.compare(true));
    QVERIFY(makeTree(c.elsewhere.path(), {{"target.bin", "shorter now", noon}}));
    QVERIFY(setModifiedTime(c.path("nothing.lnk"), noon));
    QCOMPARE(c.execute(), 1);
    QCOMPARE(c.reasons(), QStringList{QStringLiteral("比較の後に変わりました")});
    QVERIFY(QFile(c.path("nothing.lnk")).open(QIODevice::ReadOnly));
    QVERIFY(!QFile(c.path("file.lnk")).open(QIODevice::ReadOnly));
}

void tst_WindowsEntries::theShortNameOfAnotherFile()
{
    Compared c;
    QVERIFY(c.write({{"Report2023Final.xls", "mine", noon}}));
    const QString other = shortNameOf(c.path("Report2023Final.xls"));
    if (other.isEmpty())
        QSKIP("the file system gives no short names");
    c.server.put("/pub/Report2023Final.xls", "mine", noon);
    c.server.put("/pub/" + other.toLatin1(), "theirs", noon);
    QVERIFY(c.compare(true));
    QCOMPARE(c.execute(), 1);
    QCOMPARE(c.content("Report2023Final.xls"), QByteArray("mine"));
    QCOMPARE(c.reasons(), QStringList{QStringLiteral("'Report2023Final.xls' の短い名前です")});
}

void tst_WindowsEntries::theShortNameOfAnotherFolder()
{
    Compared c;
    QVERIFY(c.write({{"Papers of the office/f", "mine", noon}}));
    const QString other = shortNameOf(c.path("Papers of the office"));
    if (other.isEmpty())
        QSKIP("the file system gives no short names");
    c.server.put("/pub/Papers of the office/f", "mine", noon);
    c.server.put("/pub/" + other.toLatin1() + "/new", "theirs", noon);
    QVERIFY(c.compare(true));
    QCOMPARE(c.execute(), 1);
    QCOMPARE(c.content("Papers of the office/f"), QByteArray("mine"));
    QVERIFY(!QFile::exists(c.path("Papers of the office/new")));
    QVERIFY(!c.reasons().isEmpty());
    for (const QString &why : c.reasons())
        QCOMPARE(why, QStringLiteral("'Papers of the office' の短い名前です"));
}

QTEST_GUILESS_MAIN(tst_WindowsEntries)
#include "tst_WindowsEntries.moc"
