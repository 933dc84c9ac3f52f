#pragma once

#include <memory>

#include <QDialog>

namespace venlo
{

class Database;
class Session;
class WindowDesk;

/// The list of every file of the connected site at or below a remote path, from the cache of remote
/// listings, with a name filter. Lists nothing itself from the server. Remembers the path it showed
/// last as long as it lives.
class sfFlst : public QDialog
{
    Q_OBJECT

public:
    sfFlst(Database &database, Session &session, WindowDesk &desk, QWidget *parent = nullptr);
    ~sfFlst() override;

    /// Shows the list for the path, modally; an empty path is the one last shown.
    void Act(const QString &remotePath);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    struct Parts;
    void build();
    void wire();
    void centre();
    /// Fills the list for a path; an empty one is the one last shown.
    void fill(const QString &remotePath);
    void showPath();
    void tellCount(int shown, int all);
    void copyRows();

    std::unique_ptr<Parts> m_parts;
};

} // namespace venlo
