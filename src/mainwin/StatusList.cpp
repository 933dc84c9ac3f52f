#include "mainwin/StatusList.h"

#include <QContextMenuEvent>

namespace venlo
{

namespace
{
constexpr int mostLines = 50;
}

StatusList::StatusList(QWidget *parent) : QListWidget(parent)
{
    setObjectName(QStringLiteral("ltMsg"));
    setAccessibleName(QStringLiteral("状況の一覧"));
    setUniformItemSizes(true);
    setTextElideMode(Qt::ElideMiddle);
}

void StatusList::addLine(const QString &text)
{
    if (count() > mostLines)
        clear();
    addItem(text);
    item(count() - 1)->setToolTip(text);
    setCurrentRow(count() - 1);
}

} // namespace venlo
