#pragma once

#include <string>

#include <QDir>
#include <QString>

namespace venlo
{

/// Native form with the prefix that lifts the length limit of 260 characters.
inline std::wstring longPath(const QString &path)
{
    const QString native = QDir::toNativeSeparators(QDir(path).absolutePath());
    if (native.startsWith(QLatin1String("\\\\")))
        return (QStringLiteral("\\\\?\\UNC") + native.mid(1)).toStdWString();
    return (QStringLiteral("\\\\?\\") + native).toStdWString();
}

} // namespace venlo
