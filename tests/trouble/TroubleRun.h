#pragma once

#include <memory>

#include "sync/SyncWorld.h"
#include "trouble/TroubleKinds.h"

namespace venlo::test
{

/// What runs into trouble. The drags are what the panes run for drops and menus.
enum class TroubleOperation {
    Put,
    Get,
    DragUp,
    DragDown,
    Delete,
    SyncUp,
    SyncDown,
    CompareUp,
    CompareDown
};

/// Both trees.
struct BothTrees {
    TreeSnapshot local;
    TreeSnapshot remote;
};

/// One operation over a new local folder, a new user data folder and a server's "/pub", and what
/// is true of it whatever this machine does to it.
class TroubleRun
{
public:
    TroubleRun(TroubleOperation operation, Trouble trouble);
    ~TroubleRun();

    [[nodiscard]] static QByteArray nameOf(TroubleOperation operation);
    /// Where trouble comes to in this operation.
    [[nodiscard]] static TroubleSpots spotsOf(TroubleOperation operation);

    /// Both trees as they are before, and the connection where the operation needs one.
    [[nodiscard]] bool prepare();
    /// True when the operation says that all is done.
    bool act();
    /// Takes the trouble away; the trees can be looked at from here on.
    void relieve();
    /// The same operation again.
    [[nodiscard]] bool again();

    [[nodiscard]] BothTrees trees() const;
    /// What does not hold, one line each. asked: the trees of a run without trouble. victims: what
    /// the trouble may keep as it was ("" is everything, "a/" what is below a); all the rest must
    /// be as asked.
    [[nodiscard]] QStringList broken(const BothTrees &asked, const QList<QByteArray> &victims);
    [[nodiscard]] bool saidDone() const { return m_saysDone; }
    [[nodiscard]] bool told() const;
    /// For the report of a failure.
    [[nodiscard]] QString story() const;

private:
    [[nodiscard]] QString here() const { return m_maker->here(); }
    [[nodiscard]] static QByteArray longName();
    [[nodiscard]] bool up() const;
    void makeWorld();
    [[nodiscard]] bool carryOut();
    [[nodiscard]] bool getReady();
    [[nodiscard]] bool put();
    [[nodiscard]] bool get();
    [[nodiscard]] bool dragUp();
    [[nodiscard]] bool dragDown();
    [[nodiscard]] bool deleteHere();
    [[nodiscard]] bool synchronise();
    [[nodiscard]] bool compare();
    [[nodiscard]] QStringList errorLines() const;
    void checkLocal(const BothTrees &asked, const QList<QByteArray> &victims,
                    QStringList &wrong) const;
    void checkRemote(const BothTrees &asked, const QList<QByteArray> &victims, QStringList &wrong);
    void checkElsewhere(QStringList &wrong) const;
    void checkWords(const BothTrees &asked, QStringList &wrong) const;
    [[nodiscard]] bool inTheBin(const QByteArray &path) const;

    TroubleOperation m_operation;
    Trouble m_trouble;
    QTemporaryDir m_top;
    mutable ScriptedServer m_server; ///< its tree guards itself
    std::unique_ptr<SyncWorld> m_world;
    std::unique_ptr<TroubleMaker> m_maker;
    BothTrees m_before;
    TreeSnapshot m_outside;
    QStringList m_refused; ///< what windows and watchers said was left alone
    bool m_saysDone = false;
};

} // namespace venlo::test
