#include "ftppane/FtpPaneFixture.h"

#include "support/RawFiles.h"

#include <QClipboard>
#include <QDropEvent>
#include <QMimeData>
#include <QSignalSpy>
#include <QUrl>

namespace venlo::test
{

/// What leaves the pane and comes to it.
class tst_uFtpTransfers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m = std::make_unique<FtpPaneFixture>();
        QVERIFY(m->open());
    }
    void cleanup()
    {
        const bool clean = m->person.verify();
        const bool ended = !m->window.shown() && QGuiApplication::overrideCursor() == nullptr;
        QApplication::clipboard()->clear();
        m.reset();
        QVERIFY(clean);
        QVERIFY(ended);
    }
    void downloadRefused();
    void downloadRows();
    void downloadNode();
    void downloadRoot();
    void downloadCancelled();
    void copy();
    void paste_data();
    void paste();
    void dropOnTheTree();
    void dropOnTheList();
    void ownDragIsRefused();
    void dropWhileUnconnected();
    void filesForOthers();
    void filesForOthersOnlyWhole();
    void filesForOthersOutliveThePane();
    void workOnFilesForOthersStays();

private:
    void agree(const QString &folder)
    {
        connect(m->pane.get(), &uFtp::eBfrGet, m->pane.get(),
                [folder](QString &target, bool &proceed) {
                    QVERIFY(!proceed);
                    target = folder;
                    proceed = true;
                });
    }
    [[nodiscard]] std::unique_ptr<QMimeData> files(const QStringList &paths) const
    {
        auto data = std::make_unique<QMimeData>();
        QList<QUrl> urls;
        for (const QString &path : paths)
            urls << QUrl::fromLocalFile(path);
        data->setUrls(urls);
        return data;
    }
    /// Drags above a place and drops there; what the drop answers.
    Qt::DropAction drop(PaneView &view, QPoint at, QMimeData &data,
                        Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction) const
    {
        QDragEnterEvent enter(at, actions, &data, Qt::LeftButton, {});
        QApplication::sendEvent(view.viewport(), &enter);
        QDragMoveEvent move(at, actions, &data, Qt::LeftButton, {});
        QApplication::sendEvent(view.viewport(), &move);
        QDropEvent event(at, actions, &data, Qt::LeftButton, {});
        if (!move.isAccepted()) {
            QDragLeaveEvent leave;
            QApplication::sendEvent(view.viewport(), &leave);
            return Qt::IgnoreAction;
        }
        QApplication::sendEvent(view.viewport(), &event);
        return event.isAccepted() ? event.dropAction() : Qt::IgnoreAction;
    }
    [[nodiscard]] std::unique_ptr<QMimeData> dragged(PaneView &view) const
    {
        return partner().dragData(view);
    }
    /// What a drag of the view asks.
    [[nodiscard]] DragPartner &partner() const { return *m->listView().dragPartner(); }
    std::unique_ptr<FtpPaneFixture> m;
};

void tst_uFtpTransfers::downloadRefused()
{
    int asked = 0;
    connect(m->pane.get(), &uFtp::eBfrGet, m->pane.get(), [&asked] { ++asked; });
    QSignalSpy ended(m->pane.get(), &uFtp::eEndGet);
    m->click(QStringLiteral("news.txt"));
    m->pickForRow(QStringLiteral("news.txt"), 3);
    QCOMPARE(asked, 1);
    QCOMPARE(ended.size(), 0);
    QCOMPARE(m->server.count("RETR"), 0);
}

void tst_uFtpTransfers::downloadRows()
{
    QSignalSpy said(m->pane.get(), &uFtp::eMsg);
    QSignalSpy ended(m->pane.get(), &uFtp::eEndGet);
    agree(m->here());
    bool shown = false;
    connect(m->pane.get(), &uFtp::eEndGet, m->pane.get(), [&] { shown = m->window.shown(); });
    m->click(QStringLiteral("docs"));
    m->click(QStringLiteral("index.html"), Qt::ControlModifier);
    m->click(QStringLiteral("news.txt"), Qt::ControlModifier);
    m->pickForRow(QStringLiteral("news.txt"), 3);
    QCOMPARE(m->read(QStringLiteral("docs/deep/b.txt")), QByteArray("bbb"));
    QCOMPARE(m->read(QStringLiteral("index.html")), QByteArray("<html>"));
    QCOMPARE(m->read(QStringLiteral("news.txt")).size(), 1200);
    QCOMPARE(said.at(0).at(0).toString(),
             QStringLiteral("/ > ") + m->here() + QStringLiteral(" Down Loading････"));
    QCOMPARE(ended.size(), 1);
    QVERIFY(shown);
}

