#include "localpane/uFile.h"

#include <QLineEdit>

#include "localpane/FolderPaths.h"
#include "localpane/RootBar.h"
#include "localpane/uFileParts.h"
#include "shared/WindowDesk.h"

namespace venlo
{

uFile::uFile(Rooms rooms, QWidget *parent)
    : QWidget(parent), m_parts(std::make_unique<Parts>(*this, rooms))
{
}

uFile::~uFile() = default;

void uFile::cOn(const QString &folder)
{
    m_parts->ShowRoot(folder);
}

void uFile::SetRr(const QString &ActPh, const QString &LsCwd, int TrvHi)
{
    const QString folder = tidyFolder(ActPh);
    if (!folder.isEmpty() && !isSameFolder(folder, NodePath()))
        static_cast<void>(m_parts->open(folder)); // elsewhere: the root stays shown
    m_parts->setColumnWidths(LsCwd);
    if (TrvHi > 0) {
        m_parts->treeHeight = TrvHi;
        m_parts->placeSplitter();
    }
}

void uFile::GetRr(QString &ActPh, QString &LsCwd, int &TrvHi) const
{
    ActPh = NodePath();
    LsCwd = m_parts->columnWidths();
    TrvHi = m_parts->placed ? m_parts->pTrv->height() : m_parts->treeHeight;
}

QString uFile::Root() const
{
    return m_parts->treeFill->root();
}

QString uFile::NodePath() const
{
    return m_parts->NodePath();
}

void uFile::ReFresh()
{
    m_parts->settled = true;
    m_parts->ReFresh();
}

bool uFile::SetSync(const QString &folder)
{
    m_parts->settled = true;
    m_parts->syncMark = folder;
    const QString path = tidyFolder(folder);
    if (!folderExists(path)) {
        m_parts->rooms.desk.message(folder + QStringLiteral(" が存在しません"));
        return false;
    }
    if (m_parts->open(path))
        return true;
    m_parts->ShowRoot(topOf(path) + QLatin1Char('\r') + path);
    return isSameFolder(path, NodePath());
}

QString uFile::syncMark() const
{
    return m_parts->syncMark;
}

QString uFile::trIcnToPic(const QString &path)
{
    return m_parts->ImgLst.trIcnToPic(path);
}

QString uFile::rootHistory() const
{
    return m_parts->bar->history();
}

void uFile::takeOver(const uFile &earlier)
{
    const Parts &before = *earlier.m_parts;
    setRootHistory(earlier.rootHistory());
    m_parts->syncMark = before.syncMark;
    m_parts->bar->enterFilter(before.bar->txFilter()->text());
    m_parts->sort = before.sort;
    if (before.sort.number() == 0)
        return;
    m_parts->list->sort(before.sort.column(), before.sort.order());
    m_parts->listView->showSort(before.sort.column(), before.sort.order());
}

void uFile::setRootHistory(const QString &history)
{
    m_parts->bar->setHistory(history, Root());
}

} // namespace venlo
