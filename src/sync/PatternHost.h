#pragma once

#include <QString>

namespace venlo
{

/// A registered pattern as it was shown.
struct ShownPattern {
    enum class State {
        Shown,      ///< connected; a folder that is missing was said
        Unknown,    ///< no such pattern
        Unusable,   ///< registered without a local folder or a site
        NoSuchSite, ///< its site is not registered
        Failed      ///< connecting failed
    };
    State state = State::Failed;
    QString localFolder;  ///< the registry's, never what a pane happens to show
    QString remoteFolder; ///< likewise
    QString site;
};

/// Shows a registered pattern: the main window in its panes, PlainPatternHost without panes.
class PatternHost
{
public:
    virtual ~PatternHost() = default;
    /// Loads the pattern and connects to its site. Messages are shown by the host.
    /// An empty name does nothing.
    [[nodiscard]] virtual ShownPattern SyncPtn(const QString &sSync) = 0;
};

} // namespace venlo
