#include <array>
#include <cstdio>
#include <memory>

#include <QTest>

#include "startup/ConsoleFrontEnd.h"

namespace venlo
{

namespace
{
using File = std::unique_ptr<std::FILE, int (*)(std::FILE *)>;

QString contents(std::FILE *file)
{
    std::rewind(file);
    std::array<char, 1024> bytes{};
    const size_t count = std::fread(bytes.data(), 1, bytes.size(), file);
    return QString::fromLocal8Bit(bytes.data(), static_cast<qsizetype>(count));
}
} // namespace

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
    File m_results{nullptr, &std::fclose};
    File m_messages{nullptr, &std::fclose};
    std::unique_ptr<ConsolePrinter> m_printer;
    std::unique_ptr<ConsoleFrontEnd> m_frontEnd;
};

void tst_ConsoleFrontEnd::init()
{
    m_flags = {};
    m_results.reset(std::tmpfile());
    m_messages.reset(std::tmpfile());
    m_printer = std::make_unique<ConsolePrinter>(m_results.get(), m_messages.get());
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
    QCOMPARE(contents(m_messages.get()), batch ? QStringLiteral("a を削除します [OK]\n")
                                               : QStringLiteral("a を削除します [ｷｬﾝｾﾙ]\n"));
}

void tst_ConsoleFrontEnd::neverRetries()
{
    QFETCH(bool, batch);
    m_flags.batch = batch;
    QVERIFY(!m_frontEnd->retryOrCancel(QStringLiteral("a Put File Err")));
    QCOMPARE(contents(m_messages.get()), QStringLiteral("a Put File Err [ｷｬﾝｾﾙ]\n"));
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
    QVERIFY(contents(m_messages.get())
                .startsWith(QStringLiteral("このﾌｫﾙﾀﾞには既に 'a.txt' ﾌｧｲﾙが存在します｡")));
}

void tst_ConsoleFrontEnd::streams()
{
    m_frontEnd->message(QStringLiteral("message"));
    m_frontEnd->warn(QStringLiteral("warning"));
    m_frontEnd->addStatus(QStringLiteral("status"));
    m_frontEnd->setMessageLine(QStringLiteral("line"));
    m_frontEnd->printResult(QStringLiteral("result"));
    QCOMPARE(contents(m_messages.get()), QStringLiteral("message\nwarning\n"));
    QCOMPARE(contents(m_results.get()), QStringLiteral("result\n"));
}

} // namespace venlo

QTEST_GUILESS_MAIN(venlo::tst_ConsoleFrontEnd)
#include "tst_ConsoleFrontEnd.moc"