void tst_uFtpTransfers::downloadNode()
{
    QSignalSpy said(m->pane.get(), &uFtp::eMsg);
    agree(m->here());
    m->pickForNode(QStringLiteral("docs"), 3);
    QCOMPARE(m->read(QStringLiteral("docs/a.txt")), QByteArray("aaa"));
    QCOMPARE(said.at(0).at(0).toString(),
             QStringLiteral("/ > ") + m->here() + QStringLiteral(" Down Loading････"));
}

void tst_uFtpTransfers::downloadRoot()
{
    agree(m->here());
    m->pickForNode({}, 3);
    QCOMPARE(m->read(QStringLiteral("docs/a.txt")), QByteArray("aaa"));
    QCOMPARE(m->read(QStringLiteral("img/logo.png")), QByteArray("png"));
    QCOMPARE(m->read(QStringLiteral("index.html")), QByteArray("<html>"));
}

void tst_uFtpTransfers::downloadCancelled()
{
    agree(m->here());
    m->server.on("RETR").slow(100, 50);
    m->click(QStringLiteral("news.txt"));
    QTimer::singleShot(300, m->pane.get(), [this] { m->person.cancelNow(); });
    m->pickForRow(QStringLiteral("news.txt"), 3);
    QCOMPARE(m->localNames(), QStringList());
    QVERIFY(m->pane->cOn());
    QVERIFY(!m->gate.busy());
}

