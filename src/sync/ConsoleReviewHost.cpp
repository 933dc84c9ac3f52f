#include "sync/ConsoleReviewHost.h"

#include <QString>

#include "shared/FrontEnd.h"
#include "sync/Execution.h"

namespace venlo
{

int ConsoleReviewHost::act(SyncReview &review, Execution &execution, bool runsUnattended)
{
    if (runsUnattended)
        return execution.run(review, true);
    m_frontEnd.warn(QStringLiteral("画面がないため同期の内容を確認できません /b を指定して下さい"));
    return Execution::NotDone;
}

} // namespace venlo
