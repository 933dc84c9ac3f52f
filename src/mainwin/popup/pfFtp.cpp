#include "mainwin/popup/pfFtp.h"

#include <algorithm>
#include <array>
#include <limits>

#include <QAction>
#include <QMenu>
#include <QScreen>

#include "db/Database.h"

namespace venlo
{

namespace
{
constexpr int copyEntry = 6;
constexpr std::array itemEntries{0, 1, 3, 4, 6, 7};
constexpr int syncEntry = 4;
constexpr int lastIndex = std::numeric_limits<qint16>::max();

QString separator()
{
    return QStringLiteral("-");
}

QString designCaption()
{
    return QStringLiteral("?");
}

struct Group {
    pfFtp::Menu menu;
    QString name;
    QString pickText;
    QString accessibleName;
    QStringList captions;
};

Group foldGroup()
{
    return {pfFtp::TREE,
            QStringLiteral("mnFold"),
            QStringLiteral("Fold"),
            QStringLiteral("ﾏｲｺﾝﾋﾟｭｰﾀｰ側のﾒﾆｭｰ"),
            {QStringLiteral("ｴｸｽﾌﾟﾛｰﾗｰ(&X)"), QStringLiteral("開く(&O)"),
             QStringLiteral("ﾃｷｽﾄを開く(&N)"), QStringLiteral("検索(&E)"), separator(),
             QStringLiteral("切り取り(&T)"), QStringLiteral("ｺﾋﾟｰ(&C)"),
             QStringLiteral("貼り付け(&P)"), separator(), QStringLiteral("ｱｯﾌﾟﾛｰﾄﾞ(&U)"),
             QStringLiteral("同期(ﾏｲｺﾝﾋﾟｭｰﾀｰ⇒FTP)"), separator(), QStringLiteral("削除(&D)"),
             QStringLiteral("名前の変更(&M)"), separator(), QStringLiteral("新規ﾌｫﾙﾀﾞ")}};
}

Group ftpGroup()
{
    return {pfFtp::FTP,
            QStringLiteral("mnFtp"),
            QStringLiteral("Ftp"),
            QStringLiteral("FTP側のﾒﾆｭｰ"),
            {QStringLiteral("開く(&O)"), QStringLiteral("ﾃｷｽﾄを開く(&N)"), separator(),
             QStringLiteral("ﾀﾞｳﾝﾛｰﾄﾞ"), QStringLiteral("同期(FTP⇒ﾏｲｺﾝﾋﾟｭｰﾀｰ)"), separator(),
             QStringLiteral("削除"), QStringLiteral("名前の変更"), separator(),
             QStringLiteral("新規ﾌｫﾙﾀﾞ"), separator(), QStringLiteral("ﾌｧｲﾙ一覧"),
             QStringLiteral("再表示")}};
}

Group elseGroup()
{
    return {pfFtp::ELSE,
            QStringLiteral("mnElse"),
            QStringLiteral("Else"),
            QStringLiteral("接続先と同期ﾊﾟﾀｰﾝのﾒﾆｭｰ"),
            {QStringLiteral("接続先登録の編集"), separator(),
             QStringLiteral("FTP側の情報の一括更新"), separator(), QStringLiteral("同期ﾊﾟﾀｰﾝをｾｯﾄ"),
             QStringLiteral("同期ﾊﾟﾀｰﾝへ登録"), QStringLiteral("同期ﾊﾟﾀｰﾝの編集"), separator(),
             QStringLiteral("切断")}};
}

/// A name as a caption that shows it letter for letter, its middle left out when it is too long
/// for the screen.
QString literal(const QString &name, const QMenu &menu)
{
    const int room = menu.screen()->availableGeometry().width() / 2;
    QString text = menu.fontMetrics().elidedText(name, Qt::ElideMiddle, room);
    text.replace(QLatin1Char('&'), QLatin1String("&&"));
    for (const char16_t control : {u'\t', u'\r', u'\n'})
        text.replace(QChar(control), QLatin1Char(' '));
    return text;
}
} // namespace

pfFtp::pfFtp(Database &database, QWidget *parent) : QWidget(parent), m_database(database)
{
    setObjectName(QStringLiteral("pfFtp"));
    setAccessibleName(QStringLiteral("右ｸﾘｯｸのﾒﾆｭｰ"));
    hide();
    for (const Group &group : {foldGroup(), ftpGroup(), elseGroup()}) {
        auto *menu = new QMenu(this);
        menu->setObjectName(group.name);
        menu->setAccessibleName(group.accessibleName);
        for (int index = 0; index < group.captions.size(); ++index) {
            const QString &caption = group.captions.at(index);
            if (caption == separator()) {
                menu->addSeparator();
                continue;
            }
            connect(menu->addAction(caption), &QAction::triggered, this,
                    [this, text = group.pickText, index] { pick(text, index, false); });
        }
        m_menus.emplace(group.menu, menu);
    }
    addSyncMenu();
    SetSyncMn();
}

pfFtp::~pfFtp() = default;

void pfFtp::addSyncMenu()
{
    m_sync = new QMenu(m_menus.at(ELSE));
    m_sync->setObjectName(QStringLiteral("mnSync"));
    m_sync->setAccessibleName(QStringLiteral("同期ﾊﾟﾀｰﾝの一覧"));
    // One column that scrolls, however many patterns there are.
    m_sync->setStyleSheet(QStringLiteral("QMenu { menu-scrollable: 1; }"));
    entry(ELSE, syncEntry)->setMenu(m_sync);
    showPatterns({});
}

void pfFtp::SetSyncMn()
{
    QStringList names;
    try {
        Rows rows;
        int count = 0;
        m_database.SelectRows(QStringLiteral("Select sSync From msSync Order By sSync"), rows,
                              count);
        for (int row = 0; row < count; ++row)
            names.append(rows.at(0, row).toString());
    } catch (const DbError &) {
        return;
    }
    showPatterns(names);
}

void pfFtp::showPatterns(const QStringList &names)
{
    QList<QAction *> entries = m_sync->actions();
    while (entries.size() > std::max(names.size(), qsizetype(1)))
        delete entries.takeLast();
    for (int i = static_cast<int>(entries.size()); i < std::max(names.size(), qsizetype(1)); ++i) {
        QAction *made = m_sync->addAction(designCaption());
        connect(made, &QAction::triggered, this,
                [this, made, i] { pick(made->data().toString(), i, true); });
        entries.append(made);
    }
    for (qsizetype i = 0; i < names.size(); ++i) {
        entries.at(i)->setText(literal(names.at(i), *m_sync));
        entries.at(i)->setData(names.at(i));
    }
    if (names.isEmpty())
        entries.constFirst()->setText(designCaption());
    entries.constFirst()->setVisible(!names.isEmpty());
    entry(ELSE, syncEntry)->setEnabled(!names.isEmpty());
}

void pfFtp::bCanPast(bool enabled)
{
    entry(TREE, copyEntry)->setEnabled(enabled);
}

void pfFtp::bItem(bool enabled)
{
    for (const int index : itemEntries)
        entry(FTP, index)->setEnabled(enabled);
}

void pfFtp::popUp(Menu menu, const QPoint &at)
{
    m_menus.at(menu)->exec(at);
}

QAction *pfFtp::entry(Menu menu, int index) const
{
    return m_menus.at(menu)->actions().at(index);
}

QMenu *pfFtp::menu(Menu menu) const
{
    return m_menus.at(menu);
}

void pfFtp::pick(const QString &group, int index, bool pattern)
{
    m_pickGroup = group;
    m_pickIndex = std::min(index, lastIndex);
    m_pickedPattern = pattern;
}

} // namespace venlo
