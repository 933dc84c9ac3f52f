#include "trouble/TroubleRun.h"

#include <algorithm>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "sync/WorkTables.h"
#include "trouble/OrdinaryUser.h"

namespace venlo::test
{

namespace
{
const QString pub = QStringLiteral("/pub");
const QString pattern = QStringLiteral("p");

QByteArray text(char letter, int size = 5000)
{
    QByteArray bytes;
    while (bytes.size() < size)
        bytes += QByteArray(60, letter) + '\n';
    return bytes;
}

/// Day of a month that is long gone, or will be long in coming.
QDateTime day(int number, Trouble trouble)
{
    const int years = trouble == Trouble::ClockSetBack ? 10 : 0;
    return {QDate(2024 + years, 3, number), QTime(12, 34)};
}

struct Rows {
    std::vector<TreeRow> master;
    std::vector<TreeRow> other; ///< the side that is made equal
};

Rows rowsFor(Trouble trouble)
{
    const auto at = [trouble](int number) { return day(number, trouble); };
    Rows rows{{{"1.txt", text('1'), at(9)},
               {"2.txt", text('2', 7000), at(9)},
               {"both.txt", text('b'), at(5)},
               {"in/3.txt", text('3'), at(9)},
               {"in/deep/4.txt", text('4'), at(9)},
               {"in/then.txt", text('t'), at(9)},
               {"last/5.txt", text('5', 6000), at(9)},
               {"zz.txt", text('z'), at(9)}},
              {{"2.txt", text('o'), at(3)},
               {"both.txt", text('b'), at(5)},
               {"gone.txt", text('g'), at(4)},
               {"last/5.txt", text('o'), at(3)},
               {"last/gone.txt", text('g'), at(4)},
               {"old/f.txt", text('f'), at(4)}}};
    return rows;
}

} // namespace

TroubleRun::TroubleRun(TroubleOperation operation, Trouble trouble)
    : m_operation(operation), m_trouble(trouble),
      m_top((trouble == Trouble::DiskFull ? smallDisk() : QDir::tempPath()) +
            QStringLiteral("/trouble-XXXXXX"))
{
}

TroubleRun::~TroubleRun() = default;

QByteArray TroubleRun::nameOf(TroubleOperation operation)
{
    switch (operation) {
    case TroubleOperation::Put:
        return "put";
    case TroubleOperation::Get:
        return "get";
    case TroubleOperation::DragUp:
        return "drag up";
    case TroubleOperation::DragDown:
        return "drag down";
    case TroubleOperation::Delete:
        return "delete";
    case TroubleOperation::SyncUp:
        return "synchronise up";
    case TroubleOperation::SyncDown:
        return "synchronise down";
    case TroubleOperation::CompareUp:
        return "compare up";
    case TroubleOperation::CompareDown:
        return "compare down";
    }
    return {};
}

QByteArray TroubleRun::longName()
{
    return QStringLiteral("あ").repeated(200).toUtf8();
}

TroubleSpots TroubleRun::spotsOf(TroubleOperation operation)
{
    switch (operation) {
    case TroubleOperation::Put:
        return {"in", {"2.txt"}, "1.txt"};
    case TroubleOperation::Get:
        return {"last", {"2.txt"}, "1.txt"};
    case TroubleOperation::SyncDown:
    case TroubleOperation::CompareDown:
        return {"last", {"2.txt", "last/5.txt"}, "5.txt"};
    case TroubleOperation::DragDown:
        return {"last", {"2.txt", "last/5.txt"}, "5.txt"};
    default:
        return {"in", {"2.txt", "in/3.txt"}, "3.txt"};
    }
}

bool TroubleRun::up() const
{
    return m_operation == TroubleOperation::Put || m_operation == TroubleOperation::DragUp ||
           m_operation == TroubleOperation::SyncUp || m_operation == TroubleOperation::CompareUp ||
           m_operation == TroubleOperation::Delete;
}

/// The engine makes its folders where temporary folders are made.
void TroubleRun::makeWorld()
{
    const QByteArray before = qgetenv("TMPDIR");
    if (m_trouble == Trouble::UserDataFull)
        qputenv("TMPDIR", QFile::encodeName(smallDisk()));
    m_world = std::make_unique<SyncWorld>();
    if (before.isEmpty())
        qunsetenv("TMPDIR");
    else
        qputenv("TMPDIR", before);
}

bool TroubleRun::prepare()
{
    m_maker = std::make_unique<TroubleMaker>(m_trouble, spotsOf(m_operation), m_top.path());
    Rows rows = rowsFor(m_trouble);
    if (m_trouble == Trouble::LinkInRemoval) { // nothing but a removal is to be done there
        const auto fifth = [](const TreeRow &row) { return row.path == "last/5.txt"; };
        *std::find_if(rows.other.begin(), rows.other.end(), fifth) =
            *std::find_if(rows.master.begin(), rows.master.end(), fifth);
    }
    std::vector<TreeRow> remote = up() ? rows.other : rows.master;
    std::vector<TreeRow> local = up() ? rows.master : rows.other;
    if (m_trouble == Trouble::NameTooLong && !up())
        remote.push_back({longName(), text('l'), day(9, m_trouble)});
    if (m_trouble == Trouble::Leftover || m_trouble == Trouble::ClockSetBack) {
        for (const char *folder : {"", "last/"})
            local.push_back(
                {QByteArray(folder) + ".venlo-0123abcd.part", text('p'), day(1, m_trouble)});
    }
    // What a link may lead to looks like what is behind it.
    const std::vector<TreeRow> foreign{{"5.txt", text('o'), day(3, m_trouble)},
                                       {"gone.txt", text('g'), day(4, m_trouble)},
                                       {"3.txt", text('p'), day(9, m_trouble)},
                                       {"deep/4.txt", text('p'), day(9, m_trouble)}};
    m_server.makeFolder("/pub");
    makeTree(m_server.tree(), "/pub", remote);
    const bool made = m_top.isValid() && makeTree(here(), local) &&
                      makeTree(m_maker->outside(), foreign) && m_server.start();
    makeWorld();
    m_before = trees();
    m_outside = snapshot(m_maker->outside());
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_top.filePath(QStringLiteral("share"))));
    return made && getReady();
}

