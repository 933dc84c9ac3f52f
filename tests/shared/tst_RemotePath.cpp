#include <QTest>

#include "shared/RemotePath.h"

namespace venlo
{

class tst_RemotePath : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void normalised_data();
    void normalised();
    void child_data();
    void child();
    void split_data();
    void split();
    void below_data();
    void below();
};

namespace
{
QString text(const char *latin)
{
    return QString::fromLatin1(latin);
}
} // namespace

void tst_RemotePath::normalised_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("normal");
    QTest::newRow("nothing is the root") << text("") << text("/");
    QTest::newRow("the root") << text("/") << text("/");
    QTest::newRow("already normal") << text("/a/b") << text("/a/b");
    QTest::newRow("no leading slash") << text("a/b") << text("/a/b");
    QTest::newRow("trailing slash") << text("/a/b/") << text("/a/b");
    QTest::newRow("one trailing slash only") << text("/a//") << text("/a/");
    QTest::newRow("blanks stay") << text("/ a ") << text("/ a ");
}

void tst_RemotePath::normalised()
{
    QFETCH(QString, given);
    QTEST(normalisedRemoteDir(given), "normal");
}

void tst_RemotePath::child_data()
{
    QTest::addColumn<QString>("dir");
    QTest::addColumn<QString>("path");
    QTest::newRow("of the root") << text("/") << text("/n");
    QTest::newRow("of a directory") << text("/a") << text("/a/n");
}

void tst_RemotePath::child()
{
    QFETCH(QString, dir);
    QTEST(remoteChild(dir, text("n")), "path");
}

void tst_RemotePath::split_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("dir");
    QTest::addColumn<QString>("name");
    QTest::newRow("first level") << text("/n") << text("/") << text("n");
    QTest::newRow("deeper") << text("/a/b/n") << text("/a/b") << text("n");
    QTest::newRow("no slash") << text("n") << text("/") << text("n");
    QTest::newRow("the root") << text("/") << text("/") << text("");
}

void tst_RemotePath::split()
{
    QFETCH(QString, path);
    QString dir;
    QString name;
    sjSplitPath(path, dir, name);
    QTEST(dir, "dir");
    QTEST(name, "name");
}

void tst_RemotePath::below_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("dir");
    QTest::addColumn<bool>("exact");
    QTest::addColumn<bool>("folded");
    QTest::newRow("itself") << text("/a") << text("/a") << true << true;
    QTest::newRow("a child") << text("/a/b") << text("/a") << true << true;
    QTest::newRow("everything is below the root") << text("/a") << text("/") << true << true;
    QTest::newRow("half a component") << text("/ab") << text("/a") << false << false;
    QTest::newRow("the parent") << text("/a") << text("/a/b") << false << false;
    QTest::newRow("another letter case") << text("/A/b") << text("/a") << false << true;
    QTest::newRow("itself in another case") << text("/A") << text("/a") << false << true;
}

void tst_RemotePath::below()
{
    QFETCH(QString, path);
    QFETCH(QString, dir);
    QTEST(isBelowOrSame(path, dir), "exact");
    QTEST(isBelowOrSameFolded(path, dir), "folded");
}

} // namespace venlo

QTEST_APPLESS_MAIN(venlo::tst_RemotePath)
#include "tst_RemotePath.moc"
