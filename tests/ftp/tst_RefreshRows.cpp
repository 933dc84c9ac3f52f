// A refresh writes only what changed; what it leaves is to the last column what a refresh leaves
// that first empties the subtree and then writes all of it.
#include "db/Recordset.h"
#include "db/Store.h"
#include "ftp/CacheFixture.h"

#include <QRandomGenerator>
#include <QTest>

namespace venlo::test
{

namespace
{
QDateTime minutesAgo(int minutes)
{
    static const QDateTime now = [] { // MLSD shows seconds, STAT minutes
        QDateTime time = QDateTime::currentDateTimeUtc();
        return time.addMSecs(-(time.toMSecsSinceEpoch() % 60'000));
    }();
    return now.addSecs(-60LL * minutes);
}

/// All columns of all rows of a table, with the kind of each value.
QStringList everything(Database &database, const QString &sql)
{
    const Rows rows = database.store().query(sql);
    QStringList lines;
    for (int row = 0; row < rows.count(); ++row) {
        QStringList fields;
        for (int field = 0; field < rows.fields(); ++field) {
            const QVariant &value = rows.at(field, row);
            const QString text = value.typeId() == QMetaType::QByteArray
                                     ? QString::fromLatin1(value.toByteArray().toHex())
                                 : value.typeId() == QMetaType::Double
                                     ? QString::number(value.toDouble(), 'g', 17)
                                     : value.toString();
            fields.append(QString::number(value.typeId()) + QLatin1Char(':') + text);
        }
        lines.append(fields.join(QLatin1Char('|')));
    }
    return lines;
}

QStringList content(EngineFixture &f)
{
    return everything(f.database, QStringLiteral("SELECT * FROM web ORDER BY sDir, sName")) +
           everything(f.database,
                      QStringLiteral("SELECT * FROM \"incomplete directories\" ORDER BY dir"));
}

/// Another client of the same server, with the same rows and marks.
struct Other : EngineFixture {
    [[nodiscard]] bool start(CacheFixture &f)
    {
        registerSite(web(), f.server.server(), f.server.user(), f.server.password());
        if (!connectTo(web(), f.server.server(), f.server.user(), f.server.password()))
            return false;
        const Rows rows = f.database.store().query(
            QStringLiteral("SELECT sDir, bFd, sName, dDate, nSize, \"raw name\", \"day only\" "
                           "FROM web ORDER BY sDir, sName"));
        Transaction transaction(database);
        for (int row = 0; row < rows.count(); ++row) {
            QVariantList values;
            for (int field = 0; field < rows.fields(); ++field)
                values.append(rows.at(field, row));
            database.store().exec(QStringLiteral("INSERT INTO web (sDir, bFd, sName, dDate, nSize, "
                                                 "\"raw name\", \"day only\") "
                                                 "VALUES (?, ?, ?, ?, ?, ?, ?)"),
                                  values);
        }
        IncompleteMarks marks(database);
        for (const auto &mark : f.cache.incompleteUnder(slash()))
            marks.set(web(), mark);
        transaction.commit();
        session.listOffset = f.session.listOffset;
        return true;
    }
    void emptyAndRefresh(const QString &dir)
    {
        bool ok = false;
        database.ExecSql(QStringLiteral("Delete From web Where sDir Like '%1*'").arg(dir), ok);
        Q_ASSERT(ok);
        cache.caRefresh(dir);
    }
};

/// Changes a server's tree, and what a client has cached of it, at random.
class Restless
{
public:
    Restless(CacheFixture &fixture, quint32 seed) : m_f(fixture), m_random(seed) {}

    void grow(int steps)
    {
        for (int i = 0; i < steps; ++i)
            change();
    }
    /// What the client's own transfers and panes leave in its rows.
    void touchRows(int steps)
    {
        for (int i = 0; i < steps; ++i) {
            const QString dir = QString::fromUtf8(folder());
            const QString name = QString::fromUtf8(pick());
            const int what = m_random.bounded(6);
            if (what == 0)
                m_f.cache.caAddFile(m_f.path(QStringLiteral("dbFtp.mdb")), dir, name);
            else if (what == 1)
                m_f.cache.folderMade(dir, name);
            else if (what == 2)
                m_f.cache.forgetFile(dir, name);
            else if (what == 3)
                m_f.cache.forgetFolder(dir, name);
            else if (what == 4)
                m_f.cache.renamed(dir, name, QString::fromUtf8(pick()), m_random.bounded(2) == 1);
            else
                (void)loaded(dir);
        }
        m_f.database.store().endGroup();
    }
    [[nodiscard]] QByteArray folder()
    {
        std::vector<QByteArray> folders{"/"};
        for (const QByteArray &path : m_f.server.tree().paths()) {
            if (path.size() > 1 && path.endsWith('/'))
                folders.push_back(path.chopped(1));
        }
        return folders.at(m_random.bounded(static_cast<quint32>(folders.size())));
    }
    [[nodiscard]] int bounded(int below) { return m_random.bounded(below); }

private:
    [[nodiscard]] QByteArray pick()
    {
        static const QByteArrayList names{"a",
                                          "A",
                                          "b.txt",
                                          "B.TXT",
                                          "it's",
                                          "d",
                                          "dd",
                                          "ddd",
                                          "x*y",
                                          "\xe6\x97\xa5\xe6\x9c\xac",
                                          "\xef\xbe\x8a\xef\xbe\x9d",
                                          "\xe3\x83\x8f",
                                          ".dot",
                                          " lead",
                                          "old",
                                          QByteArray(300, 'n')};
        return names.at(m_random.bounded(static_cast<int>(names.size())));
    }
    [[nodiscard]] QDateTime time()
    {
        return minutesAgo(m_random.bounded(5) == 0 ? 700'000 + m_random.bounded(9)
                                                   : m_random.bounded(50'000));
    }
    [[nodiscard]] bool loaded(const QString &dir)
    {
        try {
            return m_f.load(dir);
        } catch (const DbError &) {
            return true; // not all of it fits
        }
    }
    void change()
    {
        const QByteArray dir = folder();
        const QByteArray path = (dir == "/" ? QByteArray() : dir) + '/' + pick();
        ScriptedTree &tree = m_f.server.tree();
        const auto node = tree.node(path);
        const int what = m_random.bounded(10);
        if (!node && what < 4 && dir.count('/') < 4)
            tree.makeFolder(path, time());
        else if (!node)
            tree.put(path, QByteArray(m_random.bounded(50), 'x'), time());
        else if (node->kind == ScriptedTree::Kind::Folder && what < 2)
            (void)tree.rename(path, path + 'r');
        else if (what < 4 && node->kind == ScriptedTree::Kind::File)
            tree.put(path, QByteArray(m_random.bounded(50), 'y'), node->modified);
        else if (what < 6)
            (void)tree.setModified(path, time());
        else if (what < 7)
            (void)(tree.removeFile(path) || tree.removeFolder(path));
    }

    CacheFixture &m_f;
    QRandomGenerator m_random;
};
} // namespace

class tst_RefreshRows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void randomTrees_data();
    void randomTrees();
    void equalRowsAreLeftAlone();
    void onlyWhatChangedIsWritten();
    void otherSpelling();
    void foldersThatFail();
    void cancelled();
    void siblingsGo_data();
    void siblingsGo();
    void whatADeadRefreshLeftIsNotUsed();
    void storeThatFails();
};

void tst_RefreshRows::randomTrees_data()
{
    QTest::addColumn<bool>("mlsd");
    QTest::addColumn<bool>("utf8");
    QTest::addColumn<int>("stat");
    QTest::newRow("MLSD") << true << true << int(StatPath::Unknown);
    QTest::newRow("MLSD, STAT") << true << true << int(StatPath::Listed);
    QTest::newRow("LIST, STAT") << false << true << int(StatPath::Listed);
    QTest::newRow("LIST") << false << true << int(StatPath::Unknown);
    QTest::newRow("MLSD, names not in UTF-8") << true << false << int(StatPath::Unknown);
}

void tst_RefreshRows::randomTrees()
{
    QFETCH(bool, mlsd);
    QFETCH(bool, utf8);
    QFETCH(int, stat);
    CacheFixture f;
    f.server.options().mlsd = mlsd;
    f.server.options().utf8 = utf8;
    f.server.options().stat = static_cast<StatPath>(stat);
    Restless restless(f, 4711U + static_cast<quint32>(stat) + (mlsd ? 10U : 0U));
    restless.grow(150);
    QVERIFY(f.start());
    f.cache.caRefresh(slash());
    QVERIFY(f.cacheRows(web()).size() > 40);
    for (int round = 0; round < 12; ++round) {
        restless.grow(restless.bounded(12));
        if (round % 2 == 1)
            restless.touchRows(restless.bounded(8));
        QString dir = round % 3 == 0 ? slash() : QString::fromUtf8(restless.folder());
        if (dir.contains(QLatin1Char('\'')) || dir.contains(QLatin1Char('*')))
            dir = slash();
        Other other;
        QVERIFY(other.start(f));
        other.emptyAndRefresh(dir);
        f.cache.caRefresh(dir);
        QCOMPARE(content(f), content(other));
    }
}

namespace
{
struct TreeFixture : CacheFixture {
    TreeFixture()
    {
        for (const char *path : {"/a/1.txt", "/a/b/2.txt", "/a/b/3.txt", "/ab/4.txt", "/c/5.txt"})
            server.put(path, path, minutesAgo(300));
    }
    [[nodiscard]] bool listed()
    {
        if (!start())
            return false;
        cache.caRefresh(slash());
        return cacheRows(web()).size() == 9;
    }
    /// Which row is which: a row that was written anew is another one.
    [[nodiscard]] QStringList identities()
    {
        return everything(database,
                          QStringLiteral("SELECT sDir || '/' || sName, rowid FROM web ORDER BY 1"));
    }
    /// Paths of rows that are not the ones they were.
    [[nodiscard]] QStringList writtenSince(const QStringList &before)
    {
        QStringList paths;
        for (const QString &row : identities()) {
            if (!before.contains(row))
                paths.append(row.section(QLatin1Char('|'), 0, 0).section(QLatin1Char(':'), 1));
        }
        return paths;
    }
};
} // namespace

void tst_RefreshRows::equalRowsAreLeftAlone()
{
    TreeFixture f;
    QVERIFY(f.listed());
    const QStringList before = f.identities();
    const QStringList rows = content(f);
    f.cache.caRefresh(slash());
    f.cache.caRefresh(QStringLiteral("/a/b"));
    QCOMPARE(f.writtenSince(before), QStringList());
    QCOMPARE(content(f), rows);
    QCOMPARE(f.incomplete(), QStringList());
}

void tst_RefreshRows::onlyWhatChangedIsWritten()
{
    TreeFixture f;
    QVERIFY(f.listed());
    // So that a number that is free is not used again.
    f.cache.folderMade(QStringLiteral("/zz"), QStringLiteral("last"));
    const QStringList before = f.identities();
    f.server.put("/a/b/2.txt", "longer than it was", minutesAgo(300));
    f.server.put("/c/6.txt", "new", minutesAgo(10));
    (void)f.server.tree().removeFile("/ab/4.txt");
    f.cache.caRefresh(slash());
    QStringList written = f.writtenSince(before);
    written.sort();
    QCOMPARE(written, QStringList({QStringLiteral("/a/b/2.txt"), QStringLiteral("/a/b/3.txt"),
                                   QStringLiteral("/c/5.txt"), QStringLiteral("/c/6.txt")}));
    QCOMPARE(f.cacheRows(web()).size(), 9); // one more, one less; what was made up is gone
}

void tst_RefreshRows::otherSpelling()
{
    TreeFixture f;
    QVERIFY(f.listed());
    bool ok = false;
    f.database.ExecSql(QStringLiteral("Update web Set sDir='/A/B' Where sDir='/a/b'"), ok);
    QVERIFY(ok);
    f.database.ExecSql(QStringLiteral("Update web Set sName='1.TXT' Where sName='1.txt'"), ok);
    QVERIFY(ok);
    Other other;
    QVERIFY(other.start(f));
    other.emptyAndRefresh(slash());
    f.cache.caRefresh(slash());
    QCOMPARE(content(f), content(other));
    QVERIFY(f.cacheRows(web()).join(QLatin1Char(' ')).contains(QLatin1String("/a/b|0|2.txt")));
}

void tst_RefreshRows::foldersThatFail()
{
    TreeFixture f;
    QVERIFY(f.listed());
    f.server.on("CWD", "/a/b").reply(550, "keep out");
    f.server.on("CWD", "/c").reply(550, "keep out");
    Other other;
    QVERIFY(other.start(f));
    other.emptyAndRefresh(slash());
    f.cache.caRefresh(slash());
    QCOMPARE(content(f), content(other));
    QCOMPARE(f.incomplete(), QStringList({QStringLiteral("/a/b"), QStringLiteral("/c")}));
    QCOMPARE(f.cacheRows(web()).size(), 6);
    f.server.script().clear();
    f.cache.caRefresh(slash());
    QCOMPARE(f.cacheRows(web()).size(), 9);
    QCOMPARE(f.incomplete(), QStringList());
}

void tst_RefreshRows::cancelled()
{
    TreeFixture f;
    QVERIFY(f.listed());
    f.person.cancelAfter(2);
    f.cache.caRefresh(slash());
    // What was not listed is not known any more.
    QCOMPARE(f.incomplete(),
             QStringList({QStringLiteral("/a/b"), QStringLiteral("/ab"), QStringLiteral("/c")}));
    QCOMPARE(f.cacheRows(web()).size(), 5);
    f.person.resetCancel();
    f.cache.caRefresh(slash());
    QCOMPARE(f.cacheRows(web()).size(), 9);
}

void tst_RefreshRows::siblingsGo_data()
{
    QTest::addColumn<QString>("dir");
    QTest::addColumn<int>("rows");
    QTest::newRow("prefix of another") << QStringLiteral("/a") << 8;
    QTest::newRow("other letter case") << QStringLiteral("/A") << 4;
    QTest::newRow("nobody's prefix") << QStringLiteral("/c") << 9;
    QTest::newRow("not there") << QStringLiteral("/a/b/x") << 9;
}

void tst_RefreshRows::siblingsGo()
{
    QFETCH(QString, dir);
    QFETCH(int, rows);
    TreeFixture f;
    QVERIFY(f.listed());
    Other other;
    QVERIFY(other.start(f));
    other.emptyAndRefresh(dir);
    f.cache.caRefresh(dir);
    QCOMPARE(content(f), content(other));
    QCOMPARE(f.cacheRows(web()).size(), rows);
}

void tst_RefreshRows::whatADeadRefreshLeftIsNotUsed()
{
    TreeFixture f;
    QVERIFY(f.listed());
    // What another process would find if this one were killed.
    QTemporaryDir killed;
    int turn = 0;
    f.person.onYield([&] {
        if (++turn == 2)
            QFile::copy(f.path(QStringLiteral("dbFtp.mdb")),
                        killed.filePath(QStringLiteral("dbFtp.mdb")));
    });
    f.server.put("/c/6.txt", "new", minutesAgo(10));
    f.cache.caRefresh(slash());
    f.person.onYield({});
    QVERIFY(turn > 2);

    Database database(f.person, killed.path() + QLatin1Char('/'));
    bool ok = false;
    database.OpenDb(ok);
    QVERIFY(ok);
    Session session(f.person, database, f.errorLog, f.eventLog, EngineFixture::shortLimits());
    DirectoryCache cache(session, database, f.person, f.flags);
    session.OpenInternet(QString(), ok, false);
    session.Connect(web(), f.server.server(), f.server.user(), f.server.password(), true, ok);
    QVERIFY(ok);
    QCOMPARE(cache.caFileNames(QStringLiteral("/c")), QStringLiteral("5.txt\r6.txt"));
    const auto marks = cache.incompleteUnder(slash());
    QCOMPARE(marks.size(), size_t(1));
    QCOMPARE(marks.front().dir, slash());
    // And once only.
    session.Disconnect();
    session.Connect(web(), f.server.server(), f.server.user(), f.server.password(), true, ok);
    QVERIFY(ok);
    f.server.log().clear();
    QCOMPARE(cache.caFileNames(QStringLiteral("/c")), QStringLiteral("5.txt\r6.txt"));
    QCOMPARE(f.server.count("MLSD"), 0);
    cache.caRefresh(slash());
    QVERIFY(cache.incompleteUnder(slash()).empty());
}

void tst_RefreshRows::storeThatFails()
{
    TreeFixture f;
    QVERIFY(f.listed());
    // The rows of one directory cannot be written.
    f.database.store().exec(
        QStringLiteral("CREATE TRIGGER full BEFORE INSERT ON web WHEN NEW.sName='6.txt' "
                       "BEGIN SELECT RAISE(ROLLBACK, 'full'); END"));
    f.server.put("/c/6.txt", "new", minutesAgo(10));
    bool thrown = false;
    try {
        f.cache.caRefresh(slash());
    } catch (const DbError &) {
        thrown = true;
    }
    QVERIFY(thrown);
    QCOMPARE(f.incomplete(), QStringList(slash()));
    f.database.store().exec(QStringLiteral("DROP TRIGGER full"));
    // Nothing that was there before counts as listed.
    QCOMPARE(f.cache.caFileNames(QStringLiteral("/c")), QStringLiteral("5.txt\r6.txt"));
    f.cache.caRefresh(slash());
    QCOMPARE(f.incomplete(), QStringList());
    QCOMPARE(f.cacheRows(web()).size(), 10);
}

} // namespace venlo::test

QTEST_GUILESS_MAIN(venlo::test::tst_RefreshRows)
#include "tst_RefreshRows.moc"
