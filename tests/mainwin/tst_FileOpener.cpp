#include "mainwin/FileOpener.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace venlo::test
{

class tst_FileOpener : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void paths_data();
    void paths();
    void opens_data();
    void opens();
    void editorThatIsGone();

private:
    [[nodiscard]] QString at(const QString &name) const { return m_folder->filePath(name); }
    void program(const QString &name);
    /// What the programs were called with, one line a call.
    [[nodiscard]] QStringList calls() const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_FileOpener::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    for (const char *name : {"a.txt", "b b.txt", "a,b.txt"}) {
        QFile file(at(QString::fromLatin1(name)));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("folder")));
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("bin")));
    program(QStringLiteral("xdg-open"));
    program(QStringLiteral("editor"));
    qputenv("PATH", QFile::encodeName(at(QStringLiteral("bin"))) + ":/usr/bin:/bin");
}

void tst_FileOpener::program(const QString &name)
{
    QFile file(at(QStringLiteral("bin/") + name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("#!/bin/sh\nprintf '%s %s\\n' \"${0##*/}\" \"$*\" >>'" +
               QFile::encodeName(at(QStringLiteral("calls"))) + "'\n");
    QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
}

QStringList tst_FileOpener::calls() const
{
    QFile file(at(QStringLiteral("calls")));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QString text = QString::fromUtf8(file.readAll());
    text.replace(m_folder->path(), QStringLiteral("~"));
    return text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

void tst_FileOpener::paths_data()
{
    QTest::addColumn<QString>("selection"); // "~" is the folder
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *name, const char *selection, const QStringList &expected) {
        QTest::newRow(name) << QString::fromLatin1(selection) << expected;
    };
    const QString a = QStringLiteral("~/a.txt");
    const QString b = QStringLiteral("~/b b.txt");
    row("one", "~/a.txt", {a});
    row("several", "~/a.txt,~/b b.txt", {a, b});
    row("a name with a comma", "~/a,b.txt", {QStringLiteral("~/a,b.txt")});
    row("empty parts", ",~/a.txt,,", {a});
    row("a part that is gone", "~/a.txt,~/gone", {a});
    row("a relative part", "~/a.txt,a.txt,..", {a});
    row("nothing", "", {});
}

void tst_FileOpener::paths()
{
    QFETCH(QString, selection);
    QFETCH(QStringList, expected);
    QStringList found = FileOpener::paths(selection.replace(QLatin1Char('~'), m_folder->path()));
    for (QString &path : found)
        path.replace(m_folder->path(), QStringLiteral("~"));
    QCOMPARE(found, expected);
}

void tst_FileOpener::opens_data()
{
    QTest::addColumn<QString>("selection");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("call");
    const auto row = [](const char *name, const char *selection, int mode, const char *call) {
        QTest::newRow(name) << QString::fromLatin1(selection) << mode << QString::fromLatin1(call);
    };
    row("explore a folder", "/folder", 0, "xdg-open ~/folder");
    row("explore opens a file", "/a.txt", 0, "xdg-open ~/a.txt");
    row("open", "/a.txt", 1, "xdg-open ~/a.txt");
    row("the editor", "/a.txt", 2, "editor ~/a.txt");
    row("the editor, a blank in the name", "/b b.txt", 2, "editor ~/b b.txt");
}

void tst_FileOpener::opens()
{
    QFETCH(QString, selection);
    QFETCH(int, mode);
    QFETCH(QString, call);
    const FileOpener opener(QStringLiteral("editor"));
    QCOMPARE(opener.open(m_folder->path() + selection, mode), QStringList());
    QTRY_COMPARE(calls(), QStringList{call});
}

void tst_FileOpener::editorThatIsGone()
{
    const FileOpener opener(QStringLiteral("no-such-editor"));
    QCOMPARE(opener.open(at(QStringLiteral("a.txt")), 2), QStringList());
    QTRY_COMPARE(calls(), QStringList{QStringLiteral("xdg-open ~/a.txt")});
    QVERIFY(QFile::remove(at(QStringLiteral("bin/xdg-open"))));
    qputenv("PATH", QFile::encodeName(at(QStringLiteral("bin"))));
    QCOMPARE(opener.open(at(QStringLiteral("a.txt")), 2), QStringList{at(QStringLiteral("a.txt"))});
    // A folder is not for the editor, which is no failure.
    QCOMPARE(opener.open(at(QStringLiteral("folder")), 2), QStringList());
}

} // namespace venlo::test

QTEST_GUILESS_MAIN(venlo::test::tst_FileOpener)
#include "tst_FileOpener.moc"
