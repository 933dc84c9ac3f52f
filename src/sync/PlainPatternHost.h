#pragma once

#include "sync/PatternHost.h"

namespace venlo
{

class Database;
class FrontEnd;
class Session;

/// Loads a pattern where there are no panes: looks it up and connects to its site with the site's
/// own proxy and passive flag. Whether the folders are there is for the comparison to find out.
class PlainPatternHost : public PatternHost
{
public:
    PlainPatternHost(Database &database, Session &session, FrontEnd &frontEnd);
    [[nodiscard]] ShownPattern SyncPtn(const QString &sSync) override;

private:
    [[nodiscard]] ShownPattern::State connectTo(const QString &site);

    Database &m_database;
    Session &m_session;
    FrontEnd &m_frontEnd;
};

} // namespace venlo
