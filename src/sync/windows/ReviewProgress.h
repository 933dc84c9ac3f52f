#pragma once

#include <vector>

#include <QElapsedTimer>
#include <QWidget>

#include "shared/TransferMeter.h"

class QLabel;
class QProgressBar;

namespace venlo
{

class SyncReview;

/// How far the execution of a review has come: the bar for the whole, the file in hand with its
/// bytes, rate and time left. Draws itself anew ten times a second at most.
class ReviewProgress : public QWidget
{
    Q_OBJECT

public:
    explicit ReviewProgress(QWidget *parent = nullptr);

    void start(const SyncReview &review);
    void beginRow(const SyncReview &review, int row);
    void endRow(const SyncReview &review, int row);
    void moved(const TransferProgress &progress);
    void itemDone();
    void stop();

private:
    /// What one row of its own stands for, the rows it covers included.
    struct Step {
        qint64 bytes = 0;
        int items = 0;
    };
    void show(bool atOnce);
    [[nodiscard]] QString fileText() const;
    [[nodiscard]] QString paceText() const;

    QElapsedTimer m_time;
    TransferMeter m_meter;
    std::vector<Step> m_steps;
    TransferProgress m_file;
    qint64 m_shownAt = 0;
    QLabel *m_fileLabel;
    QLabel *m_paceLabel;
    QProgressBar *m_bar;
};

} // namespace venlo
