#pragma once

#include <QElapsedTimer>
#include <QWidget>

#include "shared/TransferMeter.h"

class QLabel;
class QProgressBar;

namespace venlo
{

/// Two progress bars, one for the file in hand and one for the whole operation, each with bytes,
/// rate and time left. It counts at once and draws only when draw() is called.
class TransferGauge : public QWidget
{
    Q_OBJECT

public:
    explicit TransferGauge(QWidget *parent = nullptr);

    /// A new operation begins; its length is unknown.
    void start();
    /// Bytes of the whole operation, -1 when unknown.
    void setTotal(qint64 bytes);
    void moved(const TransferProgress &progress);
    /// The file in hand, or one that nothing was heard of, is dealt with.
    void fileDone();
    void draw();

private:
    struct Line {
        QLabel *what;
        QLabel *pace;
        QProgressBar *bar;
    };
    [[nodiscard]] Line addLine(const QString &name, const QString &accessibleName);
    void beginFile(const TransferProgress &progress);
    void drawFile();
    void drawWhole();

    QElapsedTimer m_time;
    TransferMeter m_file;
    TransferMeter m_whole;
    TransferProgress m_progress;
    bool m_inFile = false;
    qint64 m_total = -1;
    qint64 m_bytesDone = 0; ///< of the files before the one in hand
    int m_filesDone = 0;
    Line m_fileLine;
    Line m_wholeLine;
};

} // namespace venlo
