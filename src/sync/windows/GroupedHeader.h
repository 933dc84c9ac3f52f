#pragma once

#include <QHeaderView>

namespace venlo
{

/// A heading line with a second line above it: neighbouring columns that have the same group text
/// stand under one common heading. Columns are not movable.
class GroupedHeader : public QHeaderView
{
    Q_OBJECT

public:
    explicit GroupedHeader(int groupRole, QWidget *parent = nullptr);

protected:
    [[nodiscard]] QSize sectionSizeFromContents(int section) const override;
    void paintSection(QPainter *painter, const QRect &rect, int section) const override;

private:
    [[nodiscard]] QString group(int section) const;
    [[nodiscard]] QRect groupRect(int section) const;

    int m_groupRole;
};

} // namespace venlo
