#pragma once

#include "ftp/OperationContext.h"
#include "shared/NameList.h"

#include <QString>

#include <vector>

class QFile;

namespace venlo
{

/// Uploads files and folder trees. What is sent is what was there before and after: a file that
/// changes meanwhile goes again. Owned by RemoteOperations.
class RemoteUploads
{
public:
    explicit RemoteUploads(OperationContext &context);

    /// One local file by its path. False when the operation must end.
    [[nodiscard]] bool putPath(const QString &dir, const QString &path);
    /// Lines of an upload list, files of one local folder.
    [[nodiscard]] bool putLines(const QString &dir, const std::vector<UploadLine> &lines,
                                const QString &localFolder);
    /// A folder of a local folder into a folder of the same name below a remote one.
    [[nodiscard]] bool putFolder(const QString &localParent, const QString &name,
                                 const QString &remoteParent, int depth = 0);

private:
    /// One file to send.
    struct Item {
        QString path; ///< full local path
        QString dir;
        QString name;
        QString remote; ///< full path
    };
    enum class Decision { Send, Skip, Cancel };

    [[nodiscard]] bool putLine(const QString &dir, const UploadLine &line, const QString &folder);
    [[nodiscard]] Decision decide(const Item &item, const UploadLine &line);
    [[nodiscard]] Decision askPerson(const UploadLine &line, const QString &existingDate,
                                     qint64 existingSize);
    [[nodiscard]] Result<void> send(const Item &item);
    [[nodiscard]] Result<bool> sendOnce(const Item &item);
    [[nodiscard]] Result<void> setTime(const Item &item, const QByteArray &raw, QFile &file);
    void sent(const Item &item);
    void leaveOut(const Item &item);

    [[nodiscard]] bool putTree(const QString &local, const QString &remoteParent,
                               const QString &name, int depth);
    enum class Folder { There, GivenUp, Stop };
    [[nodiscard]] Folder makeFolder(const QString &local, const QString &remoteParent,
                                    const QString &name);
    void giveUpFolder(const QString &local, const QString &remote, const Error &error);

    OperationContext &m_context;
};

} // namespace venlo
