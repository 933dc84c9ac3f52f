#pragma once

#include "platform/ShellOpen.h"

#include <QDir>
#include <QFile>
#include <QString>

namespace venlo::test
{

constexpr qint64 shortcutTargetSize = 100'000; ///< bytes; of a shortcut some hundreds

/// Three shell shortcuts in a folder: "file.lnk" to a larger file, "folder.lnk" to a folder and
/// "nothing.lnk" to what is not there. The file and the folder are made in elsewhere.
[[nodiscard]] inline bool makeShortcuts(const QString &folder, const QString &elsewhere)
{
    const QDir targets(elsewhere);
    QFile file(targets.filePath(QStringLiteral("target.bin")));
    if (!file.open(QIODevice::WriteOnly) ||
        file.write(QByteArray(shortcutTargetSize, 'x')) != shortcutTargetSize ||
        !targets.mkpath(QStringLiteral("target/inside")))
        return false;
    file.close();
    const auto make = [&](const char *name, const char *target) {
        return !writeShortcut(
                    QDir(folder).filePath(QString::fromLatin1(name)),
                    QDir::toNativeSeparators(targets.filePath(QString::fromLatin1(target))))
                    .isEmpty();
    };
    return make("file.lnk", "target.bin") && make("folder.lnk", "target") &&
           make("nothing.lnk", "missing.bin");
}

} // namespace venlo::test
