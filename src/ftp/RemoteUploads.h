#pragma once

#include "ftp/FileStamp.h"
#include "ftp/OperationContext.h"
#include "ftp/SteadyFolder.h"
#include "shared/NameList.h"

#include <QString>

#include <optional>
#include <vector>

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
                                const SteadyFolder &localFolder);
    /// A folder of a local folder into a folder of the same name below a remote one.
    [[nodiscard]] bool putFolder(const QString &localParent, const QString &name,
                                 const QString &remoteParent, int depth = 0);

private:
    /// One file to send.
    struct Item {
        QString path; ///< full local path
        QString dir;
        QString name;
        QString remote;      ///< full path
        bool unsure = false; ///< the cache does not show all files of its directory
        const SteadyFolder *folder = nullptr; ///< the local one, of a list
    };
    enum class Decision { Send, Skip, GivenUp, Cancel };
    /// What is known of the file in its place.
    struct Existing {
        std::optional<double> day; ///< day count of its wall clock
        qint64 size = -1;          ///< bytes
    };

    [[nodiscard]] bool putLine(const Item &item, const UploadLine &line);
    [[nodiscard]] Decision decide(const Item &item, const UploadLine &line);
    /// Of a server that tells seconds a directory may have been listed without them (STAT). True
    /// where they decide: the existing file may be the newer one of the same minute.
    [[nodiscard]] bool hidesSeconds(double day, const UploadLine &line) const;
    [[nodiscard]] Decision compare(const Item &item, const UploadLine &line,
                                   const Existing &existing);
    [[nodiscard]] Decision askPerson(const UploadLine &line, const Existing &existing);
    /// True when the directory carries the mark of a listing that is not the whole truth.
    [[nodiscard]] bool isUnsure(const QString &dir);
    /// Asks the server for a file that the cache does not show; nothing when there is none.
    [[nodiscard]] OperationContext::Attempted askServer(const Item &item,
                                                        std::optional<Existing> &existing);
    [[nodiscard]] Result<void> askOnce(const Item &item, std::optional<Existing> &existing);
    void noteUnfinished(const Item &item);
    void giveUpLine(const Item &item, const Error &error);
    /// The file as it was sent.
    [[nodiscard]] Result<FileStamp> send(const Item &item);
    [[nodiscard]] Result<FileStamp> sendOnce(const Item &item);
    /// send() as a step of several attempts; stamp is what came of the last.
    [[nodiscard]] OperationContext::Step sendStep(const Item &item, FileStamp &stamp);
    void sent(const Item &item, const FileStamp &stamp);
    void leaveOut(const Item &item);

    [[nodiscard]] bool putTree(const QString &local, const QString &remoteParent,
                               const QString &name, int depth);
    [[nodiscard]] bool makeAtOnce(const QString &local, const QString &remoteParent,
                                  const QString &name);
    enum class Folder { There, GivenUp, Stop };
    [[nodiscard]] Folder makeFolder(const QString &local, const QString &remoteParent,
                                    const QString &name);
    void folderMade(const QString &local, const QString &remoteParent, const QString &name);
    void giveUpFolder(const QString &local, const QString &remote, const Error &error);

    OperationContext &m_context;
    QString m_sentName; ///< of the last line that was sent, whose row may not be in the cache yet
};

} // namespace venlo
