#include <QTest>

#include "shared/ConsolePrinter.h"
#include "shared/FrontEnd.h"
#include "support/CaughtStreams.h"

namespace venlo::test
{

class tst_ConsolePrinter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void outcomes_data();
    void outcomes();
    void streams();
};

void tst_ConsolePrinter::outcomes_data()
{
    QTest::addColumn<Outcome::Kind>("kind");
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("to");
    QTest::addColumn<QString>("why");
    QTest::addColumn<QString>("line");
    using Kind = Outcome::Kind;
    const QString none;
    const QString local = QStringLiteral("C:\\x\\y");
    const QString remote = QStringLiteral("/s/y");
    QTest::newRow("up") << Kind::Uploaded << local << remote << none
                        << QStringLiteral("ｱｯﾌﾟﾛｰﾄﾞ  C:\\x\\y → /s/y");
    QTest::newRow("down") << Kind::Downloaded << remote << local << none
                          << QStringLiteral("ﾀﾞｳﾝﾛｰﾄﾞ  /s/y → C:\\x\\y");
    QTest::newRow("deleted there")
        << Kind::DeletedRemote << remote << none << none << QStringLiteral("FTP側から削除  /s/y");
    QTest::newRow("deleted here") << Kind::DeletedLocal << local << none << none
                                  << QStringLiteral("ﾏｲｺﾝﾋﾟｭｰﾀｰ側から削除  C:\\x\\y");
    QTest::newRow("made") << Kind::FolderMade << remote << none << none
                          << QStringLiteral("ﾌｫﾙﾀﾞ作成  /s/y");
    QTest::newRow("folder removed there") << Kind::FolderRemovedRemote << remote << none << none
                                          << QStringLiteral("FTP側からﾌｫﾙﾀﾞ削除  /s/y");
    QTest::newRow("folder removed here") << Kind::FolderRemovedLocal << local << none << none
                                         << QStringLiteral("ﾏｲｺﾝﾋﾟｭｰﾀｰ側からﾌｫﾙﾀﾞ削除  C:\\x\\y");
    QTest::newRow("skipped") << Kind::Skipped << local << remote << none
                             << QStringLiteral("ｽｷｯﾌﾟ  C:\\x\\y → /s/y");
    QTest::newRow("given up") << Kind::GivenUp << local << remote << QStringLiteral("550 no")
                              << QStringLiteral("実行できませんでした  C:\\x\\y → /s/y (550 no)");
    QTest::newRow("a name cannot steer the terminal")
        << Kind::DeletedRemote << QStringLiteral("/\x1b[2J\nx") << none << none
        << QStringLiteral("FTP側から削除  /\ufffd[2J\ufffdx");
}

void tst_ConsolePrinter::outcomes()
{
    QFETCH(Outcome::Kind, kind);
    QFETCH(QString, from);
    QFETCH(QString, to);
    QFETCH(QString, why);
    QFETCH(QString, line);
    const CaughtStreams caught;
    ConsolePrinter printer(caught.results(), caught.messages());
    printer.printOutcome({kind, from, to, why});
    // What the system's encoding lacks is replaced there.
    const QString shown = QString::fromLocal8Bit(line.toLocal8Bit());
    QCOMPARE(caught.resultText(), shown + QLatin1Char('\n'));
}

void tst_ConsolePrinter::streams()
{
    const CaughtStreams caught;
    ConsolePrinter printer(caught.results(), caught.messages());
    printer.printError(QStringLiteral("一\r二\r\n三\n"));
    printer.printResult(QStringLiteral("結果"));
    QCOMPARE(caught.messageText(), QStringLiteral("一\n二\n三\n"));
    QCOMPARE(caught.resultText(), QStringLiteral("結果\n"));
}

} // namespace venlo::test

QTEST_GUILESS_MAIN(venlo::test::tst_ConsolePrinter)
#include "tst_ConsolePrinter.moc"
