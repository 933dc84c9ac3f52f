#include "support/ScriptedPerson.h"

#include <QTest>

using venlo::Outcome;
using venlo::OverwriteMode;
using venlo::test::ScriptedPerson;

class tst_ScriptedPerson : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void announcedAnswersAreGiven()
    {
        ScriptedPerson person;
        person.expectQuestion(QStringLiteral("a を削除します"), true);
        person.expectRetryOrCancel(QStringLiteral("again?"), true);
        person.expectOverwrite(QStringLiteral("x.txt"), {OverwriteMode::KeepNewer, true});
        person.expectMessage(QStringLiteral("done"));
        QVERIFY(person.question(QStringLiteral("a を削除します")));
        QVERIFY(person.retryOrCancel(QStringLiteral("again?")));
        const auto answer = person.askOverwrite({QStringLiteral("x.txt"), {}, {}, {}, {}});
        QCOMPARE(answer.mode, OverwriteMode::KeepNewer);
        QVERIFY(answer.overwrite);
        person.message(QStringLiteral("done"));
        QVERIFY(person.verify());
    }

    void unexpectedMessageFails()
    {
        ScriptedPerson person;
        person.message(QStringLiteral("boo"));
        QCOMPARE(person.failures(), QStringList{QStringLiteral("unexpected message \"boo\"")});
    }

    void unexpectedQuestionIsCancelledAndFails()
    {
        ScriptedPerson person;
        QVERIFY(!person.question(QStringLiteral("delete all?")));
        QVERIFY(!person.retryOrCancel(QStringLiteral("again?")));
        QVERIFY(!person.askOverwrite({}).overwrite);
        QCOMPARE(person.failures().size(), 3);
    }

    void wrongOrderFails()
    {
        ScriptedPerson person;
        person.expectMessage(QStringLiteral("first"));
        person.expectMessage(QStringLiteral("second"));
        person.message(QStringLiteral("second"));
        QCOMPARE(person.failures().size(), 3); // one unexpected, two that never came
    }

    void missingMessageFails()
    {
        ScriptedPerson person;
        person.expectMessage(QStringLiteral("never"));
        QCOMPARE(person.failures(), QStringList{QStringLiteral("never came: message \"never\"")});
    }

    void cancelsInTheNthYield()
    {
        ScriptedPerson person;
        person.cancelAfter(2);
        person.yield();
        QVERIFY(!person.cancelled());
        person.yield();
        QVERIFY(person.cancelled());
        person.resetCancel();
        QVERIFY(!person.cancelled());
    }

    void cancelsAtAStatusLine()
    {
        ScriptedPerson person;
        person.cancelAt(ScriptedPerson::What::Status, QStringLiteral("b"));
        person.addStatus(QStringLiteral("a"));
        QVERIFY(!person.cancelled());
        person.addStatus(QStringLiteral("b"));
        QVERIFY(person.cancelled());
    }

    void keepsEverythingInOrder()
    {
        ScriptedPerson person;
        person.showWait(QStringLiteral("wait"));
        person.addStatus(QStringLiteral("s"));
        person.outcome({Outcome::Kind::Uploaded, QStringLiteral("/l/a"), QStringLiteral("/a"), {}});
        person.printResult(QStringLiteral("r"));
        person.warn(QStringLiteral("w"));
        QCOMPARE(person.openWaits(), 1);
        person.closeWait();
        QCOMPARE(person.openWaits(), 0);
        QStringList texts;
        for (const auto &event : person.events())
            texts << event.text;
        QCOMPARE(texts.join(QLatin1Char('|')), QStringLiteral("wait|s|/l/a|r|w|"));
        QCOMPARE(person.outcomes(Outcome::Kind::Uploaded).size(), std::size_t(1));
        QVERIFY(person.outcomes(Outcome::Kind::GivenUp).empty());
    }
};

QTEST_GUILESS_MAIN(tst_ScriptedPerson)
#include "tst_ScriptedPerson.moc"
