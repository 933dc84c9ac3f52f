#pragma once

#include <memory>

#include <QDialog>

namespace venlo
{

class Database;
class FrontEnd;

/// The dialog in which FTP sites are registered, edited and deleted. Renaming or deleting a site is
/// carried over to the patterns that name it.
class sfSite : public QDialog
{
    Q_OBJECT

public:
    sfSite(Database &database, FrontEnd &frontEnd, QWidget *parent = nullptr);
    ~sfSite() override;

    /// Loads the list and shows the dialog modally.
    void Act();

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace venlo
