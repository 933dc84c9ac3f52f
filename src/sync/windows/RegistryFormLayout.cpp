// How the registry dialogs are built.
#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QShowEvent>
#include <QVBoxLayout>

#include "sync/windows/RegistryForm.h"

namespace venlo
{

namespace
{
constexpr int designedWidth = 680;
constexpr int designedHeight = 380;
constexpr int listWidth = 200;
constexpr int labelColumn = 0;
constexpr int boxColumn = 1;
constexpr int besideColumn = 2;
} // namespace

RegistryForm::RegistryForm(Database &database, FrontEnd &frontEnd, QWidget *parent)
    : QDialog(parent), m_database(database), m_frontEnd(frontEnd), m_list(new QListWidget(this)),
      m_grid(new QGridLayout)
{
    setModal(true);
    setSizeGripEnabled(true);
    m_list->setObjectName(QStringLiteral("lsSite"));
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    m_list->setMinimumWidth(listWidth);
    m_list->setTextElideMode(Qt::ElideMiddle);
    watchList();
    m_grid->setColumnStretch(boxColumn, 1);
    auto *layout = new QVBoxLayout(this);
    auto *upper = new QHBoxLayout;
    upper->addWidget(m_list, 1);
    upper->addLayout(m_grid, 2);
    layout->addLayout(upper, 1);
    resize(designedWidth, designedHeight);
}

void RegistryForm::nameList(const QString &accessibleName)
{
    m_list->setAccessibleName(accessibleName);
}

QLineEdit *RegistryForm::addBox(const QString &objectName, const QString &caption, QWidget *beside)
{
    auto *box = new QLineEdit(this);
    box->setObjectName(objectName);
    box->setAccessibleName(caption);
    auto *label = new QLabel(caption, this);
    label->setBuddy(box);
    const int row = m_grid->rowCount();
    m_grid->addWidget(label, row, labelColumn);
    m_grid->addWidget(box, row, boxColumn, 1, beside == nullptr ? 2 : 1);
    if (beside != nullptr) {
        m_grid->addWidget(beside, row, besideColumn);
        setTabOrder(box, beside);
    }
    connect(box, &QLineEdit::textChanged, this, [this] {
        if (m_name != nullptr)
            setButtons();
    });
    return box;
}

QCheckBox *RegistryForm::addCheck(const QString &objectName, const QString &caption)
{
    auto *check = new QCheckBox(caption, this);
    check->setObjectName(objectName);
    check->setAccessibleName(caption);
    m_grid->addWidget(check, m_grid->rowCount(), boxColumn, 1, 2);
    connect(check, &QCheckBox::toggled, this, [this] { setButtons(); });
    return check;
}

void RegistryForm::finish(QLineEdit *enableOn)
{
    m_name = enableOn;
    m_grid->setRowStretch(m_grid->rowCount(), 1);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    const QStringList captions{QStringLiteral("登録"), QStringLiteral("更新"),
                               QStringLiteral("削除"), QStringLiteral("新規"),
                               QStringLiteral("閉じる")};
    for (int i = 0; i < captions.size(); ++i) {
        auto *button = new QPushButton(captions.at(i), this);
        button->setObjectName(QStringLiteral("cmSite") + QString::number(i));
        button->setAccessibleName(captions.at(i));
        // Enter in a box must neither delete nor close.
        button->setAutoDefault(false);
        button->installEventFilter(this);
        const auto which = static_cast<Button>(i);
        connect(button, &QPushButton::clicked, this, [this, which] { press(which); });
        if (which == Close)
            buttons->addSpacing(fontMetrics().height());
        buttons->addWidget(button);
        m_buttons.push_back(button);
    }
    static_cast<QVBoxLayout *>(layout())->addLayout(buttons);
    enableButton(Update, false);
    enableButton(Delete, false);
    setButtons();
}

void RegistryForm::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (event->spontaneous())
        return;
    if (m_list->selectedItems().isEmpty())
        m_name->setFocus();
    else
        m_list->setFocus();
}

} // namespace venlo
