#include "support/DaemonTests.h"

#include <QTest>

namespace venlo::test
{

void addDaemons()
{
    QTest::addColumn<FtpDaemon::Kind>("kind");
    for (const FtpDaemon::Kind kind : FtpDaemon::all())
        QTest::newRow(FtpDaemon::name(kind)) << kind;
}

void addDaemonsInBothModes()
{
    QTest::addColumn<FtpDaemon::Kind>("kind");
    QTest::addColumn<bool>("passive");
    for (const FtpDaemon::Kind kind : FtpDaemon::all()) {
        for (const bool passive : {true, false})
            QTest::addRow("%s %s", FtpDaemon::name(kind), passive ? "passive" : "active")
                << kind << passive;
    }
}

void addDaemonsUnderTls()
{
    QTest::addColumn<FtpDaemon::Kind>("kind");
    QTest::addColumn<DaemonTls>("tls");
    for (const FtpDaemon::Kind kind : FtpDaemon::all()) {
        QTest::addRow("%s TLS 1.2", FtpDaemon::name(kind)) << kind << DaemonTls::V12;
        QTest::addRow("%s TLS 1.3", FtpDaemon::name(kind)) << kind << DaemonTls::V13;
    }
}

bool skippedWithout(FtpDaemon::Kind kind)
{
    QString missing;
    if (FtpDaemon::available(kind, &missing))
        return false;
    QTest::qSkip(qPrintable(missing), __FILE__, __LINE__);
    return true;
}

QByteArray noise(int size)
{
    QByteArray bytes(size, '\0');
    quint32 state = 4711;
    for (char &byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

DaemonOptions tlsOptions(const Certificates &certificates, DaemonTls tls,
                         Certificates::Kind certificate)
{
    DaemonOptions options;
    options.tls = tls;
    options.certificate = certificates.file(certificate);
    return options;
}

} // namespace venlo::test
