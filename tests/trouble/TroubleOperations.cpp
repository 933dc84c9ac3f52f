// What a run carries out.
#include "trouble/TroubleRun.h"

#include <QFileInfo>

#include "db/DisplayFormat.h"
#include "ftppane/Download.h"
#include "localpane/Upload.h"
#include "mainwin/popup/sfMsg.h"
#include "platform/ScriptedShellPerson.h"
#include "shared/NameList.h"

namespace venlo::test
{

namespace
{
const QString pub = QStringLiteral("/pub");
const QString pattern = QStringLiteral("p");

QString lineOf(const QFileInfo &file)
{
    return file.fileName() + QLatin1Char('\t') + FormatDateText(file.lastModified()) +
           QLatin1Char('\t') + QString::number(file.size());
}
} // namespace

bool TroubleRun::carryOut()
{
    m_refused.clear();
    m_world->operations.resetCounts();
    switch (m_operation) {
    case TroubleOperation::Put:
        return put();
    case TroubleOperation::Get:
        return get();
    case TroubleOperation::DragUp:
        return dragUp();
    case TroubleOperation::DragDown:
        return dragDown();
    case TroubleOperation::Delete:
        return deleteHere();
    case TroubleOperation::SyncUp:
    case TroubleOperation::SyncDown:
        return synchronise();
    case TroubleOperation::CompareUp:
    case TroubleOperation::CompareDown:
        return compare();
    }
    return false;
}

bool TroubleRun::put()
{
    const FlagScope unattended(m_world->flags.unattendedTransfer);
    QStringList lines;
    for (const char *name : {"1.txt", "2.txt", "zz.txt"}) {
        const QFileInfo file(here() + QLatin1Char('/') + QLatin1String(name));
        QString line = lineOf(file);
        if (!file.exists()) // chosen while it was there
            line = file.fileName() + QStringLiteral("\t30/01/01 00:00:00\t1");
        lines.append(line);
    }
    bool ok = true;
    m_world->operations.ftPutFile(pub, joinNames(lines), here(), ok);
    return ok && m_world->operations.counts().givenUp == 0;
}

bool TroubleRun::get()
{
    const FlagScope unattended(m_world->flags.unattendedTransfer);
    bool ok = true;
    QStringList names{QStringLiteral("1.txt"), QStringLiteral("2.txt"), QStringLiteral("zz.txt")};
    if (m_server.exists("/pub/" + longName()))
        names.insert(1, QString::fromUtf8(longName()));
    m_world->operations.ftGetFile(pub, joinNames(names), here(), ok);
    return ok && m_world->operations.counts().givenUp == 0;
}

bool TroubleRun::dragUp()
{
    sfMsg window(m_world->person);
    Upload upload(m_world->operations, window, [](const QString &) {});
    QStringList paths;
    for (const char *name : {"in", "last", "1.txt", "2.txt", "zz.txt"})
        paths.append(here() + QLatin1Char('/') + QLatin1String(name));
    const bool ok = upload.run(paths, pub);
    for (const QString &line : m_world->person.texts(ScriptedPerson::What::Status)) {
        if (line.endsWith(QStringLiteral("存在しません")) ||
            line.endsWith(QStringLiteral("転送しません")))
            m_refused.append(line);
    }
    return ok && m_refused.isEmpty() && m_world->operations.counts().givenUp == 0;
}

bool TroubleRun::dragDown()
{
    sfMsg window(m_world->person);
    Download download(m_world->operations, window, [](const QString &) {});
    QList<RemoteEntry> entries;
    for (const char *name : {"in", "last"})
        entries.append({pub, QLatin1String(name), EntryTag::FD});
    for (const char *name : {"1.txt", "2.txt", "zz.txt"})
        entries.append({pub, QLatin1String(name), EntryTag::FL});
    if (m_server.exists("/pub/" + longName()))
        entries.insert(2, {pub, QString::fromUtf8(longName()), EntryTag::FL});
    const bool ok = download.run(entries, here());
    return ok && m_world->operations.counts().givenUp == 0;
}

bool TroubleRun::deleteHere()
{
    ScriptedShellPerson person;
    person.deletes = {true};
    ShellFileOrder order;
    order.verb = ShellVerb::Delete;
    for (const char *name : {"in", "1.txt", "2.txt"}) {
        const QString path = here() + QLatin1Char('/') + QLatin1String(name);
        if (m_trouble != Trouble::None || QFileInfo::exists(path))
            order.from << path;
    }
    const ShellFileReport report = runShellFileOperation(order, person);
    m_refused = person.failures;
    for (const auto &asked : person.askedDeletes) {
        if (asked.forGood) // nobody said yes
            m_refused += asked.paths;
    }
    return report.complete;
}

bool TroubleRun::synchronise()
{
    return m_world->batch().RunSyncPattern(pattern, up()) == 0;
}

bool TroubleRun::compare()
{
    bool ok = false;
    const bool down = m_operation == TroubleOperation::CompareDown;
    return m_world->comparison.ftSync(here(), pub, down, ok).ok && ok;
}

} // namespace venlo::test
