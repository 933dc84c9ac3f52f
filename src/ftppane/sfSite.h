#pragma once

#include <array>

#include "sync/windows/RegistryForm.h"

class QPushButton;

namespace venlo
{

/// The dialog in which FTP sites are registered, edited and deleted. Renaming or deleting a site is
/// carried over to the patterns that name it. The password is stored as it was typed and shown only
/// while its reveal button is down.
class sfSite : public RegistryForm
{
    Q_OBJECT

public:
    sfSite(Database &database, FrontEnd &frontEnd, QWidget *parent = nullptr);
    ~sfSite() override;

    /// Loads the list and shows the dialog modally.
    void Act();

protected:
    void pickEntry(const QString &name) override;
    void registerEntry() override;
    void updateEntry(const QString &oldName) override;
    void deleteEntry(const QString &name) override;
    void clearBoxes() override;
    [[nodiscard]] QString nothingSelected() const override;

private:
    enum Box { Name = 0, Server = 1, User = 2, Password = 3, Memo = 4 };
    void build();
    void addPassword();
    void hideSecrets();
    void fill();
    [[nodiscard]] QString text(Box box) const;
    [[nodiscard]] QVariantList values() const;
    [[nodiscard]] bool nameIsSound();
    void tellStored();

    std::array<QLineEdit *, 5> m_boxes{}; ///< txSite
    QLineEdit *m_proxy = nullptr;         ///< txPxy
    QCheckBox *m_passive = nullptr;       ///< chPsv
    QCheckBox *m_keeps = nullptr;         ///< chSvDb
    QPushButton *m_reveal = nullptr;
};

} // namespace venlo
