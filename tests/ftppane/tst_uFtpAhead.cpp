#include "ftppane/FtpPaneFixture.h"

#include <QElapsedTimer>

namespace venlo::test
{

namespace
{
constexpr int many = 120;

QByteArray sub(int i)
{
    return "/many/sub" + QByteArray::number(i).rightJustified(3, '0');
}

QString node(int i)
{
    return QString::fromLatin1(sub(i).mid(1));
}
} // namespace

/// A folder of many folders is opened, on a server that can be asked about many at a time.
class tst_uFtpAhead : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m = std::make_unique<FtpPaneFixture>();
        m->server.options().stat = StatPath::Listed;
        const QDateTime now = QDateTime::currentDateTimeUtc();
        for (int i = 0; i < many; ++i) {
            m->server.tree().makeFolder(sub(i), now);
            if (i % 3 == 0)
                m->server.tree().makeFolder(sub(i) + "/inside", now);
            else if (i % 3 == 1)
                m->server.put(sub(i) + "/file.txt", "f", now);
        }
    }
    void cleanup()
    {
        const bool clean = m->person.verify();
        const bool ended = m->isAtRest();
        m.reset();
        QVERIFY(clean);
        QVERIFY(ended);
    }
    void markersAreRight();
    void countsAlong();
    void cancelled();
    void lost();
    void misfitsAreSaidOnce_data();
    void misfitsAreSaidOnce();

private:
    [[nodiscard]] QStringList lines() const
    {
        return m->person.messageLines().filter(QStringLiteral("調べています"));
    }
    void expectMarkers()
    {
        for (int i = 0; i < many; ++i)
            QCOMPARE(m->childrenOf(node(i)), i % 3 == 0 ? words("?") : QStringList());
    }

    std::unique_ptr<FtpPaneFixture> m;
};

void tst_uFtpAhead::markersAreRight()
{
    QVERIFY(m->open());
    m->clickArrow(QStringLiteral("many"));
    QTRY_COMPARE(m->childrenOf(QStringLiteral("many")).size(), many);
    expectMarkers();
    // Two in the ordinary way at the most: to compare.
    QVERIFY(m->server.count("MLSD") <= 2);
    QVERIFY(m->server.count("STAT") >= many - 1);
    // What was found out is not asked for again.
    m->forget();
    m->clickArrow(node(3));
    QTRY_COMPARE(m->childrenOf(node(3)), words("inside"));
    QCOMPARE(m->server.count("CWD", sub(3)), 0);
    QCOMPARE(m->server.count("STAT", sub(3)), 0);
}

void tst_uFtpAhead::countsAlong()
{
    QVERIFY(m->open());
    m->server.on("STAT").delay(15);
    m->clickArrow(QStringLiteral("many"));
    QTRY_COMPARE(m->childrenOf(QStringLiteral("many")).size(), many);
    QTRY_VERIFY(!m->gate.busy());
    QVERIFY(lines().size() >= 4);
    int before = 0;
    for (const QString &line : lines()) {
        QVERIFY2(line.startsWith(QStringLiteral("/many のﾌｫﾙﾀﾞを調べています･･･ ")) &&
                     line.endsWith(QStringLiteral("/%1").arg(many)),
                 qPrintable(line));
        const int known = line.section(QLatin1Char(' '), 2).section(QLatin1Char('/'), 0, 0).toInt();
        QVERIFY2(known >= before && known <= many, qPrintable(line));
        before = known;
    }
    QCOMPARE(m->person.messageLines().last(), QString());
    expectMarkers();
}

void tst_uFtpAhead::cancelled()
{
    QVERIFY(m->open());
    m->server.on("STAT", sub(100)).call([this] { m->person.cancelNow(); }).delay(300);
    QElapsedTimer took;
    took.start();
    m->clickArrow(QStringLiteral("many"));
    QTRY_COMPARE(m->childrenOf(QStringLiteral("many")).size(), many);
    QTRY_VERIFY(!m->gate.busy());
    QVERIFY2(took.elapsed() < 5000, qPrintable(QString::number(took.elapsed())));
    // What was known by then is shown as it is, the rest is unread.
    QCOMPARE(m->childrenOf(node(1)), QStringList());
    QCOMPARE(m->childrenOf(node(119)), words("?"));
    QCOMPARE(m->server.count("CWD", sub(119)), 0);
    QVERIFY(m->pane->cOn());
    m->person.resetCancel();
    m->server.script().clear();
    m->clickArrow(node(119));
    QTRY_COMPARE(m->childrenOf(node(119)), QStringList());
}

void tst_uFtpAhead::lost()
{
    QVERIFY(m->open());
    m->server.on("STAT", sub(80)).once().dropBeforeReply();
    m->clickArrow(QStringLiteral("many"));
    QTRY_COMPARE(m->childrenOf(QStringLiteral("many")).size(), many);
    expectMarkers();
    QCOMPARE(m->reconnects(), 1);
    QVERIFY(m->pane->cOn());
}

void tst_uFtpAhead::misfitsAreSaidOnce_data()
{
    QTest::addColumn<bool>("ahead");
    QTest::newRow("many at a time") << true;
    QTest::newRow("one by one") << false;
}

void tst_uFtpAhead::misfitsAreSaidOnce()
{
    QFETCH(bool, ahead);
    if (!ahead)
        m->server.options().stat = StatPath::Unknown;
    m->server.options().mlsd = false;
    const QByteArray file = "-rw-r--r-- 1 u g 4000000000 Nov 21 05:10 big.iso\r\n";
    m->server.setRawListing(sub(50), file);
    m->server.on("STAT", sub(50))
        .rawReply("213-Status follows:\r\ndrwxr-xr-x 2 u g 4096 Nov 21 05:10 .\r\n" + file +
                  "213 End\r\n");
    QVERIFY(m->open());
    m->person.allowMessages();
    m->clickArrow(QStringLiteral("many"));
    QTRY_COMPARE(m->childrenOf(QStringLiteral("many")).size(), many);
    QTRY_VERIFY(!m->gate.busy());
    QCOMPARE(m->person.messages().size(), 1);
    QVERIFY(m->person.messages().constFirst().contains(QLatin1String("big.iso")));
    QCOMPARE(m->childrenOf(node(50)), words("?")); // it is not wholly known
    QCOMPARE(m->childrenOf(node(49)), QStringList());
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_uFtpAhead)
#include "tst_uFtpAhead.moc"