void tst_uFtpTransfers::copy()
{
    m->click(QStringLiteral("docs"));
    m->click(QStringLiteral("news.txt"), Qt::ControlModifier);
    QTest::keyClick(&m->listView(), Qt::Key_C, Qt::ControlModifier);
    const QMimeData *data = QApplication::clipboard()->mimeData();
    const auto read = remoteEntries(*data, QStringLiteral("web"));
    QVERIFY(read.has_value());
    QCOMPARE(*read,
             QList<RemoteEntry>({{QStringLiteral("/"), QStringLiteral("docs"), EntryTag::FD},
                                 {QStringLiteral("/"), QStringLiteral("news.txt"), EntryTag::FL}}));
    // Nothing is fetched, and pasting it here is no upload.
    QVERIFY(!data->hasUrls());
    QSignalSpy wanted(m->pane.get(), &uFtp::storeWanted);
    QTest::keyClick(&m->listView(), Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(wanted.size(), 0);
    QCOMPARE(m->server.count("RETR"), 0);
}

void tst_uFtpTransfers::paste_data()
{
    QTest::addColumn<QString>("row");
    QTest::addColumn<bool>("tree");
    QTest::addColumn<QString>("target");
    QTest::newRow("a folder row") << "docs" << false << "/docs";
    QTest::newRow("a file row") << "news.txt" << false << "/";
    QTest::newRow("the tree") << "docs" << true << "/";
}

void tst_uFtpTransfers::paste()
{
    QFETCH(QString, row);
    QFETCH(bool, tree);
    QFETCH(QString, target);
    m->write(QStringLiteral("up.txt"), "u");
    QApplication::clipboard()->setMimeData(files({m->at(QStringLiteral("up.txt"))}).release());
    QSignalSpy wanted(m->pane.get(), &uFtp::storeWanted);
    m->click(row);
    PaneView &view = tree ? m->treeView() : m->listView();
    view.setFocus();
    QTest::keyClick(&view, Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(wanted.size(), 1);
    QCOMPARE(wanted.at(0).at(0).toStringList(), QStringList(m->at(QStringLiteral("up.txt"))));
    QCOMPARE(wanted.at(0).at(1).toString(), target);
}

void tst_uFtpTransfers::dropOnTheTree()
{
    QSignalSpy wanted(m->pane.get(), &uFtp::storeWanted);
    const auto data = files({QStringLiteral("/tmp/one"), QStringLiteral("/tmp/two")});
    const QPoint at = m->treeView().visualRect(m->node(QStringLiteral("docs"))).center();
    QCOMPARE(drop(m->treeView(), at, *data, Qt::MoveAction), Qt::IgnoreAction);
    QCOMPARE(drop(m->treeView(), at, *data), Qt::CopyAction);
    QTRY_COMPARE(wanted.size(), 1);
    QCOMPARE(wanted.at(0).at(0).toStringList(),
             QStringList({QDir::toNativeSeparators(QStringLiteral("/tmp/one")),
                          QDir::toNativeSeparators(QStringLiteral("/tmp/two"))}));
    QCOMPARE(wanted.at(0).at(1).toString(), QStringLiteral("/docs"));
    QVERIFY(!m->tree().dropTarget().isValid());
    QVERIFY(!m->gate.busy());
}

void tst_uFtpTransfers::dropOnTheList()
{
    QSignalSpy wanted(m->pane.get(), &uFtp::storeWanted);
    const auto data = files({QStringLiteral("/tmp/one")});
    const auto rowAt = [this](int row) {
        return m->listView().visualRect(m->rows().index(row, 0)).center();
    };
    QCOMPARE(drop(m->listView(), rowAt(0), *data), Qt::CopyAction);
    QTRY_COMPARE(wanted.size(), 1);
    QCOMPARE(wanted.at(0).at(1).toString(), QStringLiteral("/docs"));
    QCOMPARE(drop(m->listView(), rowAt(3), *data), Qt::CopyAction);
    QTRY_COMPARE(wanted.size(), 2);
    QCOMPARE(wanted.at(1).at(1).toString(), QStringLiteral("/"));
    QMimeData text;
    text.setText(QStringLiteral("no file"));
    QCOMPARE(drop(m->listView(), rowAt(0), text), Qt::IgnoreAction);
}

void tst_uFtpTransfers::ownDragIsRefused()
{
    m->click(QStringLiteral("news.txt"));
    const auto data = dragged(m->listView());
    QVERIFY(data);
    QCOMPARE(drop(m->treeView(), m->treeView().visualRect(m->node(QStringLiteral("docs"))).center(),
                  *data),
             Qt::IgnoreAction);
    QCOMPARE(m->server.count("RETR"), 0);
}

void tst_uFtpTransfers::dropWhileUnconnected()
{
    m->pane->disconnectSite();
    QSignalSpy wanted(m->pane.get(), &uFtp::storeWanted);
    const auto data = files({QStringLiteral("/tmp/one")});
    QCOMPARE(drop(m->treeView(), QPoint(20, 20), *data), Qt::IgnoreAction);
    QTest::qWait(20);
    QCOMPARE(wanted.size(), 0);
}

void tst_uFtpTransfers::filesForOthers()
{
    m->click(QStringLiteral("docs"));
    m->click(QStringLiteral("news.txt"), Qt::ControlModifier);
    const auto data = dragged(m->listView());
    QVERIFY(data);
    QVERIFY(remoteEntries(*data, QStringLiteral("web")).has_value());
    QVERIFY(data->hasUrls());
    QCOMPARE(m->server.count("RETR"), 0);
    // Another program asks.
    const QByteArray list = data->data(QStringLiteral("text/uri-list"));
    QCOMPARE(list.count("\r\n"), 2);
    const QList<QUrl> urls = data->urls();
    QCOMPARE(urls.size(), 2);
    QFile file(urls.at(1).toLocalFile());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll().size(), 1200);
    QVERIFY(QFileInfo::exists(urls.at(0).toLocalFile() + QStringLiteral("/deep/b.txt")));
    // Once is enough.
    QCOMPARE(m->server.count("RETR"), 3);
}

void tst_uFtpTransfers::filesForOthersOnlyWhole()
{
    m->server.on("RETR", "news.txt").reply(550, "gone");
    m->click(QStringLiteral("index.html"));
    m->click(QStringLiteral("news.txt"), Qt::ControlModifier);
    m->person.allowMessages();
    const auto data = dragged(m->listView());
    QCOMPARE(data->urls(), QList<QUrl>());
    QVERIFY(m->handedOut.empty());
}

void tst_uFtpTransfers::filesForOthersOutliveThePane()
{
    m->click(QStringLiteral("news.txt"));
    const QString path = dragged(m->listView())->urls().value(0).toLocalFile();
    m->build();
    QCOMPARE(readFile(rawPath(path)).size(), 1200);
    QCOMPARE(m->handedOut.at(0)->work(), QStringList());
    m->handedOut.clear();
    QVERIFY(!QFileInfo::exists(QFileInfo(path).path()));
}

/// Another program's person works on what it was given.
void tst_uFtpTransfers::workOnFilesForOthersStays()
{
    m->click(QStringLiteral("docs"));
    m->click(QStringLiteral("news.txt"), Qt::ControlModifier);
    const QList<QUrl> urls = dragged(m->listView())->urls();
    QCOMPARE(urls.size(), 2);
    const QString edited = urls.at(1).toLocalFile();
    QVERIFY(writeFile(rawPath(edited), "hours of work"));
    QCOMPARE(m->handedOut.size(), 1U);
    QCOMPARE(m->handedOut.front()->work(), QStringList{QDir::toNativeSeparators(edited)});
    m->handedOut.clear();
    QCOMPARE(readFile(rawPath(edited)), QByteArray("hours of work"));
    QVERIFY(!QFileInfo::exists(urls.at(0).toLocalFile()));
    QVERIFY(QDir(QFileInfo(edited).path()).removeRecursively());
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_uFtpTransfers)
#include "tst_uFtpTransfers.moc"
