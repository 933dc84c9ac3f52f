#pragma once

#include <optional>

#include <QString>
#include <QStringList>
#include <QVariant>

#include "mainwin/MainPanes.h"
#include "mainwin/MainRooms.h"
#include "sync/PatternHost.h"

class QWidget;

namespace venlo
{

/// What the main window does with registered patterns: shows one in both panes, registers the shown
/// pair, opens the pattern dialog.
class PatternDesk : public PatternHost
{
public:
    PatternDesk(MainRooms &rooms, MainPanes &panes, QWidget &window);

    /// In an unattended run, where nobody looks, it only connects, as without a window: filling the
    /// panes would list what the comparison lists anyway.
    [[nodiscard]] ShownPattern SyncPtn(const QString &sSync) override;

    /// Registers the pair and opens the pattern dialog on it ("登録").
    void registerShown();
    /// The pattern dialog with that pattern selected ("編集": none).
    void edit(const QString &sSync);

private:
    [[nodiscard]] ShownPattern lookUp(const QString &sSync);
    [[nodiscard]] bool siteExists(const QString &site);
    /// The name under which the pair is registered now, nothing when it was not.
    [[nodiscard]] std::optional<QString> registerPair(const QString &sLph, const QString &sName,
                                                      const QString &sFph);
    [[nodiscard]] QString askName(const QString &proposed);
    [[nodiscard]] bool insert(const QString &sSync, const QString &sLph, const QString &sName,
                              const QString &sFph);
    [[nodiscard]] QVariant first(const QString &sql, const QStringList &values);

    MainRooms &m_rooms;
    MainPanes &m_panes;
    QWidget &m_window;
};

} // namespace venlo
