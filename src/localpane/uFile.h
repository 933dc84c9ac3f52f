#pragma once

#include <memory>

#include <QStringList>
#include <QWidget>

#include "views/RemoteEntries.h"

namespace venlo
{

class OperationGate;
class RemoteOperations;
class Session;
class WindowDesk;
class pfFtp;
class sfMsg;
struct Flags;

/// The local pane: a tree of folders below a root and the list of the selected folder. It keeps
/// itself current with the disk, carries out file operations, and asks its host for whatever
/// concerns the other pane. Paths have native separators and no trailing one ("/" and "C:\\"
/// excepted). Public members take no turn of the gate; what a person starts here does.
class uFile : public QWidget
{
    Q_OBJECT

public:
    struct Rooms {
        WindowDesk &desk;
        Flags &flags;
        OperationGate &gate;
        Session &session;
        RemoteOperations &operations;
        pfFtp &menus;
        sfMsg &window;
    };
    explicit uFile(Rooms rooms, QWidget *parent = nullptr);
    ~uFile() override;

    /// Opens the pane on a folder, which becomes the root of the tree. Behind a CR may follow a
    /// folder below it that is to be shown instead of the root itself.
    void cOn(const QString &folder);
    /// Restores a saved layout: walks to the folder (left out when it does not lie below the root),
    /// sets the column widths ("w0,w1,…") and the height of the tree.
    void SetRr(const QString &ActPh, const QString &LsCwd, int TrvHi);
    void GetRr(QString &ActPh, QString &LsCwd, int &TrvHi) const;
    [[nodiscard]] QString Root() const;
    /// Full path of the selected node, empty when none is.
    [[nodiscard]] QString NodePath() const;
    /// Reads the selected node and its list again.
    void ReFresh();
    /// Shows the folder of a pattern. False, after a message, when it does not exist.
    bool SetSync(const QString &folder);
    /// The folder that SetSync was last given.
    [[nodiscard]] QString syncMark() const;
    /// Key of the path's icon, "ICON:" and the icon's number.
    [[nodiscard]] QString trIcnToPic(const QString &path);
    /// The history of shown roots as one text, each with "," in front.
    [[nodiscard]] QString rootHistory() const;
    void setRootHistory(const QString &history);

    /// Takes over what the saved layout does not hold from a pane that this one replaces: root
    /// history, filter, sort and mark. To be called before the root is shown.
    void takeOver(const uFile &earlier);

Q_SIGNALS:
    void eSlcFL(bool doubleClick, const QString &path);
    void eAct(const QString &job);
    void eOpnFL(int mode, const QString &selection);
    void eBfrPut(bool &goAhead, QString &target);
    void eEndPut();
    void eMsg(const QString &text);
    /// Remote entries were dropped or pasted here: download them into the folder.
    void fetchWanted(const QList<venlo::RemoteEntry> &entries, const QString &folder);
    /// The keys of the nodes or rows ran out: the host builds the pane anew.
    void keysRanOut();

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace venlo
