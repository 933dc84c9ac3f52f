#pragma once

#include <optional>

#include <QRect>
#include <QString>

namespace venlo
{

struct Flags;
class yIni;

/// The layout values that a normal start and one from a launch record keep apart. Sizes in pixels;
/// 0 or empty where the settings hold none.
struct PaneLayout {
    int WdFL = 0; ///< width of the splitter pane "pFile"
    int HiFL = 0; ///< its height
    int TrvHi = 0;
    QString LsCwd;
    int TrHiF = 0;
    QString LsWdF;
};

/// What the main window keeps in the settings file.
struct MainSettings {
    QRect window; ///< size 0 where the settings hold none
    QString Root;
    QString ActPh;
    PaneLayout panes;
    int CbSvr = -1;
    QString rootHistory;
};

/// Window and folders that a launching program handed over.
struct LaunchLayout {
    QRect window;
    QString Root;
    QString ActPh;
};

/// The folder that stands in for one that is missing: the root of the file system.
[[nodiscard]] QString fallbackFolder();

/// Reads the group "設定". With the launch layout flag window and folders come from the launch
/// record and the layout from the keys "…_R". A folder that does not exist becomes the fallback.
[[nodiscard]] MainSettings loadMainSettings(yIni &settings, const Flags &flags,
                                            const LaunchLayout &launch);

/// Writes them back and saves the file. With the launch layout flag only the "…_R" keys and "CbSvr"
/// are written. Without a layout (a window that was never shown) only "CbSvr" is.
void saveMainSettings(yIni &settings, const Flags &flags, const MainSettings &values,
                      bool withLayout);

} // namespace venlo
