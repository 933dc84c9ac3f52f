#include <QRegularExpression>
#include <QTest>

#include "house/SourceTree.h"

namespace venlo::test
{

namespace
{
/// Words by which a text points outside the project instead of saying what it means. Written in
/// pieces, for this file is read too.
const QRegularExpression &foreignWords()
{
    static const QRegularExpression words(QStringLiteral("\\bspe"
                                                         "c\\.md\\b"
                                                         "|\\b(?:the|our|this) spe"
                                                         "c(?:ification)?\\b"
                                                         "|\\bspe"
                                                         "c says\\b"
                                                         "|\\bPa"
                                                         "rts? [1-9]\\.[1-9]\\b"
                                                         "|\\b[Tt]he (?-i:Pa"
                                                         "rts?)\\b"
                                                         "|\\biss"
                                                         "ue #?[0-9]"
                                                         "|\\bdesi"
                                                         "gn\\.md\\b"
                                                         "|\\bmode"
                                                         "ls\\.md\\b"),
                                          QRegularExpression::CaseInsensitiveOption);
    return words;
}

QStringList findings(const QString &name, const QString &text)
{
    QStringList found;
    auto matches = foreignWords().globalMatch(text);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        const auto before = QStringView(text).left(match.capturedStart());
        const auto line = before.count(QLatin1Char('\n')) + 1;
        found += QStringLiteral("%1:%2: %3").arg(name).arg(line).arg(match.captured());
    }
    return found;
}
} // namespace

class tst_Wording : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sourcesSpeakForThemselves();
    void words_data();
    void words();
};

void tst_Wording::sourcesSpeakForThemselves()
{
    QStringList patterns;
    for (const char *pattern : {"*.h", "*.cpp", "*.txt", "*.cmake", "*.md", "*.json", "*.sh",
                                "*.py", "*.sql", "*.in", "*.desktop", "run", "test"})
        patterns += QLatin1String(pattern);
    const QStringList files = sourceFiles(sourceRoot(), patterns);
    QVERIFY(files.contains(QStringLiteral("src/shared/FrontEnd.h")));
    QStringList found;
    for (const QString &file : files)
        found += findings(file, readSource(sourceRoot() + QLatin1Char('/') + file));
    QVERIFY2(found.isEmpty(), qPrintable(found.join(QLatin1Char('\n'))));
}

void tst_Wording::words_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("allowed");
    const auto row = [](const char *name, const char *text, bool allowed) {
        QTest::newRow(name) << QString::fromLatin1(text) << allowed;
    };
    row("a file outside",
        "see spe"
        "c.md",
        false);
    row("a numbered chapter",
        "as Pa"
        "rt 3.1 has it",
        false);
    row("a numbered task",
        "closes iss"
        "ue 2",
        false);
    row("a numbered task with a sign",
        "Iss"
        "ue #17",
        false);
    row("an outside authority",
        "the spe"
        "cification wants it",
        false);
    row("an RFC is public", "RFC 959, section 4.2", true);
    row("the plain word", "part of the line, an issue of taste", true);
    row("a chapter of something outside",
        "as the Pa"
        "rt has it",
        false);
    row("the plain word with an article", "the part before the bar", true);
    row("special", "special folders, specific servers", true);
}

void tst_Wording::words()
{
    QFETCH(QString, text);
    QFETCH(bool, allowed);
    QCOMPARE(findings(QStringLiteral("x"), text).isEmpty(), allowed);
}

} // namespace venlo::test

QTEST_GUILESS_MAIN(venlo::test::tst_Wording)
#include "tst_Wording.moc"
