#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "platform/DisplayServer.h"
#include "platform/FakeDisplayServer.h"
#include "platform/Process.h"
#include "platform/XCookies.h"

namespace venlo
{

using test::FakeDisplayServer;

/// A display counts when a program could really open it: what must not happen is that an
/// unattended run dies on a DISPLAY left over in its environment.
class tst_DisplayServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void serverAnswers();
    void serverRefuses();
    void serverWantsTheCookie();
    void cookieOfAnotherDisplay();
    void serverHangs();
    void notADisplay_data();
    void notADisplay();
    void authorityFile_data();
    void authorityFile();
    void setupRequest();
    void waylandByName();
    void waylandByPath();
    void waylandGone();

private:
    void writeAuthority(const QByteArray &bytes) const;

    QTemporaryDir m_folder;
};

namespace
{
QByteArray field(const QByteArray &text)
{
    return QByteArray(1, static_cast<char>(text.size() >> 8)) +
           static_cast<char>(text.size() & 0xFF) + text;
}

QByteArray entry(const QByteArray &number, const QByteArray &name, const QByteArray &data)
{
    return QByteArray("\x01\x00", 2) + field("host") + field(number) + field(name) + field(data);
}

const QByteArray cookieName = "MIT-MAGIC-COOKIE-1";
} // namespace

void tst_DisplayServer::init()
{
    qunsetenv("QT_QPA_PLATFORM");
    qunsetenv("WAYLAND_DISPLAY");
    qputenv("XAUTHORITY", QFile::encodeName(m_folder.filePath(QStringLiteral("authority"))));
    writeAuthority(QByteArray());
}

void tst_DisplayServer::writeAuthority(const QByteArray &bytes) const
{
    QFile file(m_folder.filePath(QStringLiteral("authority")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

void tst_DisplayServer::serverAnswers()
{
    const auto server = FakeDisplayServer::network(QByteArray());
    QVERIFY(xServerAnswers(server.display()));
    QVERIFY(xServerAnswers(server.display() + ".0"));
    qputenv("DISPLAY", server.display());
    QVERIFY(hasDisplay());
    qputenv("QT_QPA_PLATFORM", "xcb");
    QVERIFY(hasDisplay());
}

void tst_DisplayServer::serverRefuses()
{
    const auto server = FakeDisplayServer::network("a word nobody says");
    QVERIFY(!xServerAnswers(server.display()));
    qputenv("DISPLAY", server.display());
    QVERIFY(!hasDisplay());
}

void tst_DisplayServer::serverWantsTheCookie()
{
    const auto server = FakeDisplayServer::network("0123456789abcdef");
    QVERIFY(!xServerAnswers(server.display()));
    writeAuthority(entry(server.number(), cookieName, "0123456789abcdef"));
    QVERIFY(xServerAnswers(server.display()));
}

void tst_DisplayServer::cookieOfAnotherDisplay()
{
    const auto server = FakeDisplayServer::network("0123456789abcdef");
    writeAuthority(entry("12345", cookieName, "0123456789abcdef"));
    QVERIFY(!xServerAnswers(server.display()));
}

void tst_DisplayServer::serverHangs()
{
    const auto server = FakeDisplayServer::silent();
    QElapsedTimer timer;
    timer.start();
    QVERIFY(!xServerAnswers(server.display()));
    QVERIFY(timer.elapsed() < 8000);
}

void tst_DisplayServer::notADisplay_data()
{
    QTest::addColumn<QByteArray>("display");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("no number") << QByteArray("127.0.0.1:");
    QTest::newRow("no colon") << QByteArray("127.0.0.1");
    QTest::newRow("letters") << QByteArray(":abc");
    QTest::newRow("negative") << QByteArray("127.0.0.1:-1");
    QTest::newRow("beyond the ports") << QByteArray("127.0.0.1:59536");
    QTest::newRow("nobody listens") << QByteArray("127.0.0.1:59535");
    QTest::newRow("no such local display") << QByteArray(":59535");
}

void tst_DisplayServer::notADisplay()
{
    QFETCH(QByteArray, display);
    QVERIFY(!xServerAnswers(display));
}

void tst_DisplayServer::authorityFile_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QList<QByteArray>>("cookies");
    const QByteArray good = entry("7", cookieName, "good");
    const QList<QByteArray> found = {"good"};
    QTest::newRow("empty") << QByteArray() << QList<QByteArray>();
    QTest::newRow("one entry") << good << found;
    QTest::newRow("for any display") << entry("", cookieName, "good") << found;
    QTest::newRow("another display") << entry("8", cookieName, "other") + good << found;
    QTest::newRow("another method") << entry("7", "XDM-AUTHORIZATION-1", "other") + good << found;
    QTest::newRow("twice the same") << good + good << found;
    QTest::newRow("cut in a text") << good + good.chopped(1) << found;
    QTest::newRow("cut in a length") << good + good.left(3) << found;
    QTest::newRow("length beyond the file")
        << QByteArray("\x01\x00\xFF\xFF", 4) + good << QList<QByteArray>();
}

void tst_DisplayServer::authorityFile()
{
    QFETCH(QByteArray, bytes);
    writeAuthority(bytes);
    QTEST(xCookies("7"), "cookies");
}

void tst_DisplayServer::setupRequest()
{
    QCOMPARE(xSetupRequest(QByteArray()), QByteArray::fromHex("6C000B000000000000000000"));
    QCOMPARE(xSetupRequest("abcde"), QByteArray::fromHex("6C000B0000001200") + "\x05" +
                                         QByteArray(3, '\0') + cookieName + QByteArray(2, '\0') +
                                         "abcde" + QByteArray(3, '\0'));
}

void tst_DisplayServer::waylandByName()
{
    const auto server =
        FakeDisplayServer::local(QFile::encodeName(m_folder.filePath(QStringLiteral("wayland-7"))));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_folder.path()));
    QVERIFY(waylandAnswers("wayland-7"));
    QVERIFY(!waylandAnswers("wayland-8"));
}

void tst_DisplayServer::waylandByPath()
{
    const QByteArray path = QFile::encodeName(m_folder.filePath(QStringLiteral("compositor")));
    const auto server = FakeDisplayServer::local(path);
    qunsetenv("XDG_RUNTIME_DIR");
    QVERIFY(waylandAnswers(path));
}

void tst_DisplayServer::waylandGone()
{
    const QByteArray path = QFile::encodeName(m_folder.filePath(QStringLiteral("gone")));
    QVERIFY(!waylandAnswers(path));
    {
        const auto server = FakeDisplayServer::local(path);
        QVERIFY(waylandAnswers(path));
    }
    QVERIFY(QFile::exists(QFile::decodeName(path))); // the socket's file outlives its owner
    QVERIFY(!waylandAnswers(path));
    QVERIFY(!waylandAnswers(QByteArray()));
    QVERIFY(!waylandAnswers("/" + QByteArray(200, 'x')));
}

} // namespace venlo

QTEST_APPLESS_MAIN(venlo::tst_DisplayServer)
#include "tst_DisplayServer.moc"
