#pragma once

#include "ftp/DownloadJournal.h"
#include "ftp/FileStamp.h"
#include "ftp/OperationContext.h"
#include "ftp/SteadyFolder.h"

#include <QDateTime>
#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

namespace venlo
{

class TemporaryFile;

/// Downloads files and folder trees. A file takes its target's place only when it is complete and
/// flushed; whatever fails leaves the old one as it was. Owned by RemoteOperations.
class RemoteDownloads
{
public:
    RemoteDownloads(OperationContext &context, const QString &userDataFolder);

    /// Files of one remote directory into one local folder. False when the operation must end.
    [[nodiscard]] bool getFiles(const QString &dir, const QStringList &names,
                                const QString &localFolder);
    /// A folder of a remote directory into a folder of the same name below a local one.
    [[nodiscard]] bool getFolder(const QString &localParent, const QString &name,
                                 const QString &remoteParent, int depth = 0);

private:
    /// One file to fetch and what the cache knows of it.
    struct Item {
        QString dir;
        QString name;
        QString remote; ///< full path
        QString folder; ///< local, without a trailing separator
        QString target; ///< full local path
        bool cached = false;
        double day = 0;       ///< day count of the listing's wall clock
        qint64 size = 0;      ///< bytes
        FileStamp there = {}; ///< what is in the file's place
    };
    /// A file that has come, whole, and is to take its place.
    struct Arrived {
        std::shared_ptr<TemporaryFile> file;
        qint64 size = 0; ///< bytes
        QDateTime time;  ///< to be given to it, where it is valid
    };
    enum class Decision { Fetch, Skip, Cancel };

    [[nodiscard]] bool getTree(const QString &local, const QString &remote, int depth);
    using CachedFiles = QHash<QString, DirectoryCache::CachedFile>;
    /// known: rows of the directory that were read together; those of other names are asked for.
    [[nodiscard]] bool getInto(const SteadyFolder &folder, const QString &dir,
                               const QStringList &names, const CachedFiles &known);
    /// Sub-folder and file names; says what the listing did not show.
    void namesOf(const QString &local, const QString &remote, QString &folders, QString &files);
    [[nodiscard]] Item itemOf(const QString &dir, const QString &name, const QString &folder,
                              const CachedFiles &known);
    [[nodiscard]] Decision decide(const Item &item);
    [[nodiscard]] bool getFile(const SteadyFolder &folder, const Item &item);
    [[nodiscard]] Result<void> fetch(const SteadyFolder &folder, const Item &item,
                                     Arrived &arrived);
    void putInPlace(const SteadyFolder &folder, const Item &item, const Arrived &arrived);
    [[nodiscard]] Result<void> place(const SteadyFolder &folder, const Item &item,
                                     const Arrived &arrived);
    void giveUpFile(const Item &item, const Error &error);
    [[nodiscard]] Result<void> checkSize(const Item &item, const QByteArray &raw, qint64 received);
    [[nodiscard]] QDateTime timeFor(const Item &item, const QByteArray &raw);
    void giveUpFolder(const QString &local, const QString &remote, const Error &error);

    OperationContext &m_context;
    DownloadJournal m_journal;
    QDateTime m_start;
    int m_folders = 0;     ///< of the tree in hand
    int m_replaced = 0;    ///< files that took their places
    QString m_arrivedName; ///< of the last file, which may not be in its place yet
    QSet<QString> m_swept; ///< folders that hold no leftover of an earlier run any more
};

} // namespace venlo
