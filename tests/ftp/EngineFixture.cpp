#include "ftp/EngineFixture.h"

#include "db/DatabaseFile.h"
#include "db/DisplayFormat.h"
#include "db/Recordset.h"
#include "platform/CodePage.h"

#include <QFile>

namespace venlo::test
{

using namespace std::chrono_literals;

EngineFixture::EngineFixture(ClientLimits limits)
    : database(person, folder.path() + QLatin1Char('/')),
      errorLog(folder.path() + QLatin1Char('/')), eventLog(folder.path() + QLatin1Char('/')),
      session(person, database, errorLog, eventLog, limits), cache(session, database, person, flags)
{
    createInitialDatabase(path(QStringLiteral("dbFtp.mdb")));
    bool ok = false;
    database.OpenDb(ok);
    Q_ASSERT(ok);
}

ClientLimits EngineFixture::shortLimits()
{
    ClientLimits limits;
    limits.connect = 2s;
    limits.reply = 1500ms;
    limits.idleData = 1500ms;
    return limits;
}

void EngineFixture::registerSite(const QString &name, const QString &server, const QString &user,
                                 const QString &password, bool keepsCache)
{
    database.openTable(QStringLiteral("msSite"))
        ->add({QStringLiteral("sName"), QStringLiteral("sSvr"), QStringLiteral("sUsr"),
               QStringLiteral("sPwd"), QStringLiteral("sPxy"), QStringLiteral("bPsv"),
               QStringLiteral("bSvDb")},
              {name, server, user, password, QString(), -1, keepsCache ? -1 : 0});
}

bool EngineFixture::connectTo(const QString &name, const QString &server, const QString &user,
                              const QString &password, bool passive)
{
    bool ok = true;
    session.OpenInternet(QString(), ok, false);
    if (ok)
        session.Connect(name, server, user, password, passive, ok);
    return ok;
}

QStringList EngineFixture::errorLines() const
{
    QFile log(errorLog.path());
    if (!log.open(QIODevice::ReadOnly))
        return {};
    QByteArray bytes = log.readAll();
    // The date stamp is the first line, in UTF-16 where the log was created in this run.
    const qsizetype unicodeEnd = bytes.indexOf(QByteArray("\r\0\n\0", 4));
    bytes = bytes.startsWith("\xff\xfe") ? bytes.mid(unicodeEnd + 4)
                                         : bytes.mid(bytes.indexOf("\r\n") + 2);
    QStringList lines;
    for (const QString &line : fromSystemText(bytes).split(QStringLiteral("\r\n"))) {
        if (!line.isEmpty())
            lines.append(line.mid(line.indexOf(QLatin1String(" : ")) + 3));
    }
    return lines;
}

QString EngineFixture::events() const
{
    eventLog.flush();
    QFile log(eventLog.path());
    return log.open(QIODevice::ReadOnly) ? QString::fromUtf8(log.readAll()) : QString();
}

QStringList EngineFixture::cacheRows(const QString &table)
{
    const Rows rows = database.query(
        QStringLiteral("Select sDir, bFd, sName, dDate, nSize From ? Order By sDir, sName"),
        {table});
    QStringList lines;
    for (int row = 0; row < rows.count(); ++row) {
        lines.append(QStringList({rows.at(0, row).toString(), rows.at(1, row).toString(),
                                  rows.at(2, row).toString(),
                                  FormatDateText(fromDayCount(rows.at(3, row).toDouble())),
                                  rows.at(4, row).toString()})
                         .join(QLatin1Char('|')));
    }
    return lines;
}

} // namespace venlo::test
