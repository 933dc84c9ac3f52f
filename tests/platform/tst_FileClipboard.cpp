#include <QClipboard>
#include <QDir>
#include <QGuiApplication>
#include <QMimeData>
#include <QTest>
#include <QUrl>
#include <QtEndian>

#include "platform/FileClipboard.h"

namespace venlo
{

/// Lists of files as they go between programs.
class tst_FileClipboard : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writtenAndRead_data();
    void writtenAndRead();
    void markers_data();
    void markers();
    void onlyLocalFiles();
    void throughTheClipboard();
    void dropFilesInTheCodePage();
    void dropFilesWide();
    void dropFilesWideWhereAskedFor();
};

namespace
{
QStringList native(QStringList paths)
{
    for (QString &path : paths)
        path = QDir::toNativeSeparators(path);
    return paths;
}
} // namespace

void tst_FileClipboard::writtenAndRead_data()
{
    QTest::addColumn<quint32>("effect");
    QTest::addColumn<QByteArray>("gnome");
    QTest::addColumn<QByteArray>("kde");
    QTest::newRow("cut") << cutEffect << QByteArray("cut") << QByteArray("1");
    QTest::newRow("copy") << copyEffect << QByteArray("copy") << QByteArray("0");
}

void tst_FileClipboard::writtenAndRead()
{
    QFETCH(const quint32, effect);
    QFETCH(const QByteArray, gnome);
    QFETCH(const QByteArray, kde);
    const QStringList paths{QStringLiteral("/tmp/ﾌｧｲﾙ 1 #%.txt"), QStringLiteral("/tmp/d")};
    const auto data = fileClipData(paths, effect);
    QCOMPARE(data->urls(),
             (QList<QUrl>{QUrl::fromLocalFile(paths.at(0)), QUrl::fromLocalFile(paths.at(1))}));
    QCOMPARE(data->data(QStringLiteral("x-special/gnome-copied-files")),
             gnome + '\n' + QUrl::fromLocalFile(paths.at(0)).toEncoded() + "\nfile:///tmp/d");
    QCOMPARE(data->data(QStringLiteral("application/x-kde-cutselection")), kde);
    const FileClip clip = readFileClipData(*data);
    QCOMPARE(clip.paths, native(paths));
    QCOMPARE(clip.effect, effect);
}

void tst_FileClipboard::markers_data()
{
    QTest::addColumn<QByteArray>("gnome");
    QTest::addColumn<QByteArray>("kde");
    QTest::addColumn<quint32>("effect");
    QTest::newRow("none") << QByteArray() << QByteArray() << dropEffectNone;
    QTest::newRow("gnome cut") << QByteArray("cut\nfile:///a") << QByteArray() << cutEffect;
    QTest::newRow("gnome copy") << QByteArray("copy\nfile:///a") << QByteArray() << copyEffect;
    QTest::newRow("gnome, unknown word")
        << QByteArray("link\nfile:///a") << QByteArray() << dropEffectNone;
    QTest::newRow("kde cut") << QByteArray() << QByteArray("1") << cutEffect;
    QTest::newRow("kde copy") << QByteArray() << QByteArray("0") << copyEffect;
    QTest::newRow("kde, anything else") << QByteArray() << QByteArray("x") << copyEffect;
    QTest::newRow("both") << QByteArray("cut\nfile:///a") << QByteArray("0") << cutEffect;
}

void tst_FileClipboard::markers()
{
    QFETCH(const QByteArray, gnome);
    QFETCH(const QByteArray, kde);
    QFETCH(const quint32, effect);
    QMimeData data;
    data.setUrls({QUrl(QStringLiteral("file:///a"))});
    if (!gnome.isEmpty())
        data.setData(QStringLiteral("x-special/gnome-copied-files"), gnome);
    if (!kde.isEmpty())
        data.setData(QStringLiteral("application/x-kde-cutselection"), kde);
    const FileClip clip = readFileClipData(data);
    QCOMPARE(clip.paths, native({QStringLiteral("/a")}));
    QCOMPARE(clip.effect, effect);
}

void tst_FileClipboard::onlyLocalFiles()
{
    QMimeData data;
    data.setUrls({QUrl(QStringLiteral("https://example.invalid/a")),
                  QUrl(QStringLiteral("file:///tmp/b/"))});
    QCOMPARE(localPaths(data), native({QStringLiteral("/tmp/b")}));

    QMimeData marker; // some programs put the marker alone
    marker.setData(QStringLiteral("x-special/gnome-copied-files"),
                   "copy\r\nfile:///tmp/%E3%81%82\r\n");
    QCOMPARE(readFileClipData(marker).paths, native({QStringLiteral("/tmp/あ")}));
    QCOMPARE(readFileClipData(marker).effect, copyEffect);

    QMimeData text;
    text.setText(QStringLiteral("/tmp/b"));
    QCOMPARE(readFileClipData(text).paths, QStringList());
    QCOMPARE(readFileClipData(text).effect, dropEffectNone);
}

void tst_FileClipboard::throughTheClipboard()
{
    putFilesOnClipboard({QStringLiteral("/tmp/a")}, cutEffect);
    QCOMPARE(filesOnClipboard().paths, native({QStringLiteral("/tmp/a")}));
    QCOMPARE(filesOnClipboard().effect, cutEffect);
    putFilesOnClipboard({QStringLiteral("/tmp/b")}, copyEffect);
    QCOMPARE(filesOnClipboard().paths, native({QStringLiteral("/tmp/b")}));
    QCOMPARE(filesOnClipboard().effect, copyEffect);
#ifdef Q_OS_UNIX // elsewhere the test's own platform has a clipboard of its own
    QGuiApplication::clipboard()->clear();
    QCOMPARE(filesOnClipboard().paths, QStringList());
#endif
}

void tst_FileClipboard::dropFilesInTheCodePage()
{
    bool wide = false;
    const QByteArray block =
        dropFilesBlock({QStringLiteral("C:\\表.txt"), QStringLiteral("C:\\ｱ")}, wide);
    QVERIFY(!wide);
    QByteArray header(20, '\0');
    header[0] = 20;
    QCOMPARE(block.left(20), header);
    QCOMPARE(block.mid(20), QByteArray("C:\\\x95\x5c.txt\0C:\\\xb1\0\0", 16));
}

void tst_FileClipboard::dropFilesWideWhereAskedFor()
{
    bool wide = true;
    const QByteArray block = dropFilesBlock({QStringLiteral("C:\\a")}, wide);
    QVERIFY(wide);
    QCOMPARE(block.size(), qsizetype{20 + 2 * (4 + 1 + 1)});
}

void tst_FileClipboard::dropFilesWide()
{
    bool wide = false;
    const QByteArray block =
        dropFilesBlock({QStringLiteral("C:\\a"), QStringLiteral("C:\\é")}, wide);
    QVERIFY(wide);
    QCOMPARE(qFromLittleEndian<quint32>(block.constData()), 20U);
    QCOMPARE(qFromLittleEndian<quint32>(block.constData() + 16), 1U);
    const QByteArray list = block.mid(20);
    QString text;
    for (qsizetype i = 0; i + 1 < list.size(); i += 2)
        text += QChar(qFromLittleEndian<quint16>(list.constData() + i));
    QCOMPARE(text,
             QStringLiteral("C:\\a") + QChar(0) + QStringLiteral("C:\\é") + QChar(0) + QChar(0));
}

} // namespace venlo

QTEST_MAIN(venlo::tst_FileClipboard)
#include "tst_FileClipboard.moc"
