#include "mainwin/MainSettings.h"

#include <utility>

#include <QDir>
#include <QFileInfo>

#include "shared/Flags.h"
#include "startup/settings/SettingsFile.h"

namespace venlo
{

namespace
{
const QString &group()
{
    static const QString name = QStringLiteral("設定");
    return name;
}

/// "Root" written by a launch-record run would replace the folders of a normal start; so would its
/// history, which therefore has no "_R" key either.
const QString &historyKey()
{
    static const QString name = QStringLiteral("RootHst");
    return name;
}

QVariant value(yIni &settings, const QString &key, const QVariant &defaultValue)
{
    const Result<QVariant> read = settings.vGtVal(key, defaultValue);
    return read ? read.value() : defaultValue;
}

int number(yIni &settings, const QString &key, int defaultValue = 0)
{
    constexpr double most = 100'000; // pixels; what lies beyond is a damaged file
    const double read = value(settings, key, defaultValue).toDouble();
    return read > -most && read < most ? static_cast<int>(read) : defaultValue;
}

QString text(yIni &settings, const QString &key)
{
    return value(settings, key, QString()).toString();
}

QString existing(const QString &folder)
{
    return QFileInfo(folder).isDir() ? folder : fallbackFolder();
}

PaneLayout loadPanes(yIni &settings, const QString &ending)
{
    PaneLayout panes;
    panes.WdFL = number(settings, QStringLiteral("WdFL") + ending);
    panes.HiFL = number(settings, QStringLiteral("HiFL") + ending);
    panes.TrvHi = number(settings, QStringLiteral("TrvHi") + ending);
    panes.LsCwd = text(settings, QStringLiteral("LsCwd") + ending);
    panes.TrHiF = number(settings, QStringLiteral("TrHiF") + ending);
    panes.LsWdF = text(settings, QStringLiteral("LsWdF") + ending);
    return panes;
}

void savePanes(yIni &settings, const PaneLayout &panes, const QString &ending)
{
    settings.SetVal(QStringLiteral("WdFL") + ending, panes.WdFL);
    settings.SetVal(QStringLiteral("HiFL") + ending, panes.HiFL);
    settings.SetVal(QStringLiteral("TrvHi") + ending, panes.TrvHi);
    settings.SetVal(QStringLiteral("LsCwd") + ending, panes.LsCwd);
    settings.SetVal(QStringLiteral("TrHiF") + ending, panes.TrHiF);
    settings.SetVal(QStringLiteral("LsWdF") + ending, panes.LsWdF);
}

void saveWindow(yIni &settings, const MainSettings &values)
{
    settings.SetVal(QStringLiteral("Left"), values.window.x());
    settings.SetVal(QStringLiteral("Top"), values.window.y());
    settings.SetVal(QStringLiteral("Width"), values.window.width());
    settings.SetVal(QStringLiteral("Height"), values.window.height());
    settings.SetVal(QStringLiteral("Root"), values.Root);
    settings.SetVal(QStringLiteral("ActPh"), values.ActPh);
    settings.SetVal(historyKey(), values.rootHistory);
    savePanes(settings, values.panes, QString());
}
} // namespace

QString fallbackFolder()
{
    return QDir::toNativeSeparators(QDir::rootPath());
}

MainSettings loadMainSettings(yIni &settings, const Flags &flags, const LaunchLayout &launch)
{
    MainSettings values;
    settings.GetGtx(group());
    if (flags.launchLayout) {
        values.window = launch.window;
        values.Root = launch.Root;
        values.ActPh = launch.ActPh;
    } else {
        values.window = QRect(
            number(settings, QStringLiteral("Left")), number(settings, QStringLiteral("Top")),
            number(settings, QStringLiteral("Width")), number(settings, QStringLiteral("Height")));
        values.Root = value(settings, QStringLiteral("Root"), fallbackFolder()).toString();
        values.ActPh = text(settings, QStringLiteral("ActPh"));
    }
    values.Root = existing(values.Root);
    values.ActPh = existing(values.ActPh);
    values.CbSvr = number(settings, QStringLiteral("CbSvr"), -1);
    values.panes = loadPanes(settings, flags.launchLayout ? QStringLiteral("_R") : QString());
    values.rootHistory = text(settings, historyKey());
    return values;
}

void saveMainSettings(yIni &settings, const Flags &flags, const MainSettings &values,
                      bool withLayout)
{
    settings.GetGtx(group());
    if (withLayout) {
        savePanes(settings, values.panes, QStringLiteral("_R"));
        if (!flags.launchLayout)
            saveWindow(settings, values);
    }
    settings.SetVal(QStringLiteral("CbSvr"), values.CbSvr);
    settings.SetGtx();
    bool saved = false;
    settings.SetTxt(saved);
}

} // namespace venlo
