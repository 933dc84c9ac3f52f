#pragma once

#include <string>

#include <QDir>
#include <QString>

namespace venlo
{

/// Native form with the prefix that lifts the length limit of 260 characters. A bare drive ("C:")
/// is its top folder, not the one that happens to be current on it; no path stays none.
inline std::wstring longPath(const QString &path)
{
    if (path.isEmpty())
        return {};
    const QString prefix = QStringLiteral("\\\\?\\");
    if (path.startsWith(prefix))
        return path.toStdWString();
    const bool bareDrive = path.size() == 2 && path.at(1) == QLatin1Char(':');
    const QString full = bareDrive ? path + QLatin1Char('/') : path;
    const QString native = QDir::toNativeSeparators(QDir(full).absolutePath());
    if (native.startsWith(QLatin1String("\\\\")))
        return (prefix + QStringLiteral("UNC") + native.mid(1)).toStdWString();
    if (native.startsWith(QLatin1Char('\\'))) // on the current drive
        return (prefix + QDir::currentPath().left(2) + native).toStdWString();
    return (prefix + native).toStdWString();
}

} // namespace venlo
