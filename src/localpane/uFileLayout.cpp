// How the local pane is put together.
#include <algorithm>
#include <cmath>

#include <QComboBox>
#include <QDir>
#include <QEvent>
#include <QHeaderView>
#include <QLineEdit>
#include <QPointer>
#include <QSplitter>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

#include "localpane/LocalCommands.h"
#include "localpane/RootBar.h"
#include "localpane/uFileParts.h"
#include "platform/FileLook.h"
#include "shared/WindowDesk.h"

namespace venlo
{

namespace
{
constexpr int treeShare = 40; // percent of the pane's height
constexpr int watchMilliseconds = 1000;
constexpr int widest = 4000; // of a column that a settings file names

QWidget *panelFor(const QString &name, QWidget *content)
{
    auto *panel = new QWidget;
    panel->setObjectName(name);
    auto *layout = new QVBoxLayout(panel);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(content);
    return panel;
}
} // namespace

uFile::Parts::Parts(uFile &pane, Rooms given)
    : q(pane), rooms(given), nodes(new FolderTree(QDir::separator(), &pane)),
      list(new RowList(LocalListFill::layout(), &pane)),
      treeView(new PaneView(PaneView::Kind::Tree)), listView(new PaneView(PaneView::Kind::List))
{
    build();
    treeFill = std::make_unique<LocalTreeFill>(*nodes, *treeView, rooms.desk);
    listFill = std::make_unique<LocalListFill>(*list, *listView, rooms.desk);
    commands = std::make_unique<LocalCommands>(
        *this, LocalCommands::Rooms{rooms.desk, rooms.gate, rooms.session});
    connect(treeFill.get(), &LocalTreeFill::ranOut, this, [this] { keysOut(false); });
    connect(listFill.get(), &LocalListFill::ranOut, this, &Parts::keysOut);
    connectViews();
    connectBar();
    Timer1 = new QTimer(&q);
    Timer1->setObjectName(QStringLiteral("Timer1"));
    Timer1->setInterval(watchMilliseconds);
    connect(Timer1, &QTimer::timeout, this, &Parts::tick);
    Timer1->start();
}

uFile::Parts::~Parts()
{
    treeView->setDragPartner(nullptr);
    listView->setDragPartner(nullptr);
    // The views may lay themselves out once more on their way out.
    nodes->setIconSource({});
    list->setIconSource({});
    list->setLateSource({});
}

void uFile::Parts::build()
{
    q.setObjectName(QStringLiteral("uFile"));
    q.setAccessibleName(QStringLiteral("ﾛｰｶﾙのﾌｫﾙﾀﾞとﾌｧｲﾙ"));
    buildTree();
    buildList();
    bar = new RootBar;
    pTrv = panelFor(QStringLiteral("pTrv"), treeView);
    splitter = new QSplitter(Qt::Vertical);
    splitter->setObjectName(QStringLiteral("Splitter"));
    splitter->setAccessibleName(QStringLiteral("ﾂﾘｰと一覧の境界"));
    splitter->addWidget(pTrv);
    splitter->addWidget(panelFor(QStringLiteral("pLsV"), listView));
    splitter->setChildrenCollapsible(false);
    splitter->setStretchFactor(0, treeShare);
    splitter->setStretchFactor(1, 100 - treeShare);
    splitter->installEventFilter(this);
    auto *layout = new QVBoxLayout(&q);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(bar);
    layout->addWidget(splitter, 1);
    QWidget::setTabOrder(bar->cbRoot(), bar->imFnd());
    QWidget::setTabOrder(bar->imFnd(), bar->txFilter());
    QWidget::setTabOrder(bar->txFilter(), treeView);
    QWidget::setTabOrder(treeView, listView);
    // A window that opens has its keys there, not in the box of the roots.
    if (q.window()->focusWidget() == nullptr)
        treeView->setFocus();
}

void uFile::Parts::buildTree()
{
    treeView->setObjectName(QStringLiteral("TrView"));
    treeView->setAccessibleName(QStringLiteral("ﾛｰｶﾙのﾌｫﾙﾀﾞ"));
    nodes->setIconSource([this](const QModelIndex &node, bool) {
        // A new folder has no place on the disk before it has its name.
        const bool made = nodes->tag(node) != EntryTag::NW;
        return ImgLst.icon(ImgLst.trIcnToPic(nodes->path(made ? node : node.parent())));
    });
    treeView->setModel(nodes);
}

void uFile::Parts::buildList()
{
    listView->setObjectName(QStringLiteral("LsView"));
    listView->setAccessibleName(QStringLiteral("ﾛｰｶﾙのﾌｧｲﾙ"));
    const auto path = [this](const RowList::Row &row) {
        return pathIn(listFill->folder(), row.texts.value(LocalListFill::Name));
    };
    list->setIconSource([this, path](const RowList::Row &row) {
        return ImgLst.icon(
            ImgLst.trIcnToPic(row.tag != EntryTag::NW ? path(row) : listFill->folder()));
    });
    list->setLateSource([path](const RowList::Row &row) {
        return row.tag == EntryTag::FL ? fileTypeName(path(row))
                                       : row.texts.value(LocalListFill::Type);
    });
    listView->setModel(list);
    listView->setColumnHidden(LocalListFill::SortKey, true);
    list->sort(LocalListFill::SortKey, Qt::AscendingOrder);
    listView->showSort(-1, Qt::AscendingOrder);
    listView->setColumnLetters({28, 20, 12, 10, 24, 8}, LocalListFill::Modified);
}

void uFile::Parts::connectViews()
{
    connect(treeView, &PaneView::chosen, this, &Parts::nodeChosen);
    connect(treeView, &PaneView::entered, this, [this](const QModelIndex &node) {
        treeView->setExpanded(node, !treeView->isExpanded(node));
    });
    connect(listView, &QTreeView::clicked, this, &Parts::rowClicked);
    connect(listView, &PaneView::entered, this, &Parts::rowEntered);
    connect(listView, &PaneView::headingClicked, this, &Parts::sortBy);
    for (PaneView *view : {treeView, listView}) {
        const bool isTree = view == treeView;
        connect(view, &PaneView::menuWanted, this,
                [this, isTree](const QPoint &at) { popUpMenu(at, isTree); });
        connect(view, &PaneView::keyWanted, this,
                [this, isTree](PaneKey key) { keyWanted(key, isTree); });
        // An open editor may outlive the commands for a moment.
        const QPointer<LocalCommands> target(commands.get());
        view->setNameEditing(
            [target, isTree](const QModelIndex &index, const QString &text) {
                return target == nullptr || target->nameEntered(index, text, isTree);
            },
            [target, isTree](const QModelIndex &index) {
                if (target != nullptr)
                    target->nameAbandoned(index, isTree);
            });
        view->setDragPartner(commands.get());
    }
}

void uFile::Parts::connectBar()
{
    connect(bar, &RootBar::rootWanted, this, [this](const QString &root) {
        settled = true;
        ShowRoot(root);
    });
    connect(bar, &RootBar::findWanted, this, &Parts::findRoot);
    connect(bar, &RootBar::dropped, this,
            [this](const QString &path) { commands->droppedOnRoot(path); });
    connect(bar, &RootBar::filterEntered, this, [this](const QString &filter) {
        listFill->setFilter(filter);
        listFill->FillList(listFill->folder());
    });
}

bool uFile::Parts::eventFilter(QObject *object, QEvent *event)
{
    if (event->type() == QEvent::Show || event->type() == QEvent::Resize) {
        if (!placed)
            placeSplitter();
    }
    return QObject::eventFilter(object, event);
}

/// Heights count only once there is one to share out.
void uFile::Parts::placeSplitter()
{
    const int all = splitter->height() - splitter->handleWidth();
    placed = splitter->isVisible() && all > 0;
    if (!placed)
        return;
    const int tree = treeHeight > 0 ? std::min(treeHeight, all) : all * treeShare / 100;
    splitter->setSizes({tree, all - tree});
}

QString uFile::Parts::columnWidths() const
{
    QStringList texts;
    for (int column = 0; column < LocalListFill::Columns; ++column)
        texts.append(QString::number(listView->columnWidth(column)));
    return texts.join(QLatin1Char(','));
}

void uFile::Parts::setColumnWidths(const QString &texts)
{
    const QStringList parts = texts.split(QLatin1Char(','));
    const int count = std::min<int>(static_cast<int>(parts.size()), LocalListFill::SortKey);
    const int narrowest = listView->header()->minimumSectionSize();
    for (int column = 0; column < count; ++column) {
        bool number = false;
        const double width = parts.at(column).trimmed().toDouble(&number);
        if (number && !std::isnan(width))
            listView->setColumnWidth(
                column, static_cast<int>(std::clamp<double>(width, narrowest, widest)));
    }
}

} // namespace venlo
