#include "ftp/FetchFolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace venlo
{

namespace
{
constexpr int namesShown = 5;

struct Tree {
    QStringList files;   ///< links themselves, not what they point to
    QStringList folders; ///< the deepest first, the top last
};

void gather(const QString &folder, Tree &tree)
{
    const QFileInfoList entries = QDir(folder).entryInfoList(QDir::AllEntries | QDir::Hidden |
                                                             QDir::System | QDir::NoDotAndDotDot);
    for (const QFileInfo &entry : entries) {
        if (entry.isDir() && !entry.isSymLink() && !entry.isJunction())
            gather(entry.filePath(), tree);
        else
            tree.files += entry.filePath();
    }
    tree.folders += folder;
}

Tree treeOf(const QString &folder)
{
    Tree tree;
    gather(folder, tree);
    return tree;
}

bool marksAnOpenDocument(const QString &path)
{
    const QString name = QFileInfo(path).fileName();
    return name.startsWith(QLatin1String("~$")) ||
           (name.startsWith(QLatin1String(".~lock.")) && name.endsWith(QLatin1Char('#')));
}
} // namespace

FetchFolder::FetchFolder() : m_folder(QDir::temp().filePath(QStringLiteral("VenloFtp-XXXXXX"))) {}

FetchFolder::~FetchFolder()
{
    if (!m_folder.isValid() || m_folder.autoRemove())
        return;
    const Tree tree = treeOf(m_folder.path());
    for (const QString &file : tree.files) {
        if (asFetched(file))
            (void)QFile::remove(file);
    }
    for (const QString &folder : tree.folders)
        (void)QDir().rmdir(folder); // refused while something lies in it
}

QString FetchFolder::path() const
{
    return m_folder.isValid() ? m_folder.path() : QString();
}

void FetchFolder::remember()
{
    if (!m_folder.isValid())
        return;
    m_folder.setAutoRemove(false);
    const Tree tree = treeOf(m_folder.path());
    for (const QString &file : tree.files)
        m_fetched.insert(file, FileStamp(file));
}

void FetchFolder::remember(const QString &file, const FileStamp &stamp)
{
    m_fetched.insert(file, stamp);
}

FileStamp FetchFolder::fetched(const QString &file) const
{
    return m_fetched.value(file);
}

bool FetchFolder::asFetched(const QString &file) const
{
    return m_fetched.contains(file) && fetched(file) == FileStamp(file);
}

QStringList FetchFolder::work() const
{
    QStringList work;
    const Tree tree = m_folder.isValid() ? treeOf(m_folder.path()) : Tree{};
    for (const QString &file : tree.files) {
        if (!asFetched(file) && !marksAnOpenDocument(file))
            work += QDir::toNativeSeparators(file);
    }
    return work.size() > namesShown ? QStringList{QDir::toNativeSeparators(m_folder.path())} : work;
}

} // namespace venlo
