// How the file list's window is built.
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QProxyStyle>
#include <QPushButton>
#include <QStyleOptionHeader>
#include <QTableView>
#include <QVBoxLayout>

#include "mainwin/popup/EnterPresses.h"
#include "mainwin/popup/FileListModel.h"
#include "mainwin/popup/sfFlstParts.h"
#include "shared/PlainToolTip.h"

namespace venlo
{

namespace
{
constexpr int designedWidth = 820;
constexpr int designedHeight = 520;
constexpr int directoryWidth = 260;
constexpr int nameWidth = 260;
constexpr int sizeWidth = 90;
constexpr int filterCharacters = 24;

/// The sort arrow points up for ascending in every look, as in the panes.
class ArrowStyle : public QProxyStyle
{
public:
    explicit ArrowStyle(QObject *parent) { setParent(parent); }
    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget) const override
    {
        const auto *heading = qstyleoption_cast<const QStyleOptionHeader *>(option);
        if (element == PE_IndicatorHeaderArrow && heading != nullptr) {
            if (heading->sortIndicator == QStyleOptionHeader::None)
                return;
            // The header view says SortDown for ascending order.
            element = heading->sortIndicator == QStyleOptionHeader::SortDown
                          ? PE_IndicatorArrowUp
                          : PE_IndicatorArrowDown;
        }
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
};

QLabel *plainLabel(QWidget *parent, const QString &name, const QString &accessibleName)
{
    auto *label = new QLabel(parent);
    label->setObjectName(name);
    label->setAccessibleName(accessibleName);
    label->setTextFormat(Qt::PlainText);
    return label;
}

void prepareGrid(QTableView &grid, FileListModel &model)
{
    grid.setObjectName(QStringLiteral("vSpr"));
    grid.setAccessibleName(QStringLiteral("ﾌｧｲﾙの一覧"));
    grid.setModel(&model);
    grid.setSelectionBehavior(QAbstractItemView::SelectRows);
    grid.setSelectionMode(QAbstractItemView::ExtendedSelection);
    grid.setAlternatingRowColors(true);
    grid.setShowGrid(false);
    grid.setWordWrap(false);
    grid.setTextElideMode(Qt::ElideMiddle);
    grid.setTabKeyNavigation(false);
    grid.verticalHeader()->hide();
    grid.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    grid.verticalHeader()->setDefaultSectionSize(grid.fontMetrics().height() + 4);
    QHeaderView *header = grid.horizontalHeader();
    header->setStyle(new ArrowStyle(header));
    header->setSectionsClickable(true);
    header->setHighlightSections(false);
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    header->setSortIndicatorShown(true);
    header->setSortIndicator(FileListModel::Directory, Qt::AscendingOrder);
    header->setStretchLastSection(true);
    header->resizeSection(FileListModel::Directory, directoryWidth);
    header->resizeSection(FileListModel::Name, nameWidth);
    header->resizeSection(FileListModel::Size, sizeWidth);
}
} // namespace

sfFlst::Parts::Parts(Database &ofDatabase, Session &ofSession, WindowDesk &ofDesk, sfFlst &window)
    : database(ofDatabase), session(ofSession), desk(ofDesk), model(new FileListModel(&window)),
      filter(new QLineEdit(&window)), grid(new QTableView(&window)),
      shown(plainLabel(&window, QStringLiteral("lbPath"), QStringLiteral("ﾊﾟｽ"))),
      count(plainLabel(&window, QStringLiteral("lbCount"), QStringLiteral("件数")))
{
}

void sfFlst::build()
{
    setObjectName(QStringLiteral("sfFlst"));
    setWindowTitle(QStringLiteral("ﾌｧｲﾙ一覧 - Venlo FTP"));
    setAccessibleName(QStringLiteral("ﾌｧｲﾙ一覧"));
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    setModal(true);
    setSizeGripEnabled(true);
    m_parts->filter->setObjectName(QStringLiteral("txFlt"));
    m_parts->filter->setAccessibleName(QStringLiteral("名前の絞り込み"));
    m_parts->filter->setPlaceholderText(QStringLiteral("例 *.html (Enterで絞り込み)"));
    m_parts->filter->setMinimumWidth(filterCharacters * fontMetrics().averageCharWidth() * 2);
    prepareGrid(*m_parts->grid, *m_parts->model);
    m_parts->shown->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_parts->shown->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto *label = new QLabel(QStringLiteral("絞り込み"), this);
    label->setBuddy(m_parts->filter);
    auto *close = new QPushButton(QStringLiteral("閉じる"), this);
    close->setObjectName(QStringLiteral("cmClose"));
    close->setAccessibleName(close->text());
    enterPresses(*close); // in the box Enter filters
    connect(close, &QPushButton::clicked, this, &sfFlst::reject);

    auto *layout = new QVBoxLayout(this);
    auto *top = new QHBoxLayout;
    top->addWidget(label);
    top->addWidget(m_parts->filter);
    top->addSpacing(fontMetrics().height());
    top->addWidget(m_parts->shown, 1);
    layout->addLayout(top);
    layout->addWidget(m_parts->grid, 1);
    auto *bottom = new QHBoxLayout;
    bottom->addWidget(m_parts->count, 1);
    bottom->addWidget(close);
    layout->addLayout(bottom);
    setTabOrder(m_parts->filter, m_parts->grid);
    setTabOrder(m_parts->grid, close);
    resize(designedWidth, designedHeight);
}

void sfFlst::showPath()
{
    QLabel &label = *m_parts->shown;
    label.setText(label.fontMetrics().elidedText(m_parts->path, Qt::ElideMiddle, label.width()));
    setPlainToolTip(label, m_parts->path);
}

void sfFlst::resizeEvent(QResizeEvent *event)
{
    QDialog::resizeEvent(event);
    layout()->activate();
    showPath();
}

} // namespace venlo
