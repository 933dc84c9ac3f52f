// Another program on the desktop, for what passes between programs: it puts files on the clipboard
// or reads them from it, and is the source or the target of drags. What happens is told on stdout,
// a line each; it ends when its input ends.
//     neighbour copy cut|copy|none FILES...
//     neighbour paste
//     neighbour source X Y FILES...
//     neighbour target X Y
#include <cstdio>
#include <memory>

#include <unistd.h>

#include <QApplication>
#include <QClipboard>
#include <QDrag>
#include <QDropEvent>
#include <QFile>
#include <QLabel>
#include <QMimeData>
#include <QMouseEvent>
#include <QSocketNotifier>
#include <QTimer>
#include <QUrl>

namespace
{

void say(const QString &line)
{
    std::fprintf(stdout, "%s\n", line.toUtf8().constData());
    std::fflush(stdout);
}

std::unique_ptr<QMimeData> fileList(const QStringList &paths)
{
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls += QUrl::fromLocalFile(path);
    auto data = std::make_unique<QMimeData>();
    data->setUrls(urls);
    return data;
}

void copy(const QString &marker, const QStringList &paths)
{
    auto data = fileList(paths);
    if (marker != QLatin1String("none")) {
        QByteArray list = marker.toUtf8();
        for (const QUrl &url : data->urls())
            list += '\n' + url.toEncoded();
        data->setData(QStringLiteral("x-special/gnome-copied-files"), list);
    }
    QGuiApplication::clipboard()->setMimeData(data.release()); // the clipboard owns it
    say(QStringLiteral("ready"));
}

void paste()
{
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    if (data != nullptr) {
        const QByteArray marker = data->data(QStringLiteral("x-special/gnome-copied-files"));
        say(QStringLiteral("marker ") + QString::fromUtf8(marker.split('\n').constFirst()));
        for (const QUrl &url : data->urls())
            say(QStringLiteral("uri ") + url.toString());
    }
    say(QStringLiteral("pasted"));
}

QString actionName(Qt::DropAction action)
{
    switch (action) {
    case Qt::CopyAction:
        return QStringLiteral("copy");
    case Qt::MoveAction:
    case Qt::TargetMoveAction:
        return QStringLiteral("move");
    default:
        return QStringLiteral("nothing");
    }
}

/// A small window from which the files can be dragged, or onto which something can be dropped.
class Window : public QLabel
{
public:
    explicit Window(const QStringList &paths) : m_paths(paths)
    {
        setText(paths.isEmpty() ? QStringLiteral("drop here") : QStringLiteral("drag me"));
        setAlignment(Qt::AlignCenter);
        setAcceptDrops(paths.isEmpty());
        resize(260, 90);
    }

protected:
    void showEvent(QShowEvent *event) override
    {
        QLabel::showEvent(event);
        // Behind the window manager's frame.
        QTimer::singleShot(600, this, [this] {
            const QPoint middle = mapToGlobal(rect().center());
            say(QStringLiteral("ready %1 %2").arg(middle.x()).arg(middle.y()));
        });
    }
    void mouseMoveEvent(QMouseEvent *event) override
    {
        if (m_paths.isEmpty() || !event->buttons().testFlag(Qt::LeftButton))
            return;
        auto *drag = new QDrag(this);
        drag->setMimeData(fileList(m_paths).release()); // the drag owns it
        const Qt::DropAction done = drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::CopyAction);
        say(QStringLiteral("dragged ") + actionName(done));
    }
    void dragEnterEvent(QDragEnterEvent *event) override
    {
        if (event->mimeData()->hasFormat(QStringLiteral("text/uri-list")))
            event->acceptProposedAction();
    }
    void dropEvent(QDropEvent *event) override
    {
        for (const QUrl &url : event->mimeData()->urls()) {
            say(QStringLiteral("uri ") + url.toString());
            QFile file(url.toLocalFile());
            if (file.open(QIODevice::ReadOnly))
                say(QStringLiteral("content ") + QString::fromUtf8(file.readAll()));
        }
        event->acceptProposedAction();
        say(QStringLiteral("dropped"));
    }

private:
    QStringList m_paths;
};

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QString mode = arguments.value(1);
    const QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application,
                     [] { QCoreApplication::quit(); });
    std::unique_ptr<Window> window;
    if (mode == QLatin1String("copy")) {
        copy(arguments.value(2), arguments.mid(3));
    } else if (mode == QLatin1String("paste")) {
        paste();
        return 0;
    } else {
        window = std::make_unique<Window>(arguments.mid(4));
        window->move(arguments.value(2).toInt(), arguments.value(3).toInt());
        window->show();
    }
    return QApplication::exec();
}
