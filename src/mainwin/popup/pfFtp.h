#pragma once

#include <map>

#include <QString>
#include <QStringList>
#include <QWidget>

class QAction;
class QMenu;

namespace venlo
{

class Database;

/// The right-click menus of both panes and the last pick from them. An invisible form: it stays
/// hidden as long as the main window lives.
class pfFtp : public QWidget
{
    Q_OBJECT

public:
    enum Menu { TREE = 0, FTP = 1, ELSE = 2 };

    explicit pfFtp(Database &database, QWidget *parent = nullptr);
    ~pfFtp() override;

    /// Rebuilds the submenu of the registered patterns from the database; keeps the old one when
    /// the database cannot be read.
    void SetSyncMn();
    /// Enables or disables the entry of "TREE" with the index 6.
    void bCanPast(bool enabled);
    /// Enables or disables the entries 0, 1, 3, 4, 6 and 7 of "FTP".
    void bItem(bool enabled);

    /// Index of the last pick, -1 when nothing was picked. A caller writes -1 before a menu pops
    /// up.
    [[nodiscard]] int pickIndex() const { return m_pickIndex; }
    void setPickIndex(int index) { m_pickIndex = index; }
    /// "Fold", "Ftp", "Else", or the pattern's name.
    [[nodiscard]] QString pickGroup() const { return m_pickGroup; }
    /// True when the last pick was a pattern, whatever its name.
    [[nodiscard]] bool pickedPattern() const { return m_pickedPattern; }

    /// Pops a menu up at a global position and waits until it is gone.
    void popUp(Menu menu, const QPoint &at);
    /// An entry by its index, separators included, to enable or disable it.
    [[nodiscard]] QAction *entry(Menu menu, int index) const;
    [[nodiscard]] QMenu *menu(Menu menu) const;
    [[nodiscard]] QMenu *mnSync() const { return m_sync; }

private:
    void pick(const QString &group, int index, bool pattern);
    void addSyncMenu();
    void showPatterns(const QStringList &names);

    Database &m_database;
    std::map<Menu, QMenu *> m_menus;
    QMenu *m_sync = nullptr;
    int m_pickIndex = -1;
    QString m_pickGroup;
    bool m_pickedPattern = false;
};

} // namespace venlo
