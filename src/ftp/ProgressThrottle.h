#pragma once

#include "shared/FrontEnd.h"

#include <QElapsedTimer>
#include <QString>

namespace venlo
{

/// Tells the front end how far a transfer has come, often enough to look alive and seldom enough
/// to cost nothing. Lives for one attempt at one file.
class ProgressThrottle
{
public:
    /// total in bytes, -1 when unknown.
    ProgressThrottle(FrontEnd &frontEnd, QString name, qint64 total)
        : m_frontEnd(frontEnd), m_name(std::move(name)), m_total(total)
    {
        m_sinceLast.start();
    }

    void moved(qint64 done)
    {
        if (m_sinceLast.elapsed() < interval)
            return;
        m_sinceLast.restart();
        m_frontEnd.progress({m_name, done, m_total});
    }
    void finished(qint64 done) { m_frontEnd.progress({m_name, done, done}); }

private:
    static constexpr qint64 interval = 50; // milliseconds

    FrontEnd &m_frontEnd;
    QString m_name;
    qint64 m_total;
    QElapsedTimer m_sinceLast;
};

} // namespace venlo