bool TroubleRun::getReady()
{
    m_world->registerSite(m_server.server(), m_server.user(), m_server.password());
    addPattern(m_world->database, {pattern, here(), QStringLiteral("site"), pub});
    m_world->operations.standingAnswer = OverwriteMode::OverwriteAll;
    if (m_operation == TroubleOperation::SyncUp || m_operation == TroubleOperation::SyncDown)
        return true;
    if (!m_world->connectToSite())
        return false;
    m_world->cache.caRefresh(pub);
    m_world->person.clear();
    return errorLines().isEmpty();
}

bool TroubleRun::act()
{
    m_maker->begin(m_server, up() ? "STOR" : "RETR");
    if (m_trouble == Trouble::NameTooLong && up())
        m_server.on("STOR", "2.txt").reply(553, "File name too long");
    m_saysDone = carryOut();
    return m_saysDone;
}

void TroubleRun::relieve()
{
    m_maker->relieve(m_server);
    if (m_trouble == Trouble::NameTooLong)
        (void)m_server.tree().removeFile("/pub/" + longName());
}

bool TroubleRun::again()
{
    if (m_operation != TroubleOperation::SyncUp && m_operation != TroubleOperation::SyncDown) {
        m_world->session.CloseInternet();
        if (!m_world->connectToSite())
            return false;
        m_world->cache.caRefresh(pub);
    }
    if (!QFileInfo(here()).isDir() && !QDir().mkpath(here()))
        return false;
    return carryOut();
}

BothTrees TroubleRun::trees() const
{
    return {snapshot(here()), snapshot(m_server.tree(), "/pub")};
}

} // namespace venlo::test
