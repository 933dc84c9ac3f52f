#include <memory>
#include <optional>

#include <QTest>

#include "startup/ConsoleFrontEnd.h"
#include "support/CaughtStreams.h"

namespace venlo
{

class tst_ConsoleFrontEnd : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void questions_data();
    void questions();
    void neverRetries_data() { questions_data(); }
    void neverRetries();
    void overwrite_data() { questions_data(); }
    void overwrite();
    void streams();

private:
    Flags m_flags;
    std::optional<test::CaughtStreams> m_caught;
    std::unique_ptr<ConsolePrinter> m_printer;
    std::unique_ptr<ConsoleFrontEnd> m_frontEnd;
};

void tst_ConsoleFrontEnd::init()
{
    m_flags = {};
    m_caught.emplace();
    m_printer = std::make_unique<ConsolePrinter>(m_caught->results(), m_caught->messages());
    m_frontEnd = std::make_unique<ConsoleFrontEnd>(*m_printer, m_flags);
}

void tst_ConsoleFrontEnd::questions_data()
{
    QTest::addColumn<bool>("batch");
    QTest::newRow("under /b") << true;
    QTest::newRow("without /b") << false;
}

void tst_ConsoleFrontEnd::questions()
{
    QFETCH(bool, batch);
    m_flags.batch = batch;
    QCOMPARE(m_frontEnd->question(QStringLiteral("a を削除します")), batch);
    QCOMPARE(m_caught->messageText(), batch ? QStringLiteral("a を削除します [OK]\n")
                                            : QStringLiteral("a を削除します [ｷｬﾝｾﾙ]\n"));
}

void tst_ConsoleFrontEnd::neverRetries()
{
    QFETCH(bool, batch);
    m_flags.batch = batch;
    QVERIFY(!m_frontEnd->retryOrCancel(QStringLiteral("a Put File Err")));
    QCOMPARE(m_caught->messageText(), QStringLiteral("a Put File Err [ｷｬﾝｾﾙ]\n"));
}

void tst_ConsoleFrontEnd::overwrite()
{
    QFETCH(bool, batch);
    m_flags.batch = batch;
    OverwriteQuestion question;
    question.fileName = QStringLiteral("a.txt");
    const OverwriteAnswer answer = m_frontEnd->askOverwrite(question);
    QCOMPARE(answer.overwrite, batch);
    QVERIFY(answer.mode == (batch ? OverwriteMode::Ask : OverwriteMode::CancelAll));
    QVERIFY(m_caught->messageText().startsWith(
        QStringLiteral("このﾌｫﾙﾀﾞには既に 'a.txt' ﾌｧｲﾙが存在します｡")));
}

void tst_ConsoleFrontEnd::streams()
{
    m_frontEnd->message(QStringLiteral("message"));
    m_frontEnd->warn(QStringLiteral("warning"));
    m_frontEnd->addStatus(QStringLiteral("status"));
    m_frontEnd->setMessageLine(QStringLiteral("line"));
    m_frontEnd->printResult(QStringLiteral("result"));
    QCOMPARE(m_caught->messageText(), QStringLiteral("message\nwarning\n"));
    QCOMPARE(m_caught->resultText(), QStringLiteral("result\n"));
}

} // namespace venlo

QTEST_GUILESS_MAIN(venlo::tst_ConsoleFrontEnd)
#include "tst_ConsoleFrontEnd.moc"
