#pragma once

#include <functional>
#include <memory>

#include <QDialog>

namespace venlo
{

class Database;
class FrontEnd;

/// The dialog in which sync patterns are registered, edited and deleted. Its own "register" keeps a
/// statement that the store refuses; new patterns come from the main window.
class sfSPtn : public QDialog
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

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace venlo
