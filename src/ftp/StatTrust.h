#pragma once

#include "ftp/protocol/Listing.h"

#include <QDateTime>

#include <optional>
#include <vector>

namespace venlo
{

/// What makes STAT as good as a server's ordinary listing: both have shown the same of a directory,
/// and, where the ordinary one (MLSD) tells UTC and STAT only the server's wall clock, that clock
/// is known to keep one distance from UTC over the times in question. Learned anew at each site.
class StatTrust
{
public:
    enum class Trust { Unknown, Yes, No };

    [[nodiscard]] Trust trust() const { return m_trust; }
    void giveUp() { m_trust = Trust::No; }
    /// Holds what STAT shows of a directory against its ordinary listing; nothing: it shows none.
    /// A directory without entries proves nothing; one shown otherwise ends the trust.
    void compare(const Listing &ordinary, const std::optional<Listing> &byStat);
    /// Entries of the largest listing that was the same both ways: servers cut longer ones.
    [[nodiscard]] size_t proven() const { return m_proven; }
    /// False where only the ordinary way can tell. mlsd: it would be MLSD, which leaves names that
    /// begin with "." out, knows the second of old entries too and has its own idea of links.
    [[nodiscard]] bool canBeOrdinary(const Listing &byStat, bool mlsd) const;
    /// The directory as the ordinary way shows it; nothing where it cannot be or is not proven.
    [[nodiscard]] std::optional<Listing> asOrdinary(Listing byStat, bool mlsd) const;

    /// Of these entries (with the server's wall clock) those whose distance from UTC has to be
    /// asked for, so that all are covered: no zone changes its clock twice between two that follow.
    [[nodiscard]] static std::vector<ListedEntry> samples(std::vector<ListedEntry> entries);
    void addSample(const QDateTime &wallClock);
    /// Whether a time lies between samples that are close enough.
    [[nodiscard]] bool covers(const QDateTime &wallClock) const;

private:
    enum class Dots { Unknown, Shown, Hidden };

    Trust m_trust = Trust::Unknown;
    Dots m_dots = Dots::Unknown; ///< names that begin with "." in an ordinary listing
    int m_failures = 0;
    size_t m_proven = 0;
    std::vector<QDateTime> m_samples; ///< sorted; all at one distance from UTC
};

} // namespace venlo
