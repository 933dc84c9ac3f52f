#include "house/SourceTree.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>

namespace venlo::test
{

namespace
{
bool isGenerated(const QString &relative)
{
    return relative.startsWith(QLatin1String("build/")) ||
           relative.startsWith(QLatin1String(".git/")) ||
           relative.startsWith(QLatin1String(".cache/"));
}
} // namespace

QString sourceRoot()
{
    return QStringLiteral(VENLO_SOURCE_DIR);
}

QStringList sourceFiles(const QString &folder, const QStringList &patterns)
{
    const QDir root(folder);
    QStringList files;
    QDirIterator entries(folder, patterns, QDir::Files | QDir::Hidden,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QString relative = root.relativeFilePath(entries.next());
        if (!isGenerated(relative))
            files += relative;
    }
    files.sort();
    return files;
}

QString readSource(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qUtf8Printable(path));
    return QString::fromUtf8(file.readAll());
}

} // namespace venlo::test
