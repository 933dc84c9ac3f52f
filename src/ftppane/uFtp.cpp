#include "ftppane/uFtp.h"

#include <QHeaderView>
#include <QSplitter>

#include "ftp/Session.h"
#include "ftppane/RemoteRows.h"
#include "ftppane/SiteHeader.h"
#include "ftppane/uFtpParts.h"
#include "shared/RemotePath.h"

namespace venlo
{

namespace
{
constexpr float widest = 4000; // of a column that a settings file names
}

uFtp::uFtp(Rooms rooms, QWidget *parent)
    : QWidget(parent), m_parts(std::make_unique<Parts>(*this, rooms))
{
    fillSites();
}

uFtp::~uFtp() = default;

bool uFtp::cOn() const
{
    return m_parts->on;
}

void uFtp::cClear()
{
    m_parts->cClear();
}

void uFtp::lookAtSession()
{
    m_parts->look();
}

void uFtp::disconnectSite()
{
    m_parts->disconnectSite();
}

void uFtp::fillSites()
{
    m_parts->guarded([this] { m_parts->fillSites(); });
}

int uFtp::iCbSvr() const
{
    return m_parts->header->index();
}

void uFtp::setICbSvr(int index)
{
    m_parts->guarded([&] { m_parts->selectSite(index); });
}

void uFtp::showConnected(const QString &site)
{
    m_parts->guarded([&] {
        if (m_parts->rooms.session.state() != Session::Connected)
            return;
        m_parts->header->setIndex(m_parts->header->indexOf(site));
        m_parts->connectedSite = site;
        m_parts->readSite();
        m_parts->showSession(m_parts->rooms.session.homeDirectory());
    });
}

bool uFtp::SetSync(const QString &site, const QString &remotePath)
{
    bool reached = false;
    m_parts->settled = true;
    m_parts->guarded([&] {
        const bool same = site.compare(FsSvr(), Qt::CaseInsensitive) == 0;
        if (!same)
            m_parts->selectSite(m_parts->header->indexOf(site));
        if ((!same || !m_parts->on) && !m_parts->connectSite())
            return;
        reached = remotePath.isEmpty() || m_parts->browser->goTo(remotePath);
    });
    return reached && cOn();
}

QString uFtp::FsFllPh() const
{
    return m_parts->nodes->path(m_parts->browser->shown());
}

void uFtp::setFsFllPh(const QString &path)
{
    if (!cOn() || path.isEmpty())
        return;
    const auto slash = path.indexOf(QLatin1Char('/'));
    m_parts->guarded(
        [&] { (void)m_parts->browser->goTo(slash < 0 ? QStringLiteral("/") : path.mid(slash)); });
}

QString uFtp::remotePath() const
{
    return m_parts->browser->shownDir();
}

QString uFtp::FsSvr() const
{
    return m_parts->header->site();
}

void uFtp::ReFresh()
{
    m_parts->settled = true;
    m_parts->guarded([this] { m_parts->browser->refresh(); });
}

bool uFtp::tellsRefusals() const
{
    return m_parts->tells;
}

int uFtp::TrvHi() const
{
    return m_parts->placed ? m_parts->pTrv->height() : m_parts->treeHeight;
}

void uFtp::setTrvHi(int height)
{
    if (height <= 0)
        return;
    m_parts->treeHeight = height;
    m_parts->placeSplitter();
}

void uFtp::takeOver(const uFtp &earlier)
{
    m_parts->sort = earlier.m_parts->sort;
    if (m_parts->sort.number() != 0)
        m_parts->showSort();
}

QString uFtp::LsClsWd() const
{
    QStringList texts;
    for (int column = 0; column < RemoteColumn::shown; ++column)
        texts.append(QString::number(static_cast<float>(m_parts->listView->columnWidth(column))));
    return texts.join(QLatin1Char(','));
}

void uFtp::setLsClsWd(const QString &widths)
{
    const QStringList texts = widths.split(QLatin1Char(','));
    const auto narrowest = static_cast<float>(m_parts->listView->header()->minimumSectionSize());
    for (int column = 0; column < RemoteColumn::shown && column < texts.size(); ++column) {
        bool number = false;
        const float width = texts.at(column).trimmed().toFloat(&number);
        if (number && width > 0)
            m_parts->listView->setColumnWidth(column, qRound(qBound(narrowest, width, widest)));
    }
}

} // namespace venlo
