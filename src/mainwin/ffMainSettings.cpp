// How the main window's layout comes from the settings and goes back.
#include <algorithm>

#include <QApplication>
#include <QLayout>
#include <QScreen>
#include <QSplitter>

#include "ftppane/uFtp.h"
#include "localpane/uFile.h"
#include "mainwin/ffMain.h"

namespace venlo
{

namespace
{
constexpr int leastVisible = 48; ///< of the window that must lie on a screen to be reached

/// Gives the first of two parts that size, the second what is left of the splitter's length.
void giveFirst(QSplitter &splitter, int first, int length)
{
    splitter.setSizes({first, std::max(1, length - splitter.handleWidth() - first)});
}
} // namespace

void ffMain::loadSettings()
{
    const MainSettings values = loadMainSettings(m_rooms.settings, m_rooms.flags, m_launch);
    m_panes.ftp->setICbSvr(values.CbSvr);
    if (values.window.width() >= 1 && values.window.height() >= 1)
        placeOnAScreen(values.window);
    applyLayout(values.panes);
    m_panes.file->setRootHistory(values.rootHistory);
    m_panes.file->cOn(values.Root);
    m_panes.file->SetRr(values.ActPh, values.panes.LsCwd, values.panes.TrvHi);
}

/// The splitters get their size first: parts whose sum is not their splitter's are all scaled, and
/// the layout would creep from start to start.
void ffMain::applyLayout(const PaneLayout &layout)
{
    QWidget::layout()->activate();
    if (layout.HiFL > 0)
        giveFirst(*m_splitter, layout.HiFL, m_splitter->height());
    if (layout.WdFL > 0)
        giveFirst(*m_paneSplit, layout.WdFL, m_paneSplit->width());
    if (layout.TrHiF > 0)
        m_panes.ftp->setTrvHi(layout.TrHiF);
    m_panes.ftp->setLsClsWd(layout.LsWdF);
}

/// A window whose title bar would lie on no screen is moved into the nearest one.
void ffMain::placeOnAScreen(QRect wanted)
{
    const QPoint grip(wanted.center().x(), wanted.top() + leastVisible / 2);
    const QScreen *screen = QGuiApplication::screenAt(grip);
    if (screen == nullptr)
        screen = QGuiApplication::primaryScreen();
    const QRect area = screen->availableGeometry();
    wanted.setSize(wanted.size().boundedTo(area.size()));
    if (!area.contains(grip)) {
        wanted.moveLeft(std::clamp(wanted.left(), area.left(), area.right() - wanted.width() + 1));
        wanted.moveTop(std::clamp(wanted.top(), area.top(), area.bottom() - wanted.height() + 1));
    }
    move(wanted.topLeft());
    resize(wanted.size());
}

PaneLayout ffMain::presentLayout() const
{
    PaneLayout layout;
    layout.WdFL = m_pFile->width();
    layout.HiFL = m_pFile->height();
    QString ActPh;
    m_panes.file->GetRr(ActPh, layout.LsCwd, layout.TrvHi);
    layout.TrHiF = m_panes.ftp->TrvHi();
    layout.LsWdF = m_panes.ftp->LsClsWd();
    return layout;
}

void ffMain::saveSettings()
{
    MainSettings values;
    QString LsCwd;
    int TrvHi = 0;
    m_panes.file->GetRr(values.ActPh, LsCwd, TrvHi);
    values.Root = m_panes.file->Root();
    values.rootHistory = m_panes.file->rootHistory();
    // The size without the frame, the position with it: what resize() and move() take.
    const bool normal = !isMaximized() && !isFullScreen() && !isMinimized();
    values.window =
        normal ? QRect(pos(), size()) : QRect(normalGeometry().topLeft(), normalGeometry().size());
    values.panes = presentLayout();
    values.CbSvr = m_panes.ftp->iCbSvr();
    saveMainSettings(m_rooms.settings, m_rooms.flags, values, m_wasShown);
}

} // namespace venlo
