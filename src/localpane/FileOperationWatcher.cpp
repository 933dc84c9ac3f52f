#include "localpane/FileOperationWatcher.h"

#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>

#include "db/DisplayFormat.h"
#include "platform/EntryLook.h"
#include "shared/WindowDesk.h"

namespace venlo
{

namespace
{
constexpr int yieldEveryMs = 30;

QString nameOf(const QString &path)
{
    const QString name = QFileInfo(path).fileName();
    return name.isEmpty() ? path : name;
}

QString lookOf(const QString &path)
{
    const EntryLook info(path);
    return QStringLiteral("%1  更新日時 %2")
        .arg(FormatSizeText(info.size()), FormatDateText(info.lastModified()));
}

QString clashText(const ShellClash &clash)
{
    const QString name = nameOf(clash.existing);
    if (clash.folders)
        return QStringLiteral("このﾌｫﾙﾀﾞには既に '") + name +
               QStringLiteral("' ﾌｫﾙﾀﾞが存在します｡\n中のﾌｧｲﾙをまとめますか ?");
    return QStringLiteral("このﾌｫﾙﾀﾞには既に '") + name +
           QStringLiteral("' ﾌｧｲﾙが存在します｡\n上書きしますか ?");
}
} // namespace

FileOperationWatcher::FileOperationWatcher(WindowDesk &desk, QWidget &pane)
    : m_desk(desk), m_pane(pane), m_window(pane.window())
{
    m_sinceYield.start();
}

bool FileOperationWatcher::confirmDelete(const QStringList &paths, bool forGood)
{
    const QString what = paths.size() == 1
                             ? QStringLiteral("'%1' を").arg(nameOf(paths.constFirst()))
                             : QStringLiteral("選択した %1 個のﾌｫﾙﾀﾞ･ﾌｧｲﾙを").arg(paths.size());
    return m_desk.question(forGood ? QStringLiteral("ごみ箱がないため､") + what +
                                         QStringLiteral("完全に削除します｡元に戻すことはできません")
                                   : what + QStringLiteral("ごみ箱に移動します"));
}

ShellAnswer FileOperationWatcher::clash(const ShellClash &clash)
{
    QMessageBox box(QMessageBox::Question, QStringLiteral("Venlo FTP"), clashText(clash),
                    QMessageBox::NoButton, m_pane.window());
    box.setObjectName(QStringLiteral("sfRpl"));
    box.setTextFormat(Qt::PlainText);
    if (!clash.folders)
        box.setInformativeText(QStringLiteral("現在のﾌｧｲﾙ  %1\n新しいﾌｧｲﾙ  %2")
                                   .arg(lookOf(clash.existing), lookOf(clash.incoming)));
    const auto add = [&box](const char *name, const QString &caption,
                            QMessageBox::ButtonRole role) {
        QPushButton *button = box.addButton(caption, role);
        button->setObjectName(QLatin1String(name));
        return button;
    };
    QPushButton *yes = add("cmYes", QStringLiteral("はい(&Y)"), QMessageBox::YesRole);
    const QPushButton *all = add("cmAll", QStringLiteral("すべてはい"), QMessageBox::YesRole);
    const QPushButton *no = add("cmNo", QStringLiteral("いいえ(&N)"), QMessageBox::NoRole);
    QPushButton *cancel = add("cmCancel", QStringLiteral("ｷｬﾝｾﾙ"), QMessageBox::RejectRole);
    box.setDefaultButton(yes);
    box.setEscapeButton(cancel);
    box.exec();
    const QAbstractButton *pressed = box.clickedButton();
    if (pressed == yes)
        return ShellAnswer::Yes;
    if (pressed == all)
        return ShellAnswer::YesToAll;
    return pressed == no ? ShellAnswer::No : ShellAnswer::Cancel;
}

bool FileOperationWatcher::failed(const QString &path, const QString &why, bool more)
{
    const QString text = path + QLatin1Char('\n') + why;
    if (more)
        return m_desk.question(text + QStringLiteral("\n\n残りの処理を続けますか ?"));
    m_desk.message(text);
    return true;
}

bool FileOperationWatcher::goOn(const ShellFileProgress &progress)
{
    if (m_sinceYield.elapsed() >= yieldEveryMs) {
        if (progress.show)
            m_window.showProgress(progress);
        m_desk.yield();
        m_sinceYield.restart();
    }
    return !m_window.cancelled() && !m_desk.cancelled();
}

} // namespace venlo
