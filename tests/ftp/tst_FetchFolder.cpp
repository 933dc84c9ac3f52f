#include "ftp/FetchFolder.h"

#include <memory>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include "support/RawFiles.h"
#include "support/Trees.h"

namespace venlo::test
{

/// Fetched files that people work on: what goes at the end and what stays.
class tst_FetchFolder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void goesWholeBeforeItIsRemembered();
    void goesAsItWasFetched();
    void workStays_data();
    void workStays();
    void sameSizeIsNotTheSame();
    void manyAreNamedByTheirFolder();
    void linksAreNotFollowed();
    void whatWentUpGoes();
    void cannotBeMade();

private:
    /// The entry's path, with "/" between the names.
    [[nodiscard]] QString at(const char *name) const
    {
        return m_path + QLatin1Char('/') + QString::fromUtf8(name);
    }
    [[nodiscard]] bool put(const char *name, const QByteArray &bytes) const
    {
        return writeFile(rawPath(at(name)), bytes);
    }
    [[nodiscard]] QStringList named(const QStringList &names) const
    {
        QStringList paths;
        for (const QString &name : names)
            paths += QDir::toNativeSeparators(m_path + QLatin1Char('/') + name);
        return paths;
    }

    std::unique_ptr<FetchFolder> m_folder;
    QString m_path;
};

void tst_FetchFolder::init()
{
    m_folder = std::make_unique<FetchFolder>();
    m_path = m_folder->path();
    const QDateTime day(QDate(2020, 5, 17), QTime(12, 30));
    QVERIFY(makeTree(m_path, {{"report.csv", "1,2,3", day},
                              {"sub/deep/.htaccess", "deny", day},
                              {"sub/b.txt", "bbb", day},
                              {"empty/"}}));
}

void tst_FetchFolder::cleanup()
{
    m_folder.reset();
    QVERIFY(QDir(m_path).removeRecursively());
}

void tst_FetchFolder::goesWholeBeforeItIsRemembered()
{
    m_folder.reset();
    QVERIFY(!QFileInfo::exists(m_path));
}

void tst_FetchFolder::goesAsItWasFetched()
{
    m_folder->remember();
    QCOMPARE(m_folder->work(), QStringList());
    m_folder.reset();
    QVERIFY(!QFileInfo::exists(m_path));
}

void tst_FetchFolder::workStays_data()
{
    QTest::addColumn<QString>("renamed"); ///< what becomes of report.csv
    QTest::addColumn<QString>("written");
    QTest::addColumn<QStringList>("named");
    QTest::addColumn<QStringList>("left");
    const auto row = [](const char *title, const char *renamed, const char *written,
                        const char *named, const char *left) {
        const auto names = [](const char *text) {
            return QString::fromUtf8(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
        };
        QTest::newRow(title) << QString::fromUtf8(renamed) << QString::fromUtf8(written)
                             << names(named) << names(left);
    };
    row("changed", "", "report.csv", "report.csv", "report.csv");
    row("saved as, beside", "", "report.xlsx", "report.xlsx", "report.xlsx");
    row("renamed", "mine.csv", "", "mine.csv", "mine.csv");
    row("moved over another", "sub/b.txt", "", "sub/b.txt", "sub/ sub/b.txt");
    row("deeper", "", "sub/deep/new.txt", "sub/deep/new.txt", "sub/ sub/deep/ sub/deep/new.txt");
    row("hidden", "", "sub/deep/.htaccess", "sub/deep/.htaccess",
        "sub/ sub/deep/ sub/deep/.htaccess");
    row("open in a spreadsheet", "", "~$report.csv", "", "~$report.csv");
    row("open in an editor", "", ".~lock.report.csv#", "", ".~lock.report.csv#");
}

void tst_FetchFolder::workStays()
{
    QFETCH(QString, renamed);
    QFETCH(QString, written);
    QFETCH(QStringList, named);
    QFETCH(QStringList, left);
    m_folder->remember();
    if (!renamed.isEmpty()) {
        const QString target = at(renamed.toUtf8().constData());
        (void)QFile::remove(target);
        QVERIFY(QFile::rename(at("report.csv"), target));
    }
    if (!written.isEmpty())
        QVERIFY(put(written.toUtf8().constData(), "hours of work"));
    QCOMPARE(m_folder->work(), this->named(named));
    m_folder.reset();
    QStringList there;
    const TreeSnapshot tree = snapshot(m_path);
    for (const auto &[path, item] : tree)
        there += QString::fromUtf8(path);
    QCOMPARE(there, left);
    if (!written.isEmpty())
        QCOMPARE(readFile(rawPath(at(written.toUtf8().constData()))), QByteArray("hours of work"));
}

void tst_FetchFolder::sameSizeIsNotTheSame()
{
    m_folder->remember();
    QVERIFY(put("report.csv", "4,5,6"));
    m_folder.reset();
    QCOMPARE(readFile(rawPath(at("report.csv"))), QByteArray("4,5,6"));
}

void tst_FetchFolder::manyAreNamedByTheirFolder()
{
    m_folder->remember();
    for (const char *name : {"1", "2", "3", "4", "5"})
        QVERIFY(put(name, "work"));
    QCOMPARE(m_folder->work().size(), 5);
    QVERIFY(put("6", "work"));
    QCOMPARE(m_folder->work(), QStringList{QDir::toNativeSeparators(m_path)});
    m_folder.reset();
    QCOMPARE(snapshot(m_path).size(), 6U);
}

/// What a link leads to was never fetched, whatever it looks like.
void tst_FetchFolder::linksAreNotFollowed()
{
#ifdef Q_OS_WIN
    QSKIP("a link needs a right there");
#endif
    m_folder->remember();
    const QString away = m_path + QStringLiteral("-away");
    QVERIFY(QFile::rename(at("sub"), away));
    QVERIFY(QFile::link(away, at("sub")));
    QCOMPARE(m_folder->work(), named({QStringLiteral("sub")}));
    m_folder.reset();
    QVERIFY(QFileInfo(at("sub")).isSymLink());
    QCOMPARE(readFile(rawPath(away + QStringLiteral("/b.txt"))), QByteArray("bbb"));
    QVERIFY(QDir(away).removeRecursively());
}

void tst_FetchFolder::whatWentUpGoes()
{
    m_folder->remember();
    QVERIFY(put("report.csv", "hours of work"));
    const FileStamp sent(at("report.csv"));
    m_folder->remember(at("report.csv"), sent);
    QVERIFY(m_folder->fetched(at("report.csv")) == sent);
    QCOMPARE(m_folder->work(), QStringList());
    m_folder.reset();
    QVERIFY(!QFileInfo::exists(m_path));
}

void tst_FetchFolder::cannotBeMade()
{
#ifdef Q_OS_WIN
    const char *const variable = "TMP";
#else
    const char *const variable = "TMPDIR";
#endif
    const QByteArray before = qgetenv(variable);
    qputenv(variable, QFile::encodeName(at("report.csv")));
    FetchFolder none;
    if (before.isNull())
        qunsetenv(variable);
    else
        qputenv(variable, before);
#ifdef Q_OS_UNIX // elsewhere the system falls back to a folder that is there
    QCOMPARE(none.path(), QString());
#endif
    none.remember();
    QCOMPARE(none.work(), QStringList());
}

} // namespace venlo::test

QTEST_GUILESS_MAIN(venlo::test::tst_FetchFolder)
#include "tst_FetchFolder.moc"
