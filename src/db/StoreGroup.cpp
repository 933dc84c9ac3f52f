// Small changes that share a commit.
#include "db/DbError.h"
#include "db/Store.h"

namespace venlo
{

void Store::grouped(const std::function<void()> &change)
{
    if (m_depth > 0) { // of a transaction anyway
        change();
        return;
    }
    if (!m_groupOpen)
        beginGroup();
    m_depth = 1;
    bool begun = false;
    try {
        begin();
        begun = true;
        change();
        commit();
    } catch (...) {
        if (begun)
            rollback();
        m_depth = 0;
        if (!m_connection || !m_connection->inTransaction())
            endGroup(); // the store undid everything
        throw;
    }
    m_depth = 0;
}

void Store::beginGroup()
{
    connection().execute(QStringLiteral("BEGIN IMMEDIATE"));
    m_groupOpen = true;
    if (!m_groupTimer) {
        m_groupTimer = std::make_unique<QTimer>();
        m_groupTimer->setSingleShot(true);
        QObject::connect(m_groupTimer.get(), &QTimer::timeout, m_groupTimer.get(),
                         [this] { endGroup(); });
    }
    m_groupTimer->start(groupLife);
}

void Store::endGroup()
{
    if (!m_groupOpen || m_depth > 0)
        return;
    m_groupOpen = false;
    m_groupTimer->stop();
    QString words = QStringLiteral("一連の更新は既に取り消されています");
    try {
        if (m_connection && m_connection->inTransaction()) {
            m_connection->execute(QStringLiteral("COMMIT"));
            return;
        }
    } catch (const DbError &error) {
        words = error.words();
        rollbackGroup();
    }
    ++m_lostGroups;
    if (m_groupLost)
        m_groupLost(words);
}

void Store::rollbackGroup() noexcept
{
    try {
        if (m_connection->inTransaction())
            m_connection->execute(QStringLiteral("ROLLBACK"));
    } catch (const DbError &) {
        // The statements that follow find out.
    }
}

void Store::onGroupLost(std::function<void(const QString &words)> lost)
{
    m_groupLost = std::move(lost);
}

} // namespace venlo
