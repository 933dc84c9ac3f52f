// What a path means to the server: its normal form, and the bytes that address it.
#include "db/Recordset.h"
#include "db/Store.h"
#include "ftp/DirectoryCacheStat.h"
#include "ftp/DirectoryCacheWalk.h"
#include "ftp/ErrorLog.h"
#include "shared/RemotePath.h"

#include <algorithm>

namespace venlo
{

namespace
{
bool isAscii(const QString &text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x80; });
}
} // namespace

void DirectoryCache::sjNormDir(QString &dir) const
{
    const QString server = m_session.server();
    if (!server.isEmpty() && dir.contains(server, Qt::CaseInsensitive))
        dir = dir.mid(server.size());
    dir = normalisedRemoteDir(dir);
}

QString DirectoryCache::normalised(const QString &dir) const
{
    QString normal = dir;
    sjNormDir(normal);
    return normal;
}

bool DirectoryCache::refusesPath(const QString &dir)
{
    const QString server = m_session.server();
    // At the very front it is cut off; anywhere else the cut would leave the path of another
    // directory.
    const bool refused = !server.isEmpty() && dir.indexOf(server, 0, Qt::CaseInsensitive) > 0;
    if (refused)
        m_session.eventLog().note(QStringLiteral("refused, the path holds the server's name: ") +
                                  dir);
    return refused;
}

void DirectoryCache::noticeSite()
{
    const int lostGroups = m_database.store().lostGroups();
    if (std::exchange(m_lostGroups, lostGroups) != lostGroups)
        m_madeHere.clear(); // the rows of what came into them may be gone
    if (m_site == m_session.currentSite() && m_connects == m_session.connects())
        return;
    m_connects = m_session.connects();
    forgetPaths();
    m_offsetSamples = 0;
    m_stat->forget();
    m_site.clear();
    if (!m_session.currentSite().isEmpty())
        Walk::dropUnfinished(*this);
    m_site = m_session.currentSite();
}

std::optional<QByteArray> DirectoryCache::cachedRawName(const QString &dir, const QString &name)
{
    if (isAscii(name))
        return name.toLatin1();
    const auto table = m_database.openTable(m_session.currentSite());
    const QVariantList fields =
        table->find({QStringLiteral("raw name")}, {QStringLiteral("sDir"), QStringLiteral("sName")},
                    {normalised(dir), name});
    if (fields.isEmpty())
        return std::nullopt;
    return fields.at(0).isNull() ? name.toUtf8() : fields.at(0).toByteArray();
}

QByteArray DirectoryCache::rawName(const QString &dir, const QString &name)
{
    const auto cached = cachedRawName(dir, name);
    return cached ? *cached : m_session.client().codec().encode(name);
}

std::optional<QByteArray> DirectoryCache::knownRawPath(const QString &dir)
{
    if (isAscii(dir))
        return dir.toLatin1();
    noticeSite();
    if (const auto known = m_rawPaths.constFind(dir); known != m_rawPaths.constEnd())
        return *known;
    QString parent;
    QString leaf;
    sjSplitPath(dir, parent, leaf);
    const auto above = knownRawPath(parent);
    const auto name = cachedRawName(parent, leaf);
    if (!above || !name)
        return std::nullopt;
    const QByteArray raw = (parent == QLatin1String("/") ? QByteArray() : *above) + '/' + *name;
    m_rawPaths.insert(dir, raw);
    return raw;
}

bool DirectoryCache::knowsRawPath(const QString &dir)
{
    return knownRawPath(dir).has_value();
}

void DirectoryCache::learnRawPath(const QString &dir, const QByteArray &rawName)
{
    QString parent;
    QString leaf;
    sjSplitPath(dir, parent, leaf);
    noticeSite();
    m_rawPaths.insert(dir, (parent == QLatin1String("/") ? QByteArray() : rawPath(parent)) + '/' +
                               rawName);
}

QByteArray DirectoryCache::rawPath(const QString &dir)
{
    if (const auto known = knownRawPath(dir))
        return *known;
    QString parent;
    QString leaf;
    sjSplitPath(dir, parent, leaf);
    return (parent == QLatin1String("/") ? QByteArray() : rawPath(parent)) + '/' +
           rawName(parent, leaf);
}

void DirectoryCache::forgetPaths()
{
    m_rawPaths.clear();
    m_madeHere.clear();
}

} // namespace venlo
