#pragma once

#include <memory>

#include <QDialog>

namespace venlo
{

class Database;
class Session;
class WindowDesk;

/// The list of every file of the connected site at or below a remote path, from the cache of remote
/// listings, with a name filter. Lists nothing itself from the server.
class sfFlst : public QDialog
{
    Q_OBJECT

public:
    sfFlst(Database &database, Session &session, WindowDesk &desk, QWidget *parent = nullptr);
    ~sfFlst() override;

    /// Shows the list for the path, modally; an empty path is the one last shown.
    void Act(const QString &remotePath);

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace venlo
