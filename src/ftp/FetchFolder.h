#pragma once

#include <QHash>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include "ftp/FileStamp.h"

namespace venlo
{

/// A private folder among the system's temporary ones, for files that are fetched to be opened or
/// handed to another program. Until remember() it goes with all that lies in it. From then on it is
/// a place where people work: what they changed, renamed or saved there stays, and at the end only
/// files go that are still as they were fetched, and folders that are empty then.
class FetchFolder
{
public:
    FetchFolder();
    /// A file that a program still holds open on Windows cannot be removed and stays.
    ~FetchFolder();
    Q_DISABLE_COPY_MOVE(FetchFolder)

    /// Empty when it could not be made.
    [[nodiscard]] QString path() const;
    /// What lies in it now is as it was fetched.
    void remember();
    /// A file in it is on the server as the stamp tells.
    void remember(const QString &file, const FileStamp &stamp);
    /// No date when it was not fetched.
    [[nodiscard]] FileStamp fetched(const QString &file) const;
    /// The files that the end leaves, in the system's spelling: changed since they were fetched, or
    /// not fetched at all. The folder itself when they are many. Marks of office programs that a
    /// document is open stay too, but hold no work and are not named.
    [[nodiscard]] QStringList work() const;

private:
    [[nodiscard]] bool asFetched(const QString &file) const;

    QTemporaryDir m_folder;
    QHash<QString, FileStamp> m_fetched; ///< by path
};

} // namespace venlo
