#pragma once

#include <optional>
#include <vector>

#include <QDialog>
#include <QStringList>
#include <QVariantList>

class QCheckBox;
class QGridLayout;
class QKeyEvent;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace venlo
{

class Database;
class FrontEnd;

/// What the registry dialogs of sites and of patterns have in common: the sorted list of the
/// registered names, the boxes of one row, and the five buttons. A statement the store refuses is
/// said in one message with the store's words. Text values may hold quotes, which are doubled;
/// names may not. Nothing is asked before deleting.
class RegistryForm : public QDialog
{
    Q_OBJECT

public:
    ~RegistryForm() override;

protected:
    enum Button { Register = 0, Update = 1, Delete = 2, New = 3, Close = 4 };
    /// A box whose text was typed and what it is called, to tell what the store left out of it.
    struct Typed {
        QString caption;
        QString text;
    };

    RegistryForm(Database &database, FrontEnd &frontEnd, QWidget *parent);

    void nameList(const QString &accessibleName);
    /// Adds a labelled text box below the ones before; beside stands to its right.
    QLineEdit *addBox(const QString &objectName, const QString &caption, QWidget *beside = nullptr);
    QCheckBox *addCheck(const QString &objectName, const QString &caption);
    /// Ends the form with the buttons; enableOn is the box without which there is no registering.
    void finish(QLineEdit *enableOn);

    virtual void pickEntry(const QString &name) = 0;
    virtual void registerEntry() = 0;
    virtual void updateEntry(const QString &oldName) = 0;
    virtual void deleteEntry(const QString &name) = 0;
    virtual void clearBoxes() = 0;
    /// What is said when update or delete is pressed and no entry is selected.
    [[nodiscard]] virtual QString nothingSelected() const = 0;

    /// Fills the list with the first column of a query and selects one name, nothing when empty.
    void fillList(const QString &sql, const QString &select);
    /// Empties the boxes, selects nothing.
    void startNew();
    void setButtons();
    void enableButton(Button button, bool enabled);
    [[nodiscard]] QString selected() const;

    /// Every "?" of a statement in turn replaced by a value, whose quotes are doubled and whose
    /// "?" are dropped.
    [[nodiscard]] static QString statement(const QString &sql, const QVariantList &values);
    [[nodiscard]] static QString doubled(const QString &value);
    /// Runs the statements, all or none; the rows the first one reached, nothing after the message.
    [[nodiscard]] std::optional<int> execute(const QStringList &statements);
    /// True when a statement reached rows; says that the entry is gone when it ran and did not.
    [[nodiscard]] bool reached(const std::optional<int> &rows, const QString &name);
    /// The value of a "Select Count(*)"; nothing after the message.
    [[nodiscard]] std::optional<int> count(const QString &sql, const QVariantList &values);
    /// The fields of a query's first row; empty when there is none, after a message when refused.
    [[nodiscard]] QVariantList row(const QString &sql, int fields);
    /// False, after the message, for a name that cannot be registered.
    [[nodiscard]] bool isSound(const QString &caption, const QString &name);
    /// Says which boxes hold a "?", which the store did not get.
    void tellDropped(const std::vector<Typed> &boxes);
    void tell(const QString &text);
    [[nodiscard]] Database &database() { return m_database; }

    bool eventFilter(QObject *watched, QEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void press(Button button);
    void picked();
    void watchList();
    [[nodiscard]] bool listKey(const QKeyEvent &key);
    [[nodiscard]] static bool buttonEvent(QPushButton &button, const QEvent &event);

    Database &m_database;
    FrontEnd &m_frontEnd;
    QListWidget *m_list; ///< lsSite
    QGridLayout *m_grid;
    std::vector<QPushButton *> m_buttons; ///< cmSite
    QLineEdit *m_name = nullptr;
    bool m_pickedAgain = false; ///< the mouse button went down on the selected entry
};

} // namespace venlo
