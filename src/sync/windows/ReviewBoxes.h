#pragma once

#include <QWidget>

#include "sync/SyncRow.h"

class QGridLayout;
class QHBoxLayout;

namespace venlo
{

class SyncReview;

/// The check boxes and the all-or-none buttons above the review's grid. Only tells what was
/// clicked.
class ReviewBoxes : public QWidget
{
    Q_OBJECT

public:
    explicit ReviewBoxes(const SyncReview &review, QWidget *parent = nullptr);

Q_SIGNALS:
    void chCmpClicked(int box, bool checked);
    void chDspClicked(int box, bool checked);
    void tickAllClicked(venlo::Action action, bool ticked);

private:
    void addChecks(const SyncReview &review, QGridLayout &grid);
    void addTickButtons(QHBoxLayout &row, Action action, const QString &name, const QString &word);
};

} // namespace venlo
