#include "mainwin/StatusList.h"

#include "shared/PlainToolTip.h"
#include "shared/StatusTail.h"

namespace venlo
{

StatusList::StatusList(QWidget *parent) : QListWidget(parent)
{
    setObjectName(QStringLiteral("ltMsg"));
    setAccessibleName(QStringLiteral("状況の一覧"));
    setUniformItemSizes(true);
    setTextElideMode(Qt::ElideMiddle);
}

void StatusList::addLines(const QStringList &lines)
{
    const StatusTail tail = statusTail(count(), lines.size());
    if (tail.clears)
        clear();
    for (const QString &line : lines.mid(tail.first)) {
        auto *shown = new QListWidgetItem(line);
        shown->setToolTip(plainToolTip(line));
        addItem(shown);
    }
    setCurrentRow(count() - 1);
}

} // namespace venlo
