#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include "house/SourceTree.h"

namespace venlo::test
{

namespace
{
constexpr int limitMs = 100'000;

/// Other versions break lines elsewhere, so the one that the style was written for goes first.
QString formatter()
{
    const QString exact = QStandardPaths::findExecutable(QStringLiteral("clang-format-14"));
    return exact.isEmpty() ? QStandardPaths::findExecutable(QStringLiteral("clang-format")) : exact;
}

struct Verdict {
    bool wellFormed = false;
    QString words;
};

/// Runs the formatter over files below a folder; changes nothing.
Verdict check(const QString &folder, const QStringList &files)
{
    QProcess process;
    process.setWorkingDirectory(folder);
    process.start(formatter(), QStringList{QStringLiteral("--dry-run"), QStringLiteral("-Werror"),
                                           QStringLiteral("--style=file")} +
                                   files);
    if (!process.waitForFinished(limitMs))
        return {false, process.errorString()};
    const bool ok = process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    return {ok, QString::fromUtf8(process.readAllStandardError())};
}
} // namespace

class tst_Formatting : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void everySource();
    void aWrongLineIsFound();
};

void tst_Formatting::initTestCase()
{
    QVERIFY2(!formatter().isEmpty(), "clang-format is missing: apt-get install clang-format-14");
}

void tst_Formatting::everySource()
{
    QStringList files;
    for (const char *name : {"src", "tests", "bench"}) {
        const QString folder = QString::fromLatin1(name);
        const QStringList found = sourceFiles(sourceRoot() + QLatin1Char('/') + folder,
                                              {QStringLiteral("*.h"), QStringLiteral("*.cpp")});
        for (const QString &file : found)
            files += folder + QLatin1Char('/') + file;
    }
    QVERIFY(files.contains(QStringLiteral("src/shared/FrontEnd.h")));
    const Verdict verdict = check(sourceRoot(), files);
    QVERIFY2(verdict.wellFormed, qPrintable(verdict.words.left(4000)));
}

void tst_Formatting::aWrongLineIsFound()
{
    const QTemporaryDir folder;
    QVERIFY(QFile::copy(sourceRoot() + QStringLiteral("/.clang-format"),
                        folder.filePath(QStringLiteral(".clang-format"))));
    QFile file(folder.filePath(QStringLiteral("a.cpp")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("int  f( ) { return 1 ;}\n");
    file.close();
    QVERIFY(!check(folder.path(), {QStringLiteral("a.cpp")}).wellFormed);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write("int f();\n");
    file.close();
    QVERIFY(check(folder.path(), {QStringLiteral("a.cpp")}).wellFormed);
}

} // namespace venlo::test

QTEST_GUILESS_MAIN(venlo::test::tst_Formatting)
#include "tst_Formatting.moc"
