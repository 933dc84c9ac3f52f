#pragma once

#include "db/Database.h"
#include "ftp/CurrentDirectory.h"
#include "ftp/IncompleteMarks.h"
#include "ftp/Session.h"
#include "ftp/UnfinishedUploads.h"
#include "ftp/protocol/Listing.h"

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace venlo
{

struct FileStamp;
struct Flags;

/// Reads and fills the current site's cache table, the mirror of the remote tree in the database.
/// Directories are normalised first. Every query lists a directory never seen before. What the
/// server's words cannot be relied on for is remembered as incomplete in the database.
class DirectoryCache
{
public:
    enum LoadMode { IfAbsent = 0, Replace = 1, WithSubFolders = 2 };

    DirectoryCache(Session &session, Database &database, FrontEnd &frontEnd, Flags &flags);
    ~DirectoryCache();
    DirectoryCache(const DirectoryCache &) = delete;
    DirectoryCache &operator=(const DirectoryCache &) = delete;

    void sjNormDir(QString &dir) const;
    [[nodiscard]] QString normalised(const QString &dir) const;

    /// Entries that do not fit, after the others were stored and the directory was marked.
    class Misfits : public DbError
    {
    public:
        using DbError::DbError;
    };
    /// ok stays untouched when not connected. names: sub-folder names of a mode-2 listing. Throws
    /// Misfits.
    void caLoadDir(const QString &dir, LoadMode mode, QString &names, bool &ok);
    /// Refreshes the whole subtree from the server.
    void caRefresh(const QString &dir);
    /// Called after each directory of a refresh with the number of those listed so far.
    void setRefreshReport(std::function<void(int directories)> report)
    {
        m_refreshReport = std::move(report);
    }
    [[nodiscard]] QString caSubFolds(const QString &dir);
    [[nodiscard]] QString caFileNames(const QString &dir);
    void caDirList(const QString &dir, QString &folderLines, QString &fileLines);
    void caDirNames(const QString &dir, QString &folderNames, QString &fileNames);
    [[nodiscard]] bool caHasSub(const QString &dir);
    /// The same of the first of these directories, at least one. Those never listed are listed many
    /// at a time where that is possible; nothing for one that has to be asked for alone. heard is
    /// called with how many of them the server has answered for. misfits: words about entries that
    /// do not fit, empty when all do.
    [[nodiscard]] std::vector<std::optional<bool>>
    caHasSubs(const QStringList &dirs, const std::function<void(qsizetype directories)> &heard,
              QString &misfits);
    /// sizeText ends with "|"; both stay empty when the entry is not cached.
    void caEntInfo(const QString &dir, const QString &name, bool folder, QString &dateText,
                   QString &sizeText);
    void caAddFile(const QString &localPath, const QString &dir, const QString &name);
    /// The same for a file as it was sent, whatever it has become since.
    void caAddFile(const FileStamp &sent, const QString &dir, const QString &name);
    void caAddFold(const QString &localPath, const QString &dir, const QString &name);

    /// Runs upkeep whose loss a refresh mends; several share a commit, see Store::grouped.
    void grouped(const std::function<void()> &upkeep);
    /// Cache upkeep after the server confirmed a change.
    void forgetFile(const QString &dir, const QString &name);
    void forgetFolder(const QString &dir, const QString &name);
    void renamed(const QString &dir, const QString &oldName, const QString &newName, bool folder);
    void folderMade(const QString &dir, const QString &name);
    /// The server has just made this directory: it holds nothing that would have to be listed,
    /// until othersMayWrite().
    void madeEmpty(const QString &dir);
    /// The operation that made directories is over: one without rows is listed again when it is
    /// looked into.
    void othersMayWrite() { m_madeHere.clear(); }

    using Incomplete = IncompleteMarks::Mark;
    /// Incomplete directories at or below dir.
    [[nodiscard]] std::vector<Incomplete> incompleteUnder(const QString &dir);

    /// The bytes that address an entry, as the server sent them; encoded anew when not cached.
    [[nodiscard]] QByteArray rawName(const QString &dir, const QString &name);
    /// The bytes of a whole path, component by component.
    [[nodiscard]] QByteArray rawPath(const QString &dir);
    /// False when the bytes of a path are a guess: a part of it was never listed.
    [[nodiscard]] bool knowsRawPath(const QString &dir);
    /// Takes the bytes the server shows a folder with, by which its path is addressed from now on.
    void learnRawPath(const QString &dir, const QByteArray &rawName);
    /// An entry's cached time (day count) and true size in bytes; false when not cached.
    [[nodiscard]] bool cachedFile(const QString &dir, const QString &name, double &day,
                                  qint64 &size);
    /// The same with the time refined where that is due (see refineTime).
    [[nodiscard]] bool refinedFile(const QString &dir, const QString &name, double &day,
                                   qint64 &size);
    /// What is cached of a file.
    struct CachedFile {
        double day;
        qint64 size;  ///< bytes
        bool dayOnly; ///< the time is a day's only
    };
    /// All files of a directory that are cached, by their names as the server spells them.
    [[nodiscard]] QHash<QString, CachedFile> cachedFiles(const QString &dir);
    /// True when a directory has rows, or needs none to be known.
    [[nodiscard]] bool isLoaded(const QString &dir);
    /// True when a file or folder of this name is cached.
    [[nodiscard]] bool isCached(const QString &dir, const QString &name);
    /// The names in the rows there are; nothing is listed.
    void cachedNames(const QString &dir, QString &folderNames, QString &fileNames);
    /// Takes MDTM's minute for a file whose listing shows only a day; the new day count, or
    /// nothing when the listing stands.
    [[nodiscard]] std::optional<double> refineTime(const QString &dir, const QString &name);
    /// Entries that are shown with a day only, below dir: (directory, name).
    [[nodiscard]] std::vector<std::pair<QString, QString>> dayOnlyUnder(const QString &dir);

    /// Why an operation must not touch this directory (it holds the server's text
    /// elsewhere than in front and would reach another one), empty when it may. Logs the refusal.
    [[nodiscard]] bool refusesPath(const QString &dir);

    /// Uploads into the current site that were begun and never confirmed whole; the notes of them.
    [[nodiscard]] UnfinishedUploads &unfinished() { return m_unfinished; }
    /// (directory, name) of those at or below dir.
    [[nodiscard]] std::vector<std::pair<QString, QString>> unfinishedUnder(const QString &dir);

    /// The step that makes a directory the server's current one.
    [[nodiscard]] CurrentDirectory &currentDirectory() { return m_current; }

private:
    enum class Loaded { Yes, No, NotConnected };
    [[nodiscard]] Loaded load(const QString &dir, LoadMode mode, QStringList &subFolders,
                              QString &misfits);
    class Gathering;
    class Walk;
    class LookAhead;
    class StatLister;
    struct Folder {
        QString name;
        QByteArray rawName;
    };
    /// A directory that a refresh has still to list.
    struct Pending {
        QString dir;
        QByteArray raw; ///< its path as bytes, empty when not yet known
        int depth = 0;
    };
    /// The current directory's listing; nothing, with the reason, when there is none.
    [[nodiscard]] std::optional<Listing> listed(const QString &dir, QString &why);
    void storeListing(const QString &dir, const Listing &listing, QStringList &subFolders,
                      QString &misfits);
    [[nodiscard]] QString addRows(const QString &dir, const Listing &listing,
                                  QStringList &subFolders);
    /// Marks a directory whose rows are not the whole of it, and clears the mark of one that is.
    void noteWhole(const QString &dir, const Listing &listing, const QString &misfits);
    /// Whether the rows of a directory are those that its listing would leave, to the last column.
    [[nodiscard]] bool hasRowsOf(const QString &dir, const Listing &listing);
    /// Forgets the rows of one directory, letter case ignored.
    void dropRows(const QString &dir);
    /// prefix: what the names have to follow for the server to find them.
    void learnOffset(const QString &dir, const QByteArray &prefix, const Listing &listing);
    /// Lists the uppermost of the pending, several where that is possible; the directories below
    /// come in their place.
    void listSome(std::vector<Pending> &pending);
    void listOne(const Pending &one, std::vector<Pending> &pending);
    void mark(const QString &dir, const QString &why, bool refused);
    /// Forgets the rows and marks of every directory whose path begins with prefix.
    void dropPrefix(const QString &prefix);
    /// Directories with rows whose path begins with prefix, letter case ignored.
    [[nodiscard]] QStringList directoriesFrom(const QString &prefix);
    /// False when there is certainly none.
    [[nodiscard]] bool mayHaveRowsFrom(const QString &prefix);
    [[nodiscard]] bool hasSubFolderRows(const QString &dir);
    /// The bytes of a row's name, nothing when there is no such row.
    [[nodiscard]] std::optional<QByteArray> cachedRawName(const QString &dir, const QString &name);
    [[nodiscard]] std::optional<QByteArray> knownRawPath(const QString &dir);
    /// Forgets what was learned of another site, or of this one before it was connected anew.
    void noticeSite();
    /// Forgets what is known of paths that may mean another directory from now on.
    void forgetPaths();
    [[nodiscard]] std::optional<CachedFile> fileRow(const QString &dir, const QString &name);
    /// A statement on the cache table. Values go in as they are but for their quotes, which are
    /// doubled: any name of the server works, "?" and quotes included.
    [[nodiscard]] QString statement(const QString &sql, const QVariantList &values) const;
    [[nodiscard]] bool goesIntoShape(const QVariantList &values) const;
    [[nodiscard]] QString ofSite(const QString &sql) const;
    [[nodiscard]] Rows ask(const QString &sql, const QVariantList &values);
    [[nodiscard]] bool change(const QString &sql, const QVariantList &values);
    /// Runs a change that other rows do not depend on; a failure is noted.
    void tryChange(const QString &sql, const QVariantList &values);
    [[nodiscard]] QString names(const QString &sql, const QString &dir);
    void addRow(const QDateTime &modified, qint64 size, const QString &dir, const QString &name,
                bool folder);
    /// Puts a row in the place of one of its name; a failure is noted and leaves the old row.
    [[nodiscard]] bool replaceRow(const QString &dir, const QString &name, bool folder, double day,
                                  qint64 size);
    void movePrefix(const QString &oldPath, const QString &newPath);
    void rememberRawName(const QString &dir, const QString &name, const QByteArray &bytes);

    Session &m_session;
    Database &m_database;
    FrontEnd &m_frontEnd;
    Flags &m_flags;
    CurrentDirectory m_current;
    IncompleteMarks m_marks;
    UnfinishedUploads m_unfinished;
    QString m_site;                        ///< the one the following belong to
    int m_connects = 0;                    ///< the same, see Session
    QHash<QString, QByteArray> m_rawPaths; ///< bytes of paths that are not plain ASCII; no guesses
    int m_lostGroups = 0;                  ///< of the store, up to now
    QSet<QString> m_madeHere;              ///< directories that the running operation made
    int m_offsetSamples = 0;
    std::unique_ptr<StatLister> m_stat;
    Gathering *m_gathering = nullptr; ///< the one in hand
    std::function<void(int)> m_refreshReport;
};

} // namespace venlo
