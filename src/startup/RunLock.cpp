#include "startup/RunLock.h"

#include <QElapsedTimer>
#include <QLockFile>

#include "platform/Files.h"
#include "shared/FrontEnd.h"

namespace venlo
{

namespace
{
constexpr int lookInterval = 200; // ms
}

RunLock::RunLock(const QString &userDataFolder, FrontEnd &frontEnd)
    : m_frontEnd(frontEnd), m_file(std::make_unique<QLockFile>(path(userDataFolder)))
{
    m_file->setStaleLockTime(0); // a run may take hours; only a dead owner makes it stale
}

RunLock::~RunLock() = default;

QString RunLock::path(const QString &userDataFolder)
{
    return userDataFolder + QStringLiteral("Run.lock");
}

bool RunLock::acquire(std::chrono::milliseconds limit)
{
    if (m_file->isLocked())
        return true;
    if (m_file->tryLock(0) || (m_file->error() == QLockFile::LockFailedError && wait(limit))) {
        makePrivateFile(m_file->fileName());
        return true;
    }
    m_frontEnd.warn(m_file->fileName() +
                    QStringLiteral(" : 他の実行が終わらないので実行しませんでした"));
    return false;
}

bool RunLock::isHeld() const
{
    return m_file->isLocked();
}

void RunLock::release()
{
    m_file->unlock();
}

bool RunLock::wait(std::chrono::milliseconds limit)
{
    m_frontEnd.warn(QStringLiteral("他の実行が終わるのを待っています"));
    QElapsedTimer waited;
    waited.start();
    while (waited.elapsed() < limit.count() && !m_frontEnd.cancelled()) {
        if (m_file->tryLock(lookInterval))
            return true;
        m_frontEnd.yield();
    }
    return false;
}

} // namespace venlo
