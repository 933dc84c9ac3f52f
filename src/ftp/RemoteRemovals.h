#pragma once

#include "ftp/OperationContext.h"

#include <QString>
#include <QStringList>

namespace venlo
{

/// Deletes remote files and folders. Every step first makes sure where the server stands: a
/// relative name in the wrong directory would delete something else. Owned by RemoteOperations.
class RemoteRemovals
{
public:
    explicit RemoteRemovals(OperationContext &context);

    /// Files of one directory. False when the operation must end.
    [[nodiscard]] bool deleteFiles(const QString &dir, const QStringList &names);
    /// One file by its full path; the cache is not touched.
    [[nodiscard]] bool deletePath(const QString &path);
    /// Folders of one directory, with everything the cache lists in them.
    [[nodiscard]] bool removeFolders(const QString &dir, const QStringList &names);
    [[nodiscard]] bool removeFolder(const QString &dir, const QString &name);

private:
    [[nodiscard]] bool sjEmpDir(const QString &dir, int depth);
    void namesOf(const QString &dir, QString &folders, QString &files);
    [[nodiscard]] bool deleteEach(const QString &dir, const QStringList &names,
                                  const QString &logWords);
    [[nodiscard]] bool removeInside(const QString &dir, const QString &folder, int depth);
    [[nodiscard]] OperationContext::Attempted deleteOne(const QString &dir, const QString &name);
    [[nodiscard]] OperationContext::Attempted removeOne(const QString &dir, const QString &name);
    void removed(const QString &dir, const QString &name);

    OperationContext &m_context;
    int m_emptied = 0; ///< folders of the tree in hand
};

} // namespace venlo
