// How the FTP pane is put together.
#include <algorithm>

#include <QEvent>
#include <QHeaderView>
#include <QLabel>
#include <QSplitter>
#include <QStyle>
#include <QVBoxLayout>

#include "ftppane/RemoteRows.h"
#include "ftppane/SiteHeader.h"
#include "ftppane/uFtpParts.h"
#include "mainwin/popup/sfFlst.h"
#include "shared/OperationGate.h"

namespace venlo
{

namespace
{
constexpr int treeShare = 40; // percent of the pane's height

QWidget *panelFor(const QString &name, const QList<QWidget *> &content)
{
    auto *panel = new QWidget;
    panel->setObjectName(name);
    auto *layout = new QVBoxLayout(panel);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    for (QWidget *widget : content)
        layout->addWidget(widget);
    return panel;
}
} // namespace

uFtp::Parts::Parts(uFtp &pane, Rooms given)
    : q(pane), rooms(given), header(new SiteHeader), nodes(new FolderTree(QLatin1Char('/'), &pane)),
      list(new RowList(remoteLayout(), &pane)), treeView(new PaneView(PaneView::Kind::Tree)),
      listView(new PaneView(PaneView::Kind::List)), note(new QLabel)
{
    build();
    browser = std::make_unique<RemoteBrowser>(
        RemoteBrowser::Rooms{rooms.desk, rooms.session, rooms.cache},
        RemoteBrowser::Views{*nodes, *treeView, *list, *listView});
    connect(browser.get(), &RemoteBrowser::ranOut, this, &Parts::keysOut);
    connect(browser.get(), &RemoteBrowser::noted, this, [this](const QString &text) {
        note->setText(text);
        note->setVisible(!text.isEmpty());
    });
    connectHeader();
    connectViews();
}

uFtp::Parts::~Parts()
{
    treeView->setDragPartner(nullptr);
    listView->setDragPartner(nullptr);
    treeView->setNameEditing({}, {});
    listView->setNameEditing({}, {});
}

void uFtp::Parts::build()
{
    q.setObjectName(QStringLiteral("uFtp"));
    q.setAccessibleName(QStringLiteral("FTPのﾌｫﾙﾀﾞとﾌｧｲﾙ"));
    buildViews();
    note->setObjectName(QStringLiteral("lbNote"));
    note->setAccessibleName(QStringLiteral("一覧についてのお知らせ"));
    note->setWordWrap(true);
    note->setMargin(3);
    note->hide();
    pTrv = panelFor(QStringLiteral("pTrv"), {treeView});
    splitter = new QSplitter(Qt::Vertical);
    splitter->setObjectName(QStringLiteral("Splitter"));
    splitter->setAccessibleName(QStringLiteral("ﾂﾘｰと一覧の境界"));
    splitter->addWidget(pTrv);
    splitter->addWidget(panelFor(QStringLiteral("pLsV"), {listView, note}));
    splitter->setChildrenCollapsible(false);
    splitter->setStretchFactor(0, treeShare);
    splitter->setStretchFactor(1, 100 - treeShare);
    splitter->installEventFilter(this);
    auto *layout = new QVBoxLayout(&q);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(header);
    layout->addWidget(splitter, 1);
    QList<QWidget *> chain = header->tabChain();
    chain << treeView << listView;
    for (qsizetype i = 1; i < chain.size(); ++i)
        QWidget::setTabOrder(chain.at(i - 1), chain.at(i));
}

void uFtp::Parts::buildViews()
{
    const QStyle *style = q.style();
    treeView->setObjectName(QStringLiteral("TrView"));
    treeView->setAccessibleName(QStringLiteral("FTPのﾌｫﾙﾀﾞ"));
    nodes->setIconSource([style](const QModelIndex &, bool open) {
        return style->standardIcon(open ? QStyle::SP_DirOpenIcon : QStyle::SP_DirClosedIcon);
    });
    treeView->setModel(nodes);
    listView->setObjectName(QStringLiteral("LsView"));
    listView->setAccessibleName(QStringLiteral("FTPのﾌｧｲﾙ"));
    list->setIconSource([style](const RowList::Row &row) {
        return style->standardIcon(row.tag == EntryTag::FL ? QStyle::SP_FileIcon
                                                           : QStyle::SP_DirClosedIcon);
    });
    listView->setModel(list);
    listView->setColumnHidden(RemoteColumn::SortKey, true);
    listView->showSort(-1, Qt::AscendingOrder);
    listView->setColumnLetters({34, 20, 12}, RemoteColumn::Modified);
    treeView->setEnabled(false);
    listView->setEnabled(false);
}

void uFtp::Parts::connectHeader()
{
    connect(header, &SiteHeader::siteChosen, this, &Parts::siteChosen);
    connect(header, &SiteHeader::connectWanted, this, [this] {
        run([this] {
            const bool fromHere = header->hasFocusInside();
            if (connectSite() && fromHere)
                treeView->setFocus();
        });
    });
    connect(header, &SiteHeader::elseWanted, this, &Parts::popUpElse);
    connect(&rooms.gate, &OperationGate::busyChanged, header, &SiteHeader::setBusy);
}

void uFtp::Parts::connectViews()
{
    // Behind the click: what it asks for may wait for the server.
    connect(treeView, &PaneView::chosen, this, [this] {
        if (choosing)
            return;
        if (browser->busy()) {
            chosenMeanwhile();
            return;
        }
        choosing = true;
        QMetaObject::invokeMethod(this, &Parts::nodeChosen, Qt::QueuedConnection);
    });
    connect(treeView, &QTreeView::expanded, this, [this](const QModelIndex &index) {
        if (!nodes->isUnread(index))
            return;
        QMetaObject::invokeMethod(
            this, [this, node = QPersistentModelIndex(index)] { nodeExpanded(node); },
            Qt::QueuedConnection);
    });
    connect(treeView, &PaneView::entered, this, [this](const QModelIndex &node) {
        treeView->setExpanded(node, !treeView->isExpanded(node));
    });
    connect(listView, &PaneView::entered, this, &Parts::rowEntered);
    connect(listView, &PaneView::headingClicked, this, &Parts::sortBy);
    connect(&rooms.gate, &OperationGate::busyChanged, this, [this] {
        QMetaObject::invokeMethod(this, &Parts::settleChoice, Qt::QueuedConnection);
    });
    for (PaneView *view : {treeView, listView}) {
        const bool isTree = view == treeView;
        connect(view, &PaneView::menuWanted, this,
                [this, isTree](const QPoint &at) { popUpMenu(at, isTree); });
        connect(view, &PaneView::keyWanted, this,
                [this, isTree](PaneKey key) { keyWanted(key, isTree); });
        view->setNameEditing(
            [this, isTree](const QModelIndex &index, const QString &text) {
                return isTree ? nodeNamed(index, text) : rowNamed(index, text);
            },
            [this, isTree](const QModelIndex &index) { nameAbandoned(index, isTree); });
        view->setDragPartner(this);
    }
}

bool uFtp::Parts::eventFilter(QObject *object, QEvent *event)
{
    if (!placed && (event->type() == QEvent::Show || event->type() == QEvent::Resize))
        placeSplitter();
    return QObject::eventFilter(object, event);
}

/// Heights count only once there is one to share out.
void uFtp::Parts::placeSplitter()
{
    const int all = splitter->height() - splitter->handleWidth();
    placed = splitter->isVisible() && all > 0;
    if (!placed)
        return;
    const int tree = treeHeight > 0 ? std::min(treeHeight, all) : all * treeShare / 100;
    splitter->setSizes({tree, all - tree});
}

} // namespace venlo
