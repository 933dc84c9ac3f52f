#include "hostile/PeakMemory.h"

#include <QByteArray>
#include <QFile>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace venlo::test
{

namespace
{
#if defined(__SANITIZE_ADDRESS__)
constexpr bool measures = false; // what was freed stays in its quarantine
#else
constexpr bool measures = true;
#endif

/// A line of /proc/self/status in bytes, 0 without it.
qint64 status(const QByteArray &key)
{
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (line.startsWith(key + ':'))
            return line.mid(key.size() + 1).trimmed().split(' ').value(0).toLongLong() * 1024;
    }
    return 0;
}
} // namespace

PeakMemory::PeakMemory()
{
#if defined(__GLIBC__)
    malloc_trim(0);
#endif
    QFile reset(QStringLiteral("/proc/self/clear_refs")); // "5" sets the peak to the present
    if (measures && reset.open(QIODevice::WriteOnly | QIODevice::Unbuffered) &&
        reset.write("5") == 1)
        m_before = status("VmRSS");
}

qint64 PeakMemory::grown() const
{
    return m_before == 0 ? 0 : qMax<qint64>(0, status("VmHWM") - m_before);
}

} // namespace venlo::test
