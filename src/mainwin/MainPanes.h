#pragma once

namespace venlo
{

class pfFtp;
class sfMsg;
class uFile;
class uFtp;

/// The parts of the main window that its workers speak to. The panes may be built anew, so they are
/// reached through here each time. Owned by their Qt parent.
struct MainPanes {
    uFile *file = nullptr;
    uFtp *ftp = nullptr;
    pfFtp *menus = nullptr;
    sfMsg *window = nullptr;
};

} // namespace venlo
