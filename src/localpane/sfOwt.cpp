#include "localpane/sfOwt.h"

#include <array>

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

#include "shared/PlainToolTip.h"

namespace venlo
{

namespace
{
constexpr int labels = 7;
constexpr int buttons = 5;
constexpr int widestInCharacters = 80;

struct Button {
    QString caption;
    QString toolTip;
    OverwriteAnswer answer;
};

std::array<Button, buttons> buttonTable()
{
    return {{
        {QStringLiteral("はい(&Y)"), QStringLiteral("上書きします"), {OverwriteMode::Ask, true}},
        {QStringLiteral("いいえ(&N)"),
         QStringLiteral("上書きしません"),
         {OverwriteMode::Ask, false}},
        {QStringLiteral("すべてはい"),
         QStringLiteral("これ以降､現在のﾌｧｲﾙの方が新しくても上書きする"),
         {OverwriteMode::OverwriteAll, true}},
        {QStringLiteral("すべていいえ"),
         QStringLiteral("これ以降､現在のﾌｧｲﾙの方が新しい場合､上書きしない"),
         {OverwriteMode::KeepNewer, false}},
        {QStringLiteral("ｷｬﾝｾﾙ"), QStringLiteral("ｷｬﾝｾﾙします"), {OverwriteMode::CancelAll, false}},
    }};
}

constexpr int cancelButton = buttons - 1;
} // namespace

sfOwt::sfOwt(QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("sfOwt"));
    setWindowTitle(QStringLiteral("ﾌｧｲﾙの上書きの確認"));
    setAccessibleName(windowTitle());
    auto *layout = new QVBoxLayout(this);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    addLabels(*layout);
    addButtons(*layout);
}

void sfOwt::addLabels(QVBoxLayout &layout)
{
    const int line = fontMetrics().height();
    for (int i = 0; i < labels; ++i) {
        auto *label = new QLabel(this);
        label->setObjectName(QStringLiteral("lbMsg%1").arg(i));
        label->setTextFormat(Qt::PlainText);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        if (i == 1 || i == 4)
            layout.addSpacing(line / 2);
        const bool detail = i == 2 || i == 3 || i > 4;
        label->setIndent(detail ? 2 * line : 0);
        layout.addWidget(label);
    }
    lbMsg(0)->setWordWrap(true);
    lbMsg(0)->setMinimumWidth(widestInCharacters / 2 * fontMetrics().averageCharWidth());
    layout.addSpacing(line);
}

void sfOwt::addButtons(QVBoxLayout &layout)
{
    auto *row = new QHBoxLayout;
    row->addStretch();
    const auto table = buttonTable();
    for (int i = 0; i < buttons; ++i) {
        const Button &one = table.at(static_cast<size_t>(i));
        auto *button = new QPushButton(one.caption, this);
        button->setObjectName(QStringLiteral("cmAns%1").arg(i));
        button->setToolTip(one.toolTip);
        button->setAccessibleDescription(one.toolTip);
        connect(button, &QPushButton::clicked, this, [this, i] { choose(i); });
        row->addWidget(button);
        if (i == 0) {
            button->setDefault(true);
            button->setFocus();
        }
    }
    layout.addLayout(row);
}

QLabel *sfOwt::lbMsg(int index) const
{
    return findChild<QLabel *>(QStringLiteral("lbMsg%1").arg(index));
}

OverwriteAnswer sfOwt::cMsg(const OverwriteQuestion &question)
{
    showTexts(question);
    adjustSize();
    const QScreen *onto = parentWidget() != nullptr ? parentWidget()->screen() : screen();
    move(onto->availableGeometry().center() - rect().center());
    choose(cancelButton);
    exec();
    return m_answer;
}

void sfOwt::showTexts(const OverwriteQuestion &question)
{
    const auto exists = [](const QString &name) {
        return QStringLiteral("このﾌｫﾙﾀﾞには既に '") + name + QStringLiteral("' ﾌｧｲﾙが存在します｡");
    };
    const QString changed = QStringLiteral("更新日時 ");
    const std::array<QString, labels> texts{exists(question.fileName),
                                            QStringLiteral("現在のﾌｧｲﾙ"),
                                            question.existingSize,
                                            changed + question.existingDate,
                                            QStringLiteral("に次の新しいﾌｧｲﾙを上書きしますか ?"),
                                            question.newSize,
                                            changed + question.newDate};
    for (int i = 0; i < labels; ++i)
        lbMsg(i)->setText(texts.at(static_cast<size_t>(i)));
    setPlainToolTip(*lbMsg(0), QString());
    // A name without a place to break at would push the window off the screen.
    const int widest = widestInCharacters * fontMetrics().averageCharWidth();
    if (lbMsg(0)->minimumSizeHint().width() > widest) {
        setPlainToolTip(*lbMsg(0), question.fileName);
        lbMsg(0)->setText(
            exists(fontMetrics().elidedText(question.fileName, Qt::ElideMiddle, widest * 3 / 4)));
    }
}

void sfOwt::choose(int button)
{
    m_answer = buttonTable().at(static_cast<size_t>(button)).answer;
    hide();
}

void sfOwt::reject()
{
    choose(cancelButton);
}

} // namespace venlo
