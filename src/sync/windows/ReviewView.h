#pragma once

#include <QTableView>

namespace venlo
{

class SyncReviewModel;

/// The grid of the review: headings in two lines, sorting by a click on one (a third click gives
/// the review's own order back), ticking by mouse and with Space. Decides nothing itself.
class ReviewView : public QTableView
{
    Q_OBJECT

public:
    explicit ReviewView(QWidget *parent = nullptr);
    void showReview(SyncReviewModel &model);

    /// Turns over the ticks of the selected rows, all to what the first of them becomes.
    void toggleSelected();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void setColumnWidths();

    SyncReviewModel *m_model = nullptr;
};

} // namespace venlo
