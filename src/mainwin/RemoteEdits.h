#pragma once

#include <list>

#include <QDateTime>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

#include "mainwin/FileOpener.h"
#include "mainwin/MainRooms.h"

namespace venlo
{

/// Remote files that were opened: each is fetched into a private temporary folder of its own and
/// watched. When the copy is saved, the person is offered to upload it to where it came from.
/// Unchanged copies go with this object; a changed one that was not uploaded stays.
class RemoteEdits : public QObject
{
    Q_OBJECT

public:
    RemoteEdits(MainRooms &rooms, const FileOpener &opener, QObject *parent = nullptr);
    ~RemoteEdits() override;

    /// Fetches the file and opens it, in the text editor or with its associated program.
    void open(const QString &remoteDir, const QString &name, bool textEditor);
    /// Copies that were changed and not uploaded.
    [[nodiscard]] QStringList changedCopies() const;
    /// Looks at every copy once; the timer does so every two seconds.
    void look();

Q_SIGNALS:
    /// A changed copy went up.
    void uploaded();

private:
    /// What a file looked like at a moment; no date when it is not there.
    struct Stamp {
        QDateTime modified;
        qint64 size = -1;
        bool operator==(const Stamp &) const = default;
    };
    struct Edit {
        QString site; ///< table name of the session's site
        QString dir;
        QString name;
        QString copy;        ///< path of the copy
        Stamp whole;         ///< the copy as it is on the server
        Stamp seen;          ///< at the last look
        Stamp declined;      ///< the change the person did not want uploaded
        QString remoteState; ///< date and size that the server showed with it
    };
    [[nodiscard]] static Stamp stampOf(const QString &path);
    [[nodiscard]] QString remoteStateOf(const Edit &edit);
    [[nodiscard]] QString makeFolder() const;
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
