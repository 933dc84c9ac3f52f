#include "sync/windows/ReviewBoxes.h"

#include <array>

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

#include "sync/SyncReview.h"

namespace venlo
{

ReviewBoxes::ReviewBoxes(const SyncReview &review, QWidget *parent) : QWidget(parent)
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *grid = new QGridLayout;
    grid->setVerticalSpacing(0);
    layout->addLayout(grid);
    addChecks(review, *grid);
    auto *row = new QHBoxLayout;
    layout->addLayout(row);
    addTickButtons(*row, Action::Add, QStringLiteral("Add"), QStringLiteral("追加"));
    row->addSpacing(fontMetrics().height());
    addTickButtons(*row, Action::Remove, QStringLiteral("Remove"), QStringLiteral("削除"));
    row->addSpacing(fontMetrics().height());
    addTickButtons(*row, Action::Overwrite, QStringLiteral("Overwrite"), QStringLiteral("上書"));
    row->addStretch();
}

void ReviewBoxes::addChecks(const SyncReview &review, QGridLayout &grid)
{
    const auto add = [&](int column, const QString &name, int box, const QString &text,
                         bool checked) {
        auto *check = new QCheckBox(text, this);
        check->setObjectName(name + QString::number(box));
        check->setAccessibleName(text);
        check->setChecked(checked);
        grid.addWidget(check, box, column);
        return check;
    };
    const std::array cmp{QStringLiteral("日付･ｻｲｽﾞに関係なくすべて上書する"),
                         QStringLiteral("第一階層のﾌｫﾙﾀﾞの追加･削除は対象外にする")};
    const std::array dsp{QStringLiteral("追加･削除するﾌｫﾙﾀﾞの中のﾌｫﾙﾀﾞを表示する"),
                         QStringLiteral("追加･削除するﾌｫﾙﾀﾞの中のﾌｧｲﾙを表示する")};
    for (int box = 0; box < 2; ++box) {
        const auto *check = add(0, QStringLiteral("chCmp"), box, cmp.at(static_cast<size_t>(box)),
                                review.chCmp(box));
        connect(check, &QCheckBox::clicked, this,
                [this, box](bool checked) { Q_EMIT chCmpClicked(box, checked); });
    }
    for (int box = 0; box < 2; ++box) {
        const auto *check = add(1, QStringLiteral("chDsp"), box, dsp.at(static_cast<size_t>(box)),
                                review.chDsp(box));
        connect(check, &QCheckBox::clicked, this,
                [this, box](bool checked) { Q_EMIT chDspClicked(box, checked); });
    }
}

void ReviewBoxes::addTickButtons(QHBoxLayout &row, Action action, const QString &name,
                                 const QString &word)
{
    row.addWidget(new QLabel(word + QLatin1Char(':'), this));
    for (const bool ticked : {true, false}) {
        const QString caption =
            ticked ? QStringLiteral("すべて選択") : QStringLiteral("すべて解除");
        auto *button = new QPushButton(caption, this);
        button->setObjectName(QStringLiteral("cm%1%2").arg(name, ticked ? QStringLiteral("All")
                                                                        : QStringLiteral("None")));
        button->setAccessibleName(word + QStringLiteral("を") + caption);
        button->setToolTip(button->accessibleName());
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this,
                [this, action, ticked] { Q_EMIT tickAllClicked(action, ticked); });
        row.addWidget(button);
    }
}

} // namespace venlo
