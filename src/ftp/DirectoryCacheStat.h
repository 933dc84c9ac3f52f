#pragma once

#include "ftp/DirectoryCache.h"
#include "ftp/StatTrust.h"

#include <optional>
#include <vector>

namespace venlo
{

/// Lists directories by STAT, many at a time, for the gathering that the cache has in hand, once
/// that has proved to be as good as the ordinary way. Whatever STAT cannot tell it hands back, to
/// be listed one by one.
class DirectoryCache::StatLister
{
public:
    explicit StatLister(DirectoryCache &cache) : m_cache(cache), m_session(cache.m_session) {}
    StatLister(const StatLister &) = delete;
    StatLister &operator=(const StatLister &) = delete;

    [[nodiscard]] StatTrust::Trust trust() const { return m_trust.trust(); }
    /// The cache turns to another server, or to this one anew.
    void forget();
    /// Finds out at a directory that was just listed whether STAT shows the same, or has shown.
    void tryAt(const QString &dir, const Listing &ordinary);
    /// Takes as many of the pending as STAT can tell at a time; hands back those it could not.
    [[nodiscard]] std::vector<Pending> list(std::vector<Pending> &pending);

private:
    /// Takes from the pending what STAT can be asked for at a time; others come to left.
    [[nodiscard]] std::vector<Pending> askable(std::vector<Pending> &pending,
                                               std::vector<Pending> &left);
    /// Fewer than were asked for where they are large, none after an error.
    [[nodiscard]] std::vector<std::optional<Listing>> ask(const std::vector<Pending> &asked);
    /// A lost connection may be the server's answer to what STAT asks of it.
    void noteError(const Error &error);
    /// What to go on with below.
    [[nodiscard]] std::vector<Pending> takeIn(const Pending &one, Listing listing);
    /// Lists the largest of them in the ordinary way, too, if nothing as large has been compared;
    /// below: what to go on with.
    void proveSize(std::vector<Pending> &asked, std::vector<std::optional<Listing>> &shown,
                   std::vector<Pending> &below);
    /// Drops listings whose times cannot be told in UTC.
    void proveClock(const std::vector<Pending> &asked, std::vector<std::optional<Listing>> &shown);
    /// False when the server's clock cannot be relied on. entry: with its path for a raw name.
    [[nodiscard]] bool sampleClock(const ListedEntry &entry);

    DirectoryCache &m_cache;
    Session &m_session;
    StatTrust m_trust;
    int m_losses = 0;
    const Listing *m_toProve = nullptr; ///< what STAT showed of the directory that is listed now
};

} // namespace venlo
