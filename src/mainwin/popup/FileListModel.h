#pragma once

#include <vector>

#include <QAbstractTableModel>

namespace venlo
{

/// The files of the file list, as data. Cells are made into text when they are asked for, so that
/// a few hundred thousand rows cost no more than their names.
class FileListModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { Directory = 0, Name = 1, Size = 2, Date = 3, Columns = 4 };
    struct File {
        QString directory;
        QString name;
        qint64 size = 0; ///< bytes
        double day = 0;  ///< the store's day count
    };

    explicit FileListModel(QObject *parent = nullptr);

    /// Shows these files, which come sorted by directory and name, and sorts them as before.
    void setFiles(std::vector<File> files);
    [[nodiscard]] const File &file(int row) const;
    /// A row as text, its cells parted by tabs.
    [[nodiscard]] QString line(int row) const;

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;
    void sort(int column, Qt::SortOrder order) override;

private:
    [[nodiscard]] std::vector<int> ordered(int column, Qt::SortOrder order);
    [[nodiscard]] QString text(const File &file, int column) const;

    std::vector<File> m_files;
    std::vector<QString> m_keys; ///< names as they sort; made when first needed
    std::vector<int> m_order;    ///< row to file
    int m_column = Directory;
    Qt::SortOrder m_sortOrder = Qt::AscendingOrder;
};

} // namespace venlo
