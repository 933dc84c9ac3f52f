#pragma once

#include <QHash>
#include <QIcon>
#include <QString>

namespace venlo
{

/// The icons of the local pane (ImgLst): one for each number of the system's icons, so that
/// everything that looks the same shares one.
class IconList
{
public:
    /// Key of a path's icon, "ICON:" and its number; the icon is added when it is new.
    [[nodiscard]] QString trIcnToPic(const QString &path);
    [[nodiscard]] QIcon icon(const QString &key) const { return m_images.value(key); }
    [[nodiscard]] qsizetype count() const { return m_images.size(); }

private:
    QHash<QString, QIcon> m_images;
    QString m_loaded = QStringLiteral("."); ///< the numbers that are in, each between "."
};

} // namespace venlo
