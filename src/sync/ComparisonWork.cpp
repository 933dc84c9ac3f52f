#include "sync/ComparisonWork.h"

#include "shared/FrontEnd.h"

namespace venlo
{

namespace
{
constexpr int stepsPerYield = 256;
constexpr int namesShown = 20;
} // namespace

void ComparisonWork::block(const QString &relative, const QString &why, bool throughParents)
{
    result.blocks.add(relative, why, throughParents);
    frontEnd.warn(relative + QStringLiteral(" は同期しません: ") + why);
}

void ComparisonWork::blockIfStripped(const QString &relative)
{
    if (!relative.contains(QLatin1Char('?')))
        return;
    result.unreliable = true;
    const QString why = QStringLiteral("名前に ? があります");
    QString stripped = relative;
    result.blocks.add(stripped.remove(QLatin1Char('?')), why);
    frontEnd.warn(relative + QStringLiteral(" は同期しません: ") + why);
}

bool ComparisonWork::stopped()
{
    if (++m_steps % stepsPerYield == 0)
        frontEnd.yield();
    if (frontEnd.cancelled())
        result.cancelled = true;
    return result.cancelled;
}

void ComparisonWork::tellBroken(const QStringList &names)
{
    QStringList shown = names.mid(0, namesShown);
    if (names.size() > namesShown)
        shown.append(QStringLiteral("･･･ (%1)").arg(names.size()));
    frontEnd.message(shown.join(QLatin1Char('\n')) +
                     QStringLiteral("\n名前に ' があるため比較できません"));
}

} // namespace venlo
