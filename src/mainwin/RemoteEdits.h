#pragma once

#include <list>
#include <memory>

#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

#include "ftp/FetchFolder.h"
#include "mainwin/FileOpener.h"
#include "mainwin/MainRooms.h"

namespace venlo
{

/// Remote files that were opened: each is fetched into a private temporary folder of its own and
/// watched. When the copy is saved, the person is offered to upload it to where it came from.
/// Unchanged copies go with this object; a changed one that was not uploaded stays, and so does
/// what the person saved beside it.
class RemoteEdits : public QObject
{
    Q_OBJECT

public:
    RemoteEdits(MainRooms &rooms, const FileOpener &opener, QObject *parent = nullptr);

    /// Fetches the file and opens it, in the text editor or with its associated program.
    void open(const QString &remoteDir, const QString &name, bool textEditor);
    /// Copies that were changed and not uploaded, and what else came to lie in their folders.
    [[nodiscard]] QStringList changedCopies() const;
    /// Looks at every copy once; the timer does so every two seconds.
    void look();

Q_SIGNALS:
    /// A changed copy went up.
    void uploaded();

private:
    struct Edit {
        QString site; ///< table name of the session's site
        QString dir;
        QString name;
        QString copy;                        ///< path of the copy
        FileStamp seen;                      ///< at the last look
        FileStamp declined;                  ///< the change the person did not want uploaded
        QString remoteState;                 ///< date and size that the server showed with the copy
        std::unique_ptr<FetchFolder> folder; ///< the copy's; knows it as it is on the server
    };
    [[nodiscard]] QString remoteStateOf(const Edit &edit);
    void offer(Edit &edit);
    [[nodiscard]] bool mayReplace(const Edit &edit);
    void upload(Edit &edit);

    MainRooms &m_rooms;
    const FileOpener &m_opener;
    std::list<Edit> m_edits;
    QTimer m_timer;
    bool m_offering = false;
};

} // namespace venlo
