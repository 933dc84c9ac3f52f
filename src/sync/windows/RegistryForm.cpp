#include "sync/windows/RegistryForm.h"

#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

#include "db/Database.h"
#include "db/Store.h"
#include "shared/FrontEnd.h"

namespace venlo
{

RegistryForm::~RegistryForm() = default;

void RegistryForm::fillList(const QString &sql, const QString &select)
{
    m_list->clear();
    try {
        Rows rows;
        int count = 0;
        m_database.SelectRows(sql, rows, count);
        for (int i = 0; i < count; ++i)
            m_list->addItem(rows.at(0, i).toString());
    } catch (const DbError &error) {
        tell(error.words());
    }
    if (!select.isEmpty()) {
        const auto found = m_list->findItems(select, Qt::MatchFixedString | Qt::MatchCaseSensitive);
        if (!found.isEmpty())
            m_list->setCurrentItem(found.constFirst());
    }
    setButtons();
}

void RegistryForm::picked()
{
    const QString name = selected();
    if (m_list->selectedItems().isEmpty())
        return;
    pickEntry(name);
    enableButton(Update, true);
    enableButton(Delete, true);
    setButtons();
}

void RegistryForm::startNew()
{
    // The entry is still selected while its boxes are emptied: there is nothing left to update.
    clearBoxes();
    m_list->clearSelection();
    m_list->setCurrentRow(-1);
    setButtons();
}

void RegistryForm::setButtons()
{
    enableButton(Register, !m_name->text().isEmpty());
    if (!m_list->selectedItems().isEmpty())
        enableButton(Update, !m_name->text().isEmpty());
    enableButton(New, true);
}

void RegistryForm::enableButton(Button button, bool enabled)
{
    QPushButton *widget = m_buttons.at(static_cast<size_t>(button));
    // The focus would go to the next button, and the next key press with it.
    if (!enabled && widget->hasFocus())
        m_name->setFocus();
    widget->setEnabled(enabled);
}

QString RegistryForm::selected() const
{
    const auto items = m_list->selectedItems();
    return items.isEmpty() ? QString() : items.constFirst()->text();
}

void RegistryForm::press(Button button)
{
    const bool needsEntry = button == Update || button == Delete;
    if (needsEntry && m_list->selectedItems().isEmpty()) {
        tell(nothingSelected());
        return;
    }
    switch (button) {
    case Register:
        registerEntry();
        break;
    case Update:
        updateEntry(selected());
        break;
    case Delete:
        deleteEntry(selected());
        break;
    case New:
        startNew();
        m_name->setFocus();
        break;
    case Close:
        reject();
        break;
    }
}

QString RegistryForm::doubled(const QString &value)
{
    QString text = value;
    return text.replace(QLatin1Char('\''), QLatin1String("''"));
}

QString RegistryForm::statement(const QString &sql, const QVariantList &values)
{
    QVariantList sound;
    for (const QVariant &value : values)
        sound.append(value.typeId() == QMetaType::QString ? QVariant(doubled(value.toString()))
                                                          : value);
    return filled(sql, sound);
}

std::optional<int> RegistryForm::execute(const QStringList &statements)
{
    int rows = 0;
    try {
        Transaction transaction(m_database);
        for (qsizetype i = 0; i < statements.size(); ++i) {
            const int changed = m_database.store().execJet(statements.at(i));
            rows = i == 0 ? changed : rows;
        }
        transaction.commit();
    } catch (const DbError &error) {
        tell(error.words());
        return std::nullopt;
    }
    return rows;
}

bool RegistryForm::reached(const std::optional<int> &rows, const QString &name)
{
    if (rows && *rows == 0)
        tell(name + QStringLiteral(" は登録されていません"));
    return rows.value_or(0) > 0;
}

std::optional<int> RegistryForm::count(const QString &sql, const QVariantList &values)
{
    QVariant found;
    m_database.SelectValues(statement(sql, values), {&found});
    if (found.isValid())
        return found.toInt();
    tell(m_database.lastError());
    return std::nullopt;
}

QVariantList RegistryForm::row(const QString &sql, int fields)
{
    QVariantList values;
    try {
        Rows rows;
        int count = 0;
        m_database.SelectRows(sql, rows, count);
        for (int field = 0; count > 0 && field < fields; ++field)
            values.append(rows.at(field, 0));
    } catch (const DbError &error) {
        tell(error.words());
    }
    return values;
}

bool RegistryForm::isSound(const QString &caption, const QString &name)
{
    if (name.contains(QLatin1Char('\''))) {
        tell(caption + QStringLiteral("に ' は使用できません"));
        return false;
    }
    if (!name.isEmpty() && filled(QStringLiteral("?"), {name}).isEmpty()) {
        tell(caption + QStringLiteral("に ? は使用できません"));
        return false;
    }
    return true;
}

void RegistryForm::tellDropped(const std::vector<Typed> &boxes)
{
    QStringList captions;
    for (const Typed &box : boxes) {
        if (box.text.contains(QLatin1Char('?')))
            captions.append(box.caption);
    }
    if (!captions.isEmpty())
        tell(captions.join(QStringLiteral("､")) + QStringLiteral("の ? は除いて登録しました"));
}

void RegistryForm::tell(const QString &text)
{
    m_frontEnd.message(text);
}

} // namespace venlo
