#include "ftp/LocalPath.h"

#include <QDir>

#include "platform/EntryLook.h"

namespace venlo
{

namespace
{
bool isSeparator(QChar c)
{
    return c == QLatin1Char('/') || c == QDir::separator();
}
} // namespace

QString withoutTrailingSeparator(const QString &folder)
{
    return !folder.isEmpty() && isSeparator(folder.back()) ? folder.chopped(1) : folder;
}

QString localChild(const QString &folder, const QString &name)
{
    return withoutTrailingSeparator(folder) + QDir::separator() + name;
}

bool isLink(const QString &path)
{
    const EntryLook info(path);
    return info.isSymbolicLink() || info.isJunction();
}

QString localName(const QString &path)
{
    qsizetype from = path.size();
    while (from > 0 && !isSeparator(path.at(from - 1)))
        --from;
    return path.mid(from);
}

Result<bool> sjLocFold(const QString &folder)
{
    if (folder.isEmpty() || EntryLook(folder).isDir())
        return false;
    if (QDir().mkpath(folder))
        return true;
    const QString why = EntryLook(folder).exists() ? QStringLiteral("同じ名前のﾌｧｲﾙがあります")
                                                   : QStringLiteral("ﾌｫﾙﾀﾞを作成できません");
    return Error{ErrorClass::Local, why, 0};
}

} // namespace venlo
