#include "ftppane/sfSite.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QValidator>

#include "db/FillParams.h"
#include "ftp/SiteTable.h"

namespace venlo
{

namespace
{
constexpr std::array captions{"接続先名", "ｻｰﾊﾞｰ", "ﾕｰｻﾞｰ", "ﾊﾟｽﾜｰﾄﾞ", "ﾒﾓ"};

QString caption(int box)
{
    return QString::fromUtf8(captions.at(static_cast<size_t>(box)));
}

QString proxyCaption()
{
    return QStringLiteral("ﾌﾟﾛｷｼ");
}

/// Keeps a site's name free of what the name of its cache table cannot hold, as it is typed.
class SiteNames : public QValidator
{
public:
    using QValidator::QValidator;
    State validate(QString &input, int &position) const override
    {
        const QString front = cleaned(input.left(position));
        input = front + cleaned(input.mid(position));
        position = static_cast<int>(front.size());
        return Acceptable;
    }

private:
    [[nodiscard]] static QString cleaned(const QString &typed)
    {
        QString name;
        for (const QChar c : typed) {
            if (!c.isSpace())
                name += c == QLatin1Char('-') ? QChar(u'_') : c;
        }
        return name;
    }
};

/// A tick as the store's yes.
int yesNo(const QCheckBox *check)
{
    return check->isChecked() ? -1 : 0;
}
} // namespace

sfSite::sfSite(Database &database, FrontEnd &frontEnd, QWidget *parent)
    : RegistryForm(database, frontEnd, parent)
{
    build();
}

sfSite::~sfSite() = default;

void sfSite::build()
{
    setObjectName(QStringLiteral("sfSite"));
    setWindowTitle(QStringLiteral("接続先登録の編集 - Venlo FTP"));
    setAccessibleName(QStringLiteral("接続先登録の編集"));
    nameList(QStringLiteral("登録済みの接続先"));
    for (const Box box : {Name, Server, User})
        m_boxes.at(box) = addBox(QStringLiteral("txSite%1").arg(box), caption(box));
    m_boxes[Name]->setValidator(new SiteNames(this));
    m_boxes[Server]->setPlaceholderText(QStringLiteral("ftp.example.jp または ftp.example.jp:21"));
    addPassword();
    m_proxy = addBox(QStringLiteral("txPxy"), proxyCaption());
    m_proxy->setPlaceholderText(QStringLiteral("使わないときは空欄"));
    for (const QLineEdit *box : {m_boxes[Server], m_proxy})
        connect(box, &QLineEdit::textChanged, this, &sfSite::hideSecrets);
    hideSecrets();
    m_passive = addCheck(QStringLiteral("chPsv"), QStringLiteral("ﾊﾟｯｼﾌﾞﾓｰﾄﾞ"));
    m_keeps = addCheck(QStringLiteral("chSvDb"), QStringLiteral("一覧をﾃﾞｰﾀﾍﾞｰｽに残す"));
    m_boxes[Memo] = addBox(QStringLiteral("txSite4"), caption(Memo));
    finish(m_boxes[Name]);
}

void sfSite::addPassword()
{
    m_reveal = new QPushButton(QStringLiteral("表示"), this);
    m_reveal->setObjectName(QStringLiteral("btReveal"));
    m_reveal->setAccessibleName(QStringLiteral("ﾊﾟｽﾜｰﾄﾞを表示"));
    m_reveal->setToolTip(m_reveal->accessibleName());
    m_reveal->setCheckable(true);
    m_reveal->setAutoDefault(false);
    m_reveal->installEventFilter(this);
    m_boxes[Password] = addBox(QStringLiteral("txSite3"), caption(Password), m_reveal);
    connect(m_reveal, &QPushButton::toggled, this, &sfSite::hideSecrets);
}

/// A proxy's login holds a password too, and so may a server that was pasted from elsewhere.
void sfSite::hideSecrets()
{
    for (QLineEdit *box : {m_boxes[Server], m_boxes[Password], m_proxy}) {
        const bool secret = box == m_boxes[Password] || box->text().contains(QLatin1Char('@'));
        box->setEchoMode(secret && !m_reveal->isChecked() ? QLineEdit::Password
                                                          : QLineEdit::Normal);
    }
}

void sfSite::Act()
{
    clearBoxes();
    m_proxy->clear();
    m_passive->setChecked(true); // what works from behind an office's router
    m_keeps->setChecked(false);
    fill();
    exec();
}

void sfSite::fill()
{
    fillList(QStringLiteral("Select sName From msSite Order By sName"), {});
    enableButton(Update, false);
    enableButton(Delete, false);
}

void sfSite::pickEntry(const QString &name)
{
    m_reveal->setChecked(false);
    const QVariantList fields =
        row(QStringLiteral("Select sSvr, sUsr, sPwd, sPxy, bPsv, bSvDb, sMemo") +
                QStringLiteral(" From msSite Where sName='") + doubled(name) + QStringLiteral("'"),
            7);
    if (fields.isEmpty()) {
        clearBoxes();
        m_boxes[Name]->setText(name);
        return;
    }
    m_boxes[Name]->setText(name);
    m_boxes[Server]->setText(fields.at(0).toString());
    m_boxes[User]->setText(fields.at(1).toString());
    m_boxes[Password]->setText(fields.at(2).toString());
    m_proxy->setText(fields.at(3).toString());
    m_passive->setChecked(fields.at(4).toInt() != 0);
    m_keeps->setChecked(fields.at(5).toInt() != 0);
    m_boxes[Memo]->setText(fields.at(6).toString());
    for (QLineEdit *box : m_boxes)
        box->setCursorPosition(0);
    m_proxy->setCursorPosition(0);
}

QString sfSite::text(Box box) const
{
    return m_boxes.at(box)->text();
}

QVariantList sfSite::values() const
{
    return {text(Name),      text(Server),     text(User),     text(Password),
            m_proxy->text(), yesNo(m_passive), yesNo(m_keeps), text(Memo)};
}

bool sfSite::nameIsSound()
{
    if (!isSound(caption(Name), text(Name)))
        return false;
    if (isReservedSite(filled(QStringLiteral("?"), {text(Name)}))) {
        tell(text(Name) + QStringLiteral(" はﾌﾟﾛｸﾞﾗﾑが使う名前なので登録できません"));
        return false;
    }
    return true;
}

void sfSite::registerEntry()
{
    if (!nameIsSound())
        return;
    const auto taken =
        count(QStringLiteral("Select Count(*) From msSite Where sName='?'"), {text(Name)});
    if (!taken)
        return;
    if (*taken > 0) {
        tell(QStringLiteral("指定された名前で既に登録があります"));
        return;
    }
    const QString sql = QStringLiteral("Insert Into msSite (sName, sSvr, sUsr, sPwd, sPxy, bPsv,"
                                       " bSvDb, sMemo)") +
                        QStringLiteral(" Values ('?', '?', '?', '?', '?', ?, ?, '?')");
    if (!execute({statement(sql, values())}))
        return;
    fill();
    tellStored();
}

void sfSite::updateEntry(const QString &oldName)
{
    if (!nameIsSound())
        return;
    const QString site = QStringLiteral("Update msSite Set sName='?', sSvr='?'") +
                         QStringLiteral(", sUsr='?', sPwd='?', sPxy='?'") +
                         QStringLiteral(", bPsv=?, bSvDb=?, sMemo='?'") +
                         QStringLiteral(" Where sName='?'");
    const QString patterns = QStringLiteral("Update msSync Set sName='?' Where sName='?'");
    const auto rows =
        execute({statement(site, values() << oldName), statement(patterns, {text(Name), oldName})});
    if (!rows)
        return;
    const bool stored = reached(rows, oldName);
    fill();
    if (stored)
        tellStored();
}

void sfSite::deleteEntry(const QString &name)
{
    const QVariantList named{name};
    const auto rows =
        execute({statement(QStringLiteral("Delete From msSite Where sName='?'"), named),
                 statement(QStringLiteral("Delete From msSync Where sName='?'"), named)});
    if (!rows)
        return;
    (void)reached(rows, name); // told; the list is filled again in any case
    startNew();
    fill();
}

void sfSite::clearBoxes()
{
    for (QLineEdit *box : m_boxes)
        box->clear();
    m_reveal->setChecked(false);
}

QString sfSite::nothingSelected() const
{
    return QStringLiteral("接続先が指定されていません");
}

void sfSite::tellStored()
{
    std::vector<Typed> typed;
    for (int box = Name; box < Memo; ++box)
        typed.push_back({caption(box), text(static_cast<Box>(box))});
    typed.push_back({proxyCaption(), m_proxy->text()});
    typed.push_back({caption(Memo), text(Memo)});
    tellDropped(typed);
}

} // namespace venlo
