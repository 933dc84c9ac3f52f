#include "trouble/TroubleKinds.h"

#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "trouble/OrdinaryUser.h"

namespace venlo::test
{

namespace
{
constexpr unsigned allowedFolder = 0700;
constexpr unsigned readOnlyFolder = 0555;
constexpr unsigned namesOnlyFolder = 0444;
constexpr unsigned readOnlyFile = 0444;
constexpr qint64 spare = 4096; // bytes that a full disk still has
constexpr qint64 block = 4096;

QString filler()
{
    return smallDisk() + QStringLiteral("/filler");
}

void chmodTo(const QString &path, unsigned mode)
{
    if (chmod(QFile::encodeName(path).constData(), static_cast<mode_t>(mode)) != 0)
        qWarning("the rights of %s stay", qPrintable(path));
}
} // namespace

QByteArray nameOf(Trouble trouble)
{
    switch (trouble) {
    case Trouble::None:
        return "no trouble";
    case Trouble::DiskFull:
        return "disk full";
    case Trouble::UserDataFull:
        return "user data full";
    case Trouble::ReadOnlyRoot:
        return "read-only folder";
    case Trouble::ReadOnlyFolder:
        return "read-only sub-folder";
    case Trouble::ReadOnlyFiles:
        return "read-only files";
    case Trouble::Unreadable:
        return "unreadable files";
    case Trouble::DeniedFolder:
        return "denied sub-folder";
    case Trouble::DeniedEntries:
        return "denied entries";
    case Trouble::VanishedRoot:
        return "folder gone";
    case Trouble::VanishedEntries:
        return "entries gone";
    case Trouble::VanishesMeanwhile:
        return "entries go meanwhile";
    case Trouble::Grows:
        return "files grow";
    case Trouble::Shrinks:
        return "files shrink";
    case Trouble::ShrinksAlways:
        return "files shrink always";
    case Trouble::NameTooLong:
        return "name too long";
    case Trouble::LinkInstead:
        return "link instead of a folder";
    case Trouble::LinkMeanwhile:
        return "link meanwhile";
    case Trouble::LinkInRemoval:
        return "link in a removal";
    case Trouble::Leftover:
        return "leftover downloads";
    case Trouble::ClockSetBack:
        return "clock set back";
    }
    return {};
}

TroubleMaker::TroubleMaker(Trouble trouble, TroubleSpots spots, const QString &top)
    : m_trouble(trouble), m_spots(std::move(spots)), m_top(top)
{
}

TroubleMaker::~TroubleMaker()
{
    for (const auto &[path, mode] : m_rights)
        chmodTo(path, mode);
    if (!smallDisk().isEmpty())
        QFile::remove(filler());
}

QString TroubleMaker::at(const QByteArray &relative) const
{
    return here() +
           (relative.isEmpty() ? QString() : QLatin1Char('/') + QFile::decodeName(relative));
}

void TroubleMaker::rights(const QByteArray &relative, unsigned mode)
{
    struct stat before = {};
    const QString path = at(relative);
    if (stat(QFile::encodeName(path).constData(), &before) != 0)
        return;
    m_rights.emplace_back(path, before.st_mode & 07777U);
    chmodTo(path, mode);
}

void TroubleMaker::begin(ScriptedServer &server, const QByteArray &verb)
{
    switch (m_trouble) {
    case Trouble::DiskFull:
    case Trouble::UserDataFull:
        fillDisk();
        break;
    case Trouble::ReadOnlyRoot:
        rights({}, readOnlyFolder);
        break;
    case Trouble::ReadOnlyFolder:
        rights(m_spots.folder, readOnlyFolder);
        break;
    case Trouble::ReadOnlyFiles:
    case Trouble::Unreadable:
        for (const QByteArray &file : m_spots.files)
            rights(file, m_trouble == Trouble::Unreadable ? 0 : readOnlyFile);
        break;
    case Trouble::DeniedFolder:
        rights(m_spots.folder, 0);
        break;
    case Trouble::DeniedEntries:
        rights(m_spots.folder, namesOnlyFolder);
        break;
    case Trouble::VanishedRoot:
        QDir(here()).removeRecursively();
        break;
    case Trouble::VanishedEntries:
        vanish();
        break;
    case Trouble::LinkInstead:
        putLink();
        break;
    default:
        meanwhile(server, verb);
        break;
    }
}

/// What happens in the middle of the operation, told by what the server is asked for.
void TroubleMaker::meanwhile(ScriptedServer &server, const QByteArray &verb)
{
    const auto firstMoved = [&] { return server.on(verb, m_spots.firstMoved).once(); };
    switch (m_trouble) {
    case Trouble::VanishesMeanwhile:
        firstMoved().call([this] { vanish(); });
        break;
    case Trouble::LinkMeanwhile:
        firstMoved().call([this] { putLink(); });
        break;
    case Trouble::LinkInRemoval:
        // The directory is listed once for the comparison, and again before something is deleted.
        server.on("CWD", "/pub/" + m_spots.folder).nth(2).call([this] { putLink(); });
        break;
    case Trouble::Grows:
        whenSent(
            server,
            [](const QString &path) {
                QFile file(path);
                if (file.open(QIODevice::Append))
                    file.write("a line more\n");
            },
            true);
        break;
    case Trouble::Shrinks:
    case Trouble::ShrinksAlways:
        whenSent(
            server, [](const QString &path) { QFile::resize(path, QFileInfo(path).size() / 2); },
            m_trouble == Trouble::ShrinksAlways);
        break;
    default:
        break;
    }
}

void TroubleMaker::whenSent(ScriptedServer &server,
                            const std::function<void(const QString &)> &change, bool always)
{
    for (const QByteArray &file : m_spots.files) {
        const QByteArray name = file.mid(file.lastIndexOf('/') + 1);
        auto rule = server.on("STOR", name);
        if (!always)
            rule.once();
        rule.call([change, path = at(file)] { change(path); });
    }
}

void TroubleMaker::relieve(ScriptedServer &server)
{
    server.script().clear();
    for (const auto &[path, mode] : m_rights)
        chmodTo(path, mode);
    m_rights.clear();
    if (!smallDisk().isEmpty())
        QFile::remove(filler());
    const QString folder = at(m_spots.folder);
    const QString moved = m_top + QStringLiteral("/moved");
    if (QFileInfo(folder).isSymLink() && QFileInfo::exists(moved)) {
        QFile::remove(folder);
        QDir().rename(moved, folder);
    }
}

void TroubleMaker::vanish() const
{
    QDir(at(m_spots.folder)).removeRecursively();
    for (const QByteArray &file : m_spots.files)
        QFile::remove(at(file));
}

void TroubleMaker::putLink()
{
    const QString folder = at(m_spots.folder);
    if (QFileInfo::exists(folder) && !QDir().rename(folder, m_top + QStringLiteral("/moved")))
        qWarning("the folder cannot be moved");
    if (!QFile::link(outside(), folder))
        qWarning("no link");
}

/// Until nothing more fits, but for a block.
void TroubleMaker::fillDisk()
{
    QFile file(filler());
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return;
    const QByteArray bytes(block, 'x');
    while (file.write(bytes) == block) {
    }
    if (m_trouble == Trouble::DiskFull)
        file.resize(std::max<qint64>(0, file.size() - spare));
}

} // namespace venlo::test
