#include <QtGlobal>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QLocale>
#include <QTemporaryDir>
#include <QTest>

#include "platform/FileLook.h"

namespace venlo
{

class tst_FileLook : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void sameLookSameNumber();
    void everyIconCanBeSeen_data();
    void everyIconCanBeSeen();
    void typeName_data();
    void typeName();
#ifdef Q_OS_UNIX // elsewhere the system's own language counts
    void typeNameFollowsTheLanguage();
    void letters_data();
    void letters();
    void typeNameReadsNoFile();
    void pipesAreNotWaitedFor();
#endif

private:
    QString file(const QString &name);
    QTemporaryDir m_folder;
};

void tst_FileLook::initTestCase()
{
    QVERIFY(m_folder.isValid());
    QLocale::setDefault(QLocale::c());
}

void tst_FileLook::cleanup()
{
    QLocale::setDefault(QLocale::c());
}

QString tst_FileLook::file(const QString &name)
{
    QFile made(m_folder.filePath(name));
    if (!made.exists() && !made.open(QIODevice::WriteOnly))
        return {};
    return made.fileName();
}

void tst_FileLook::sameLookSameNumber()
{
    QVERIFY(QDir(m_folder.path()).mkpath(QStringLiteral("資料")));
    const FileIcon one = fileIcon(file(QStringLiteral("a.txt")));
    const FileIcon two = fileIcon(file(QStringLiteral("b.txt")));
    const FileIcon folder = fileIcon(m_folder.filePath(QStringLiteral("資料")));
    QCOMPARE(one.number, two.number);
    QCOMPARE(fileIcon(file(QStringLiteral("a.txt"))).number, one.number);
    QCOMPARE(fileIcon(m_folder.path()).number, folder.number);
    QVERIFY(folder.number != one.number);
}

void tst_FileLook::everyIconCanBeSeen_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("a file") << file(QStringLiteral("a.txt"));
    QTest::newRow("a folder") << m_folder.path();
    QTest::newRow("a kind nobody knows") << file(QStringLiteral("a.zzq"));
    QTest::newRow("no such file") << m_folder.filePath(QStringLiteral("gone.txt"));
}

/// Some pixels are covered and some are not: neither an empty picture nor a block.
void tst_FileLook::everyIconCanBeSeen()
{
    QFETCH(QString, path);
    const QIcon icon = fileIcon(path).icon;
    QVERIFY(!icon.isNull());
#ifdef Q_OS_UNIX
    const auto sizes = {16, 24, 32};
#else
    const auto sizes = {16}; // a picture, not a drawing
#endif
    for (const int size : sizes) {
        const QImage image = icon.pixmap(QSize(size, size)).toImage();
        QCOMPARE(image.size(), QSize(size, size));
        int covered = 0;
        for (int y = 0; y < size; ++y) {
            for (int x = 0; x < size; ++x)
                covered += image.pixelColor(x, y).alpha() > 200 ? 1 : 0;
        }
        QVERIFY2(covered > size * size / 4 && covered < size * size,
                 qPrintable(QString::number(covered)));
    }
}

void tst_FileLook::typeName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("as");
    QTest::newRow("letter case does not count")
        << QStringLiteral("A.TXT") << QStringLiteral("b.txt");
    QTest::newRow("the last extension counts")
        << QStringLiteral("a.b.html") << QStringLiteral("index.html");
#ifdef Q_OS_UNIX // elsewhere the name tells the extension
    QTest::newRow("unknown kinds are alike") << QStringLiteral("a.zzq") << QStringLiteral("b.zzy");
#endif
}

void tst_FileLook::typeName()
{
    QFETCH(QString, name);
    QFETCH(QString, as);
    const QString found = fileTypeName(file(name));
    QVERIFY(!found.isEmpty());
    QCOMPARE(found, fileTypeName(file(as)));
    QVERIFY(fileTypeName(file(QStringLiteral("a.txt"))) !=
            fileTypeName(file(QStringLiteral("a.html"))));
}

#ifdef Q_OS_UNIX
void tst_FileLook::typeNameFollowsTheLanguage()
{
    const QString path = file(QStringLiteral("a.html"));
    const QString english = fileTypeName(path);
    QLocale::setDefault(QLocale(QLocale::Japanese, QLocale::Japan));
    const QString japanese = fileTypeName(path);
    QVERIFY(english.startsWith(QStringLiteral("HTML")));
    QVERIFY(japanese.startsWith(QStringLiteral("HTML")));
    QVERIFY(english != japanese);
}

void tst_FileLook::letters_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("writable");
    QTest::addColumn<QString>("letters");
    QTest::newRow("plain") << QStringLiteral("plain") << true << QString();
    QTest::newRow("read-only") << QStringLiteral("fixed") << false << QStringLiteral("R");
    QTest::newRow("hidden") << QStringLiteral(".dot") << true << QStringLiteral("H");
    QTest::newRow("both, in this order")
        << QStringLiteral(".fixed") << false << QStringLiteral("RH");
}

void tst_FileLook::letters()
{
    QFETCH(QString, name);
    QFETCH(bool, writable);
    const QString path = file(name);
    const auto rights = writable ? QFile::ReadOwner | QFile::WriteOwner
                                 : QFile::Permissions(QFile::ReadOwner | QFile::ReadGroup);
    QVERIFY(QFile::setPermissions(path, rights));
    QTEST(attributeLetters(QFileInfo(path)), "letters");
}

/// A page by its content, a text by its name: the name is what counts.
void tst_FileLook::typeNameReadsNoFile()
{
    QFile page(m_folder.filePath(QStringLiteral("page.txt")));
    QVERIFY(page.open(QIODevice::WriteOnly));
    page.write("<!DOCTYPE html><html><body></body></html>");
    page.close();
    QCOMPARE(fileTypeName(page.fileName()), fileTypeName(file(QStringLiteral("a.txt"))));
}

/// Reading a pipe that nobody writes to would never end.
void tst_FileLook::pipesAreNotWaitedFor()
{
    const QString path = m_folder.filePath(QStringLiteral("pipe"));
    QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), S_IRUSR | S_IWUSR), 0);
    QVERIFY(!fileIcon(path).icon.isNull());
    QVERIFY(!fileTypeName(path).isEmpty());
}
#endif

} // namespace venlo

QTEST_MAIN(venlo::tst_FileLook)
#include "tst_FileLook.moc"
