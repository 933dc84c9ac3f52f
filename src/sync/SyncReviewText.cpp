#include "sync/FoldCase.h"
#include "sync/SyncReview.h"

namespace venlo
{

namespace
{
constexpr QLatin1Char dot('.');
}

QString SyncReview::tickedActionText(int index) const
{
    switch (plannedAction(index)) {
    case Action::Add:
        return QStringLiteral("(追加)");
    case Action::Remove:
        return QStringLiteral("(削除)");
    case Action::Overwrite:
        return QStringLiteral("(上書)");
    case Action::None:
        break;
    }
    return {};
}

QString SyncReview::actionText(int index) const
{
    const SyncRow &here = row(index);
    if (here.folder && here.owner >= 0)
        return QStringLiteral("*");
    if (!included(index) && here.owner < 0 &&
        (here.outOfScope || (here.hold == Hold::Blocked && here.action != Action::None)))
        return QStringLiteral("対象外");
    return tickedActionText(index);
}

QString SyncReview::stateText(int index) const
{
    switch (row(index).state) {
    case RowState::Done:
        return QStringLiteral("a");
    case RowState::GivenUp:
        return QStringLiteral("r");
    case RowState::Pending:
        break;
    }
    return {};
}

QString SyncReview::listText(int index) const
{
    const SyncRow &here = row(index);
    return here.folder ? here.sPh + QStringLiteral(" [ﾌｫﾙﾀﾞ]") : here.name;
}

QString SyncReview::spelled(const QString &sPh, const Spelling &spelling)
{
    if (spelling.isEmpty() || sPh == dot)
        return sPh;
    const auto known = spelling.constFind(foldCase(sPh));
    if (known != spelling.constEnd())
        return *known;
    const auto last = sPh.lastIndexOf(QLatin1Char('/'));
    return relativeFile(spelled(relativeParent(sPh), spelling), sPh.mid(last + 1));
}

QString SyncReview::localPath(int index) const
{
    const SyncRow &here = row(index);
    const QString folder = spelled(here.sPh, m_comparison.localSpelling);
    return pair().localPath(here.folder ? folder : relativeFile(folder, here.name));
}

QString SyncReview::remotePath(int index) const
{
    const SyncRow &here = row(index);
    const QString folder = spelled(here.sPh, m_remoteSpelling);
    return pair().remotePath(here.folder ? folder : relativeFile(folder, here.name));
}

QString SyncReview::localParent(int index) const
{
    const QString folder = spelled(folderPath(index), m_comparison.localSpelling);
    return pair().localPath(folder);
}

QString SyncReview::remoteParent(int index) const
{
    const SyncRow &here = row(index);
    const QString folder = spelled(here.sPh, m_remoteSpelling);
    return pair().remotePath(here.folder ? relativeParent(folder) : folder);
}

QString SyncReview::folderPath(int index) const
{
    const SyncRow &here = row(index);
    return here.folder ? relativeParent(here.sPh) : here.sPh;
}

QString SyncReview::print() const
{
    QString text;
    for (int i = 0; i < count(); ++i) {
        const SyncRow &here = row(i);
        const QString tick =
            here.box ? QString::fromLatin1(here.ticked ? "[x]" : "[ ]") : QStringLiteral("   ");
        const QString path =
            here.folder ? here.sPh + QLatin1Char('/') : relativeFile(here.sPh, here.name);
        QStringList words{tick, path, actionText(i), stateText(i), here.why};
        words.removeAll(QString());
        text += words.join(QLatin1Char(' ')) + QLatin1Char('\n');
    }
    return text;
}

} // namespace venlo
