#pragma once

#include <array>
#include <functional>

#include "sync/windows/RegistryForm.h"

class QStringListModel;

namespace venlo
{

/// The dialog in which sync patterns are registered, edited and deleted. Its own "register" keeps a
/// statement that the store refuses; new patterns come from the main window.
class sfSPtn : public RegistryForm
{
    Q_OBJECT

public:
    /// shownFolder: the folder that the local pane shows.
    sfSPtn(Database &database, FrontEnd &frontEnd, std::function<QString()> shownFolder,
           QWidget *parent = nullptr);
    ~sfSPtn() override;

    /// Shows the dialog modally with that pattern selected (none when empty); changed is true when
    /// a statement changed the registry.
    void Act(bool &changed, const QString &sSync);

protected:
    void pickEntry(const QString &name) override;
    void registerEntry() override;
    void updateEntry(const QString &oldName) override;
    void deleteEntry(const QString &name) override;
    void clearBoxes() override;
    [[nodiscard]] QString nothingSelected() const override;

private:
    enum Box { Name = 0, LocalPath = 1, Site = 2, RemotePath = 3, Memo = 4 };
    void build();
    void fill(const QString &select);
    void fillSites();
    void normalisePaths();
    [[nodiscard]] QString text(Box box) const;
    [[nodiscard]] QVariantList values() const;
    [[nodiscard]] bool namesAreSound();
    [[nodiscard]] bool isFree();
    void tellStored();

    std::function<QString()> m_shownFolder;
    std::array<QLineEdit *, 5> m_boxes{};  ///< txSite
    std::array<QCheckBox *, 2> m_checks{}; ///< chCmp
    QStringListModel *m_sites;
    bool m_changed = false;
};

} // namespace venlo
