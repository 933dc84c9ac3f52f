#include "sync/windows/sfSPtn.h"

#include <utility>

#include <QCheckBox>
#include <QCompleter>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QStringListModel>

#include "db/Database.h"
#include "shared/RemotePath.h"

namespace venlo
{

namespace
{
constexpr std::array captions{"登録名", "ﾏｲｺﾝﾋﾟｭｰﾀｰ側", "接続先名", "FTP側", "ﾒﾓ"};

QString caption(int box)
{
    return QString::fromUtf8(captions.at(static_cast<size_t>(box)));
}

/// As the local pane writes folders: native separators, none at the end but a root's own, which a
/// bare drive gets.
QString tidyLocalPath(const QString &typed)
{
    QString path = QDir::toNativeSeparators(typed);
    const QChar separator = QDir::separator();
    if (separator == u'\\' && path.size() == 2 && path.at(1) == u':')
        path += separator;
    while (path.size() > 1 && path.endsWith(separator) && path.at(path.size() - 2) != u':')
        path.chop(1);
    return path;
}

QString tidyRemotePath(const QString &typed)
{
    QString path = typed;
    while (path.endsWith(QLatin1String("//")))
        path.chop(1);
    return path.isEmpty() ? path : normalisedRemoteDir(path);
}

/// A tick as the store's yes.
int yesNo(const QCheckBox *check)
{
    return check->isChecked() ? -1 : 0;
}
} // namespace

sfSPtn::sfSPtn(Database &database, FrontEnd &frontEnd, std::function<QString()> shownFolder,
               QWidget *parent)
    : RegistryForm(database, frontEnd, parent), m_shownFolder(std::move(shownFolder)),
      m_sites(new QStringListModel(this))
{
    build();
}

sfSPtn::~sfSPtn() = default;

void sfSPtn::build()
{
    setObjectName(QStringLiteral("sfSPtn"));
    setWindowTitle(QStringLiteral("同期ﾊﾟﾀｰﾝの編集 - Venlo FTP"));
    setAccessibleName(QStringLiteral("同期ﾊﾟﾀｰﾝの編集"));
    nameList(QStringLiteral("登録済みの同期ﾊﾟﾀｰﾝ"));
    auto *shown = new QPushButton(QStringLiteral("表示中のﾌｫﾙﾀﾞ"), this);
    shown->setObjectName(QStringLiteral("cmPh"));
    shown->setAccessibleName(QStringLiteral("ﾏｲｺﾝﾋﾟｭｰﾀｰ側に表示中のﾌｫﾙﾀﾞを入れる"));
    shown->setToolTip(shown->accessibleName());
    shown->setAutoDefault(false);
    shown->installEventFilter(this);
    for (int box = Name; box < Memo; ++box)
        m_boxes[static_cast<size_t>(box)] = addBox(
            QStringLiteral("txSite%1").arg(box), caption(box), box == LocalPath ? shown : nullptr);
    m_checks = {
        addCheck(QStringLiteral("chCmp0"), QStringLiteral("日付･ｻｲｽﾞに関係なくすべて上書する")),
        addCheck(QStringLiteral("chCmp1"),
                 QStringLiteral("第一階層のﾌｫﾙﾀﾞの追加･削除は対象外にする"))};
    m_boxes[Memo] = addBox(QStringLiteral("txSite4"), caption(Memo));
    auto *completer = new QCompleter(m_sites, this);
    completer->setCaseSensitivity(Qt::CaseInsensitive);
    completer->setFilterMode(Qt::MatchContains);
    m_boxes[Site]->setCompleter(completer);
    connect(shown, &QPushButton::clicked, this,
            [this] { m_boxes[LocalPath]->setText(m_shownFolder()); });
    for (const Box box : {LocalPath, RemotePath})
        connect(m_boxes.at(box), &QLineEdit::editingFinished, this, &sfSPtn::normalisePaths);
    finish(m_boxes[Name]);
}

void sfSPtn::Act(bool &changed, const QString &sSync)
{
    m_changed = false;
    fillSites();
    clearBoxes();
    fill(sSync);
    exec();
    changed = m_changed;
}

void sfSPtn::fill(const QString &select)
{
    fillList(QStringLiteral("Select sSync From msSync Order By sSync"), select);
}

void sfSPtn::fillSites()
{
    QStringList names;
    try {
        Rows rows;
        int count = 0;
        database().SelectRows(QStringLiteral("Select sName From msSite Order By sName"), rows,
                              count);
        for (int i = 0; i < count; ++i)
            names.append(rows.at(0, i).toString());
    } catch (const DbError &error) {
        tell(error.words());
    }
    m_sites->setStringList(names);
}

void sfSPtn::normalisePaths()
{
    const auto set = [](QLineEdit *box, const QString &tidy) {
        if (box->text() != tidy)
            box->setText(tidy);
    };
    set(m_boxes[LocalPath], tidyLocalPath(text(LocalPath)));
    set(m_boxes[RemotePath], tidyRemotePath(text(RemotePath)));
}

void sfSPtn::pickEntry(const QString &name)
{
    const QVariantList fields =
        row(QStringLiteral("Select sLph, sName, sFph, bCfl, bCfd, sMemo From msSync") +
                QStringLiteral(" Where sSync='") + doubled(name) + QStringLiteral("'"),
            6);
    if (fields.isEmpty()) {
        clearBoxes();
        m_boxes[Name]->setText(name);
        return;
    }
    m_boxes[Name]->setText(name);
    m_boxes[LocalPath]->setText(fields.at(0).toString());
    m_boxes[Site]->setText(fields.at(1).toString());
    m_boxes[RemotePath]->setText(fields.at(2).toString());
    m_checks[0]->setChecked(fields.at(3).toInt() != 0);
    m_checks[1]->setChecked(fields.at(4).toInt() != 0);
    m_boxes[Memo]->setText(fields.at(5).toString());
    for (QLineEdit *box : m_boxes)
        box->setCursorPosition(0);
}

QString sfSPtn::text(Box box) const
{
    return m_boxes.at(box)->text();
}

QVariantList sfSPtn::values() const
{
    return {text(Name),         text(LocalPath),    text(Site), text(RemotePath),
            yesNo(m_checks[0]), yesNo(m_checks[1]), text(Memo)};
}

bool sfSPtn::namesAreSound()
{
    return isSound(caption(Name), text(Name)) && isSound(caption(Site), text(Site));
}

bool sfSPtn::isFree()
{
    const auto named =
        count(QStringLiteral("Select Count(*) From msSync Where sSync='?'"), {text(Name)});
    if (!named)
        return false;
    if (*named > 0) {
        tell(QStringLiteral("指定された名前で既に登録があります"));
        return false;
    }
    const auto paired =
        count(QStringLiteral("Select Count(*) From msSync Where sLph='?' And sFph='?' "),
              {text(LocalPath), text(RemotePath)});
    if (!paired)
        return false;
    if (*paired > 0)
        tell(QStringLiteral("指定されたﾊﾟｽ指定(") + text(LocalPath) + QStringLiteral(" ⇔ ") +
             text(RemotePath) + QStringLiteral(" で既に登録があります"));
    return *paired == 0;
}

void sfSPtn::registerEntry()
{
    normalisePaths();
    if (!namesAreSound() || !isFree())
        return;
    // Seven columns and five values: the store refuses it. The main window registers patterns.
    const QString sql = QStringLiteral("Insert Into msSync (sSync, sLph, sName, sFph, bCfl, bCfd,"
                                       " sMemo)") +
                        QStringLiteral(" Values ('?', '?', '?', '?', '?')");
    const QString name = text(Name);
    if (!execute({statement(sql, values())}))
        return;
    m_changed = true;
    tellStored();
    fill(name);
}

void sfSPtn::updateEntry(const QString &oldName)
{
    normalisePaths();
    if (!namesAreSound())
        return;
    const QString sql = QStringLiteral("Update msSync Set sSync='?', sLph='?', sName='?'") +
                        QStringLiteral(", sFph='?', bCfl=?, bCfd=?, sMemo='?'") +
                        QStringLiteral(" Where sSync='?'");
    const auto rows = execute({statement(sql, values() << oldName)});
    if (!rows)
        return;
    if (!reached(rows, oldName)) {
        fill({}); // renamed before: the list still shows the old name until now
        return;
    }
    m_changed = true;
    tellStored();
}

void sfSPtn::deleteEntry(const QString &name)
{
    const auto rows =
        execute({statement(QStringLiteral("Delete From msSync Where sSync='?'"), {name})});
    if (!rows)
        return;
    m_changed = reached(rows, name) || m_changed;
    startNew();
    fill({});
}

void sfSPtn::clearBoxes()
{
    for (QLineEdit *box : m_boxes)
        box->clear();
    for (QCheckBox *check : m_checks)
        check->setChecked(false);
}

QString sfSPtn::nothingSelected() const
{
    return QStringLiteral("同期ﾊﾟﾀｰﾝが指定されていません");
}

void sfSPtn::tellStored()
{
    std::vector<Typed> typed;
    for (int box = Name; box <= Memo; ++box)
        typed.push_back({caption(box), text(static_cast<Box>(box))});
    tellDropped(typed);
}

} // namespace venlo
