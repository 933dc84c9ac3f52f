#include <QMimeData>
#include <QTest>

#include "views/RemoteEntries.h"

namespace venlo::test
{

namespace
{

QString site()
{
    return QStringLiteral("本社#1");
}

QList<RemoteEntry> someEntries()
{
    return {{QStringLiteral("/pub"), QStringLiteral("資料"), EntryTag::FD},
            {QStringLiteral("/pub"), QStringLiteral("a\tb\n.txt"), EntryTag::FL},
            {QStringLiteral("/"), QString(), EntryTag::FL}};
}

} // namespace

class tst_RemoteEntries : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void roundTrip();
    void noneAtAll();
    void otherSite();
    void otherProcess();
    void cutShort();
    void moreThanWasWritten();
    void saysNothingToOthers();
};

void tst_RemoteEntries::roundTrip()
{
    QMimeData data;
    QVERIFY(!hasRemoteEntries(data));
    setRemoteEntries(data, site(), someEntries());
    QVERIFY(hasRemoteEntries(data));
    const auto read = remoteEntries(data, site());
    QVERIFY(read);
    QCOMPARE(*read, someEntries());
}

void tst_RemoteEntries::noneAtAll()
{
    const QMimeData nothing;
    QVERIFY(!remoteEntries(nothing, site()));
    QMimeData empty;
    setRemoteEntries(empty, site(), {});
    QVERIFY(remoteEntries(empty, site()));
    QVERIFY(remoteEntries(empty, site())->isEmpty());
}

void tst_RemoteEntries::otherSite()
{
    QMimeData data;
    setRemoteEntries(data, site(), someEntries());
    QVERIFY(!remoteEntries(data, QStringLiteral("本社#2")));
}

void tst_RemoteEntries::otherProcess()
{
    QMimeData data;
    setRemoteEntries(data, site(), someEntries());
    const QString type = data.formats().constFirst();
    QByteArray bytes = data.data(type);
    // Behind the length, 4 bytes, stands the mark of the process.
    bytes[4] = static_cast<char>(bytes[4] ^ 1);
    data.setData(type, bytes);
    QVERIFY(hasRemoteEntries(data));
    QVERIFY(!remoteEntries(data, site()));
}

void tst_RemoteEntries::cutShort()
{
    QMimeData data;
    setRemoteEntries(data, site(), someEntries());
    const QString type = data.formats().constFirst();
    const QByteArray whole = data.data(type);
    for (qsizetype length = 0; length < whole.size(); ++length) {
        QMimeData damaged;
        damaged.setData(type, whole.left(length));
        QVERIFY2(!remoteEntries(damaged, site()), qPrintable(QString::number(length)));
    }
}

void tst_RemoteEntries::moreThanWasWritten()
{
    QMimeData data;
    setRemoteEntries(data, site(), someEntries());
    const QString type = data.formats().constFirst();
    data.setData(type, data.data(type) + 'x');
    QVERIFY(!remoteEntries(data, site()));
}

void tst_RemoteEntries::saysNothingToOthers()
{
    QMimeData data;
    setRemoteEntries(data, site(), someEntries());
    QCOMPARE(data.formats().size(), 1);
    QVERIFY(!data.hasText());
    QVERIFY(!data.hasUrls());
}

} // namespace venlo::test

QTEST_APPLESS_MAIN(venlo::test::tst_RemoteEntries)
#include "tst_RemoteEntries.moc"
