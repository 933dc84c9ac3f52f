// How the FTP pane makes and renames what lies on the server.
#include "ftp/RemoteOperations.h"
#include "ftp/Session.h"
#include "ftppane/OperationScopes.h"
#include "ftppane/RemoteRows.h"
#include "ftppane/uFtpParts.h"
#include "shared/Flags.h"
#include "shared/OperationGate.h"
#include "shared/WindowDesk.h"

namespace venlo
{

namespace
{
/// Why the operations of a scope were given up, in the words they were given up with.
class Refusals final : public OperationView
{
public:
    explicit Refusals(WindowDesk &desk) : m_desk(desk) { m_desk.addOperationView(*this); }
    ~Refusals() override { m_desk.removeOperationView(*this); }
    Refusals(const Refusals &) = delete;
    Refusals &operator=(const Refusals &) = delete;

    void showProgress(const TransferProgress & /*progress*/) override {}
    void showOutcome(const Outcome &outcome) override
    {
        if (outcome.kind == Outcome::Kind::GivenUp && !outcome.why.isEmpty())
            m_words = outcome.why;
    }
    void showWarning(const QString & /*line*/) override {}
    [[nodiscard]] QString words() const { return m_words; }

private:
    WindowDesk &m_desk;
    QString m_words;
};
} // namespace

void uFtp::Parts::newFolder(bool forTree)
{
    if (rooms.gate.busy() || treeView->editingName() || listView->editingName())
        return;
    if (forTree)
        newNode();
    else
        newRow();
}

void uFtp::Parts::newNode()
{
    const QPersistentModelIndex parent = browser->shown();
    bool read = parent.isValid();
    if (read && nodes->isUnread(parent)) {
        run([&] {
            read = browser->readNode(parent);
            if (!read && parent.isValid())
                browser->sayUnlisted(browser->dirOf(parent));
        });
    }
    if (!read || !parent.isValid() || nodes->isUnread(parent))
        return;
    const FlagScope busy(browser->busy());
    const QPersistentModelIndex made =
        nodes->addChild(parent, {newFolderName(), false, false, EntryTag::NW});
    if (!made.isValid()) {
        browser->overflow();
        return;
    }
    treeView->expand(parent);
    treeView->setCurrentIndex(made);
    treeView->editName(made);
}

void uFtp::Parts::newRow()
{
    if (!browser->shown().isValid())
        return;
    RowList::Row row = newFolderRow();
    if (!list->append({row})) {
        browser->overflow();
        return;
    }
    const QModelIndex made = list->index(list->rowOf(EntryTag::NW, newFolderName()), 0);
    listView->selectionModel()->setCurrentIndex(made, QItemSelectionModel::ClearAndSelect |
                                                          QItemSelectionModel::Rows);
    listView->editName(made);
}

void uFtp::Parts::rename(bool forTree)
{
    if (rooms.gate.busy())
        return;
    if (!forTree) {
        const QModelIndex current = listView->currentIndex();
        if (current.isValid() && listView->selectionModel()->isSelected(current))
            listView->editName(current);
    } else if (browser->shown() == nodes->root()) {
        rooms.desk.message(QStringLiteral("ﾙｰﾄﾊﾟｽの名前は変更できません"));
    } else {
        treeView->editName(browser->shown());
    }
}

bool uFtp::Parts::change(const std::function<void(bool &ok)> &operation, const QString &name)
{
    if (!on || rooms.session.state() != Session::Connected)
        return false;
    const Refusals refusals(rooms.desk);
    const FlagScope here(tells);
    const WaitCursor cursor;
    rooms.operations.standingAnswer = OverwriteMode::Ask;
    rooms.operations.resetCounts();
    bool ok = true;
    operation(ok);
    if (ok && rooms.operations.counts().givenUp == 0)
        return true;
    if (rooms.session.state() == Session::Connected && !rooms.desk.cancelled())
        rooms.desk.message(name + QStringLiteral(" は処理できませんでした\n") + refusals.words());
    return false;
}

QString uFtp::Parts::nameAfter(const QString &dir, const QString &before, const QString &wanted)
{
    QString given = wanted;
    while (given.startsWith(QLatin1Char('.')))
        given.remove(0, 1);
    return !given.isEmpty() && rooms.cache.isCached(dir, given) ? given : before;
}

/// True ends the editing: also where the entry went with the connection.
bool uFtp::Parts::nodeNamed(const QModelIndex &node, const QString &name)
{
    const QPersistentModelIndex at(node);
    bool done = false;
    run([&] {
        const QString dir = browser->dirOf(at.parent());
        const QString before = nodes->text(at);
        const bool fresh = nodes->tag(at) == EntryTag::NW;
        done = change(
            [&](bool &ok) {
                if (fresh)
                    rooms.operations.ftMakeDir(dir, name, ok);
                else
                    rooms.operations.ftRename(dir, before, name, true, ok);
            },
            name);
        if (!done || !at.isValid())
            return;
        nodes->setText(at, fresh ? name : nameAfter(dir, before, name));
        nodes->setTag(at, EntryTag::FD);
        if (fresh)
            browser->show(at);
    });
    return done || !at.isValid();
}

bool uFtp::Parts::rowNamed(const QModelIndex &index, const QString &name)
{
    const QPersistentModelIndex at(index);
    bool done = false;
    run([&] {
        const QString dir = browser->shownDir();
        const EntryTag tag = list->row(at.row()).tag;
        const bool fresh = tag == EntryTag::NW;
        const bool folder = tag != EntryTag::FL;
        const QString before = list->text(at.row(), RemoteColumn::Name);
        done = change(
            [&](bool &ok) {
                if (fresh)
                    rooms.operations.ftMakeDir(dir, name, ok);
                else
                    rooms.operations.ftRename(dir, before, name, folder, ok);
            },
            name);
        if (!done || !at.isValid())
            return;
        const QString shown = fresh ? name : nameAfter(dir, before, name);
        list->setText(at.row(), RemoteColumn::Name, shown);
        list->setText(at.row(), RemoteColumn::SortKey, remoteSortKey(shown, folder));
        const QModelIndex parent = browser->shown();
        if (!fresh) {
            if (folder)
                nodes->setText(nodes->child(parent, before, Qt::CaseSensitive), shown);
            return;
        }
        list->setTag(at.row(), EntryTag::FD);
        list->setText(at.row(), RemoteColumn::Modified, newFolderRow().texts.value(1));
        list->setText(at.row(), RemoteColumn::Size, QString());
        if (!nodes->isUnread(parent) && !nodes->addChild(parent, {shown}).isValid())
            browser->overflow();
    });
    return done || !at.isValid();
}

void uFtp::Parts::nameAbandoned(const QModelIndex &index, bool inTree)
{
    if (!index.isValid())
        return;
    if (inTree && nodes->tag(index) == EntryTag::NW) {
        const FlagScope busy(browser->busy());
        nodes->remove(index);
        browser->selectShown();
    } else if (!inTree && list->row(index.row()).tag == EntryTag::NW) {
        list->remove({index.row()});
    }
}

} // namespace venlo
