// Uploads that the local pane starts, and those of drops.
#include "localpane/FolderReader.h"
#include "localpane/PaneFixture.h"
#include "localpane/Upload.h"
#include "support/MainList.h"
#include "support/Shortcuts.h"

#include <QFile>
#include <QListWidget>
#include <QMenu>
#include <QSignalSpy>

using namespace venlo;
using venlo::test::MainList;
using venlo::test::makeTree;
using venlo::test::PaneFixture;
using venlo::test::ScriptedPerson;

namespace
{
const QString arrow = QStringLiteral(" > ");

struct Fixture : PaneFixture {
    Fixture()
    {
        server.makeFolder("/in");
        const std::vector<venlo::test::TreeRow> rows = {{"a.txt", "one"},
                                                        {"b.txt", "two"},
                                                        {"not chosen.txt", "no"},
                                                        {"sub/inner.txt", "inner"},
                                                        {"sub/deep/er.txt", "er"}};
        made = start() && makeTree(here(), rows);
        QObject::connect(pane.get(), &uFile::eBfrPut, pane.get(), [this](bool &go, QString &to) {
            ++asked;
            startedSilent = !go && to.isEmpty();
            waiting = window.isVisible();
            go = confirms;
            to = target;
        });
        QObject::connect(pane.get(), &uFile::eMsg, pane.get(),
                         [this](const QString &text) { said << text; });
        QObject::connect(pane.get(), &uFile::eEndPut, pane.get(), [this] {
            ++ended;
            said << QStringLiteral("end");
        });
        pane->cOn(here());
        forget();
    }
    /// Picks "upload" from the menu of the view.
    void pickUpload(PaneView &view)
    {
        QMenu &menu = *menus.menu(pfFtp::TREE);
        QObject::connect(
            &menu, &QMenu::aboutToShow, &menu,
            [this, &menu] {
                QTimer::singleShot(0, &menu, [this, &menu] {
                    menu.setActiveAction(menus.entry(pfFtp::TREE, 9));
                    QTest::keyClick(&menu, Qt::Key_Return);
                });
            },
            Qt::SingleShotConnection);
        QTest::keyClick(&view, Qt::Key_Menu);
    }
    [[nodiscard]] QByteArray remote(const char *path) const { return server.file(path); }
    [[nodiscard]] bool isThere(const char *path) const { return server.exists(path); }

    bool made = false;
    bool confirms = true;
    bool startedSilent = false;
    bool waiting = false;
    QString target = QStringLiteral("/in");
    int asked = 0;
    int ended = 0;
    QStringList said;
};
} // namespace

class tst_Upload : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void uploadsSelectedRows();
    void uploadsInTheOrderOfTheList();
    void uploadsAWholeFolder();
    void uploadsNothingUnconfirmed();
    void asksNothingWithoutASelection();
    void leavesOutWhatMustNotGo();
    void theWatchRests();
    void saysThatTheSourceIsGone();
    void sendsWhatTheDiskHoldsNow();
    void takesATurn();
    void groupsByFolder();
    void stopsWhenCancelled();
#ifdef Q_OS_WIN
    void shortcutsAreFiles();
    void shortcutsInAFolderGoAsFiles();
#endif
};

void tst_Upload::uploadsSelectedRows()
{
    Fixture f;
    QVERIFY(f.made);
    f.operations.standingAnswer = OverwriteMode::KeepNewer;
    f.click(QStringLiteral("a.txt"));
    f.click(QStringLiteral("b.txt"), Qt::ControlModifier);
    f.click(QStringLiteral("sub"), Qt::ControlModifier);
    f.pickUpload(f.listView());
    QCOMPARE(f.asked, 1);
    QVERIFY2(f.startedSilent, "the flag is false and the target empty when raised");
    QVERIFY2(!f.waiting, "the message window comes behind the question");
    QCOMPARE(f.remote("/in/a.txt"), QByteArray("one"));
    QCOMPARE(f.remote("/in/b.txt"), QByteArray("two"));
    QCOMPARE(f.remote("/in/sub/deep/er.txt"), QByteArray("er"));
    QVERIFY(!f.isThere("/in/not chosen.txt"));
    QCOMPARE(f.said, (QStringList{f.here() + QStringLiteral(" > /in Up Loading････"),
                                  QStringLiteral("end")}));
    // Folders go first.
    const QStringList status = f.status();
    const auto at = [&](const char *name) {
        for (int i = 0; i < status.size(); ++i) {
            if (status.at(i).contains(QLatin1String(name)))
                return i;
        }
        return -1;
    };
    QVERIFY(at("er.txt") >= 0 && at("er.txt") < at("a.txt"));
    QCOMPARE(f.operations.standingAnswer, OverwriteMode::Ask);
    QVERIFY(!f.window.shown());
    QVERIFY(!f.gate.busy());
    QVERIFY(f.person.verify());
}

void tst_Upload::uploadsInTheOrderOfTheList()
{
    Fixture f;
    QVERIFY(f.made);
    f.click(QStringLiteral("not chosen.txt"));
    f.click(QStringLiteral("a.txt"), Qt::ControlModifier);
    f.click(QStringLiteral("b.txt"), Qt::ControlModifier);
    f.pickUpload(f.listView());
    QStringList sent;
    for (const QString &line : f.status()) {
        for (const char *name : {"a.txt", "b.txt", "not chosen.txt"}) {
            const QString known = QLatin1String(name);
            if (line.contains(QDir::separator() + known) && !sent.contains(known))
                sent << known;
        }
    }
    QCOMPARE(sent, (QStringList{QStringLiteral("a.txt"), QStringLiteral("b.txt"),
                                QStringLiteral("not chosen.txt")}));
}

void tst_Upload::uploadsAWholeFolder()
{
    Fixture f;
    QVERIFY(f.made);
    f.clickNode(f.at(QStringLiteral("sub")));
    f.pickUpload(f.treeView());
    QCOMPARE(f.asked, 1);
    QCOMPARE(f.remote("/in/sub/inner.txt"), QByteArray("inner"));
    QCOMPARE(f.remote("/in/sub/deep/er.txt"), QByteArray("er"));
    QVERIFY(!f.isThere("/in/a.txt"));
    QCOMPARE(f.said, QStringList{QStringLiteral("end")});
    QVERIFY(!f.window.shown());
}

void tst_Upload::uploadsNothingUnconfirmed()
{
    Fixture f;
    QVERIFY(f.made);
    f.confirms = false;
    f.click(QStringLiteral("a.txt"));
    f.pickUpload(f.listView());
    QCOMPARE(f.asked, 1);
    QCOMPARE(f.ended, 0);
    QVERIFY(!f.isThere("/in/a.txt"));
    QVERIFY(f.work().isEmpty());
    QVERIFY(!f.window.shown());
    QVERIFY(!f.gate.busy());
}

void tst_Upload::asksNothingWithoutASelection()
{
    Fixture f;
    QVERIFY(f.made);
    f.listView().clearSelection();
    f.pickUpload(f.listView());
    QCOMPARE(f.asked, 0);
    QCOMPARE(f.ended, 0);
}

void tst_Upload::leavesOutWhatMustNotGo()
{
    if (venlo::test::onWindows)
        QSKIP("no names of that kind there, and no links of the tests' own");
    Fixture f;
    QVERIFY(f.made);
    QVERIFY(makeTree(f.here(), {{"x\ty.txt", "1"}}));
    QVERIFY(QFile::link(f.at(QStringLiteral("sub")), f.at(QStringLiteral("link"))));
    f.pane->ReFresh();
    f.listView().setFocus();
    QTest::keyClick(&f.listView(), Qt::Key_A, Qt::ControlModifier);
    const MainList behind(f.person);
    f.pickUpload(f.listView());
    QCOMPARE(f.ended, 1);
    QCOMPARE(f.remote("/in/a.txt"), QByteArray("one"));
    QVERIFY(f.isThere("/in/sub/inner.txt"));
    QVERIFY(!f.isThere("/in/link"));
    QVERIFY(!f.isThere("/in/x\ty.txt"));
    QCOMPARE(f.operations.counts().givenUp, 0);
    // Where it is still to be read when the message window has gone.
    QVERIFY(!f.window.isVisible());
    const QStringList reasons{
        f.at(QStringLiteral("link")) + QStringLiteral(" : ﾌｫﾙﾀﾞへのﾘﾝｸは転送しません"),
        f.at(QStringLiteral("x\ty.txt")) +
            QStringLiteral(" : 名前に使用できない文字があるため､転送しません")};
    QCOMPARE(behind.lines.filter(QStringLiteral(" : ")), reasons);
}

void tst_Upload::theWatchRests()
{
    Fixture f;
    QVERIFY(f.made);
    bool shown = true;
    QObject::connect(f.pane.get(), &uFile::eMsg, f.pane.get(), [&] {
        QVERIFY(makeTree(f.here(), {{"new.txt", "1"}}));
        f.tick();
        shown = f.names().contains(QStringLiteral("new.txt"));
    });
    f.click(QStringLiteral("a.txt"));
    f.pickUpload(f.listView());
    QVERIFY(!shown);
    f.tick();
    QVERIFY(f.names().contains(QStringLiteral("new.txt")));
}

void tst_Upload::saysThatTheSourceIsGone()
{
    Fixture f;
    QVERIFY(f.made);
    const QString sub = f.at(QStringLiteral("sub"));
    f.clickNode(sub);
    QVERIFY(QDir(sub).removeRecursively());
    f.person.expectMessage(sub + QStringLiteral("  が存在しません"));
    f.pickUpload(f.treeView());
    QCOMPARE(f.ended, 1);
    QVERIFY(!f.isThere("/in/sub"));
    QVERIFY(f.person.verify());
}

void tst_Upload::sendsWhatTheDiskHoldsNow()
{
    Fixture f;
    QVERIFY(f.made);
    f.click(QStringLiteral("a.txt"));
    QVERIFY(makeTree(f.here(), {{"a.txt", QByteArray(4000, 'x')}}));
    f.pickUpload(f.listView());
    QCOMPARE(f.remote("/in/a.txt").size(), 4000);
    QCOMPARE(f.cell(QStringLiteral("a.txt"), 2), QStringLiteral("4KB"));
}

void tst_Upload::takesATurn()
{
    Fixture f;
    QVERIFY(f.made);
    bool busy = false;
    QObject::connect(f.pane.get(), &uFile::eEndPut, f.pane.get(), [&] { busy = f.gate.busy(); });
    f.click(QStringLiteral("a.txt"));
    f.pickUpload(f.listView());
    QCOMPARE(f.ended, 1);
    QVERIFY(busy);
    QVERIFY(!f.gate.busy());
}

void tst_Upload::groupsByFolder()
{
    Fixture f;
    QVERIFY(f.made);
    QStringList texts;
    Upload upload(f.operations, f.window, [&](const QString &text) { texts << text; });
    const QString sub = f.at(QStringLiteral("sub"));
    f.window.cOn();
    QVERIFY(upload.run({f.at(QStringLiteral("a.txt")), f.at(QStringLiteral("sub/inner.txt")),
                        f.at(QStringLiteral("b.txt")), f.at(QStringLiteral("sub/deep")),
                        Fixture::top(), f.at(QStringLiteral("missing"))},
                       QStringLiteral("/in")));
    const auto lines = f.window.findChild<QListWidget *>(QStringLiteral("ltMsg"));
    QVERIFY(lines != nullptr);
    QStringList shown;
    for (int i = 0; i < lines->count(); ++i)
        shown << lines->item(i)->text();
    QVERIFY(shown.contains(Fixture::top() + QStringLiteral(" : ﾄﾞﾗｲﾌﾞ全体は転送しません")));
    QVERIFY(shown.contains(f.at(QStringLiteral("missing")) + QStringLiteral(" : 存在しません")));
    f.window.cOff();
    QCOMPARE(texts, (QStringList{f.here() + QStringLiteral(" > /in Up Loading････"),
                                 sub + QStringLiteral(" > /in Up Loading････")}));
    QCOMPARE(f.remote("/in/a.txt"), QByteArray("one"));
    QCOMPARE(f.remote("/in/b.txt"), QByteArray("two"));
    QCOMPARE(f.remote("/in/inner.txt"), QByteArray("inner"));
    QCOMPARE(f.remote("/in/deep/er.txt"), QByteArray("er"));
    QVERIFY(!f.isThere("/in/sub"));
}

void tst_Upload::stopsWhenCancelled()
{
    Fixture f;
    QVERIFY(f.made);
    Upload upload(f.operations, f.window, [](const QString &) {});
    f.person.cancelNow();
    QVERIFY(!upload.run({f.at(QStringLiteral("a.txt"))}, QStringLiteral("/in")));
    QVERIFY(!f.isThere("/in/a.txt"));
}

#ifdef Q_OS_WIN
void tst_Upload::shortcutsAreFiles()
{
    Fixture f;
    QVERIFY(f.made);
    QTemporaryDir elsewhere;
    QVERIFY(test::makeShortcuts(f.at(QStringLiteral("sub/deep")), elsewhere.path()));
    const auto entries = readFolder(f.at(QStringLiteral("sub/deep")));
    QVERIFY(entries);
    qint64 bytes = 0;
    for (const DiskEntry &entry : entries.value()) {
        QVERIFY2(!entry.folder && !entry.link, qPrintable(entry.name));
        QVERIFY2(entry.size > 0 && entry.size < test::shortcutTargetSize, qPrintable(entry.name));
        QVERIFY2(entry.modified.isValid(), qPrintable(entry.name));
        bytes += entry.size;
    }
    QCOMPARE(entries.value().size(), 4U);
    QCOMPARE(bytesBelow(f.at(QStringLiteral("sub/deep")), QDeadlineTimer::Forever), bytes);
    const UploadLine line = Upload::lineFor(f.at(QStringLiteral("sub/deep/file.lnk")));
    QVERIFY2(line.sizeText.endsWith(QLatin1Char('B')) && !line.sizeText.contains(QLatin1Char('K')),
             qPrintable(line.sizeText));
}

void tst_Upload::shortcutsInAFolderGoAsFiles()
{
    Fixture f;
    QVERIFY(f.made);
    QTemporaryDir elsewhere;
    QVERIFY(test::makeShortcuts(f.at(QStringLiteral("sub")), elsewhere.path()));
    QVERIFY(test::makeShortcuts(f.here(), elsewhere.path()));
    Upload upload(f.operations, f.window, [](const QString &) {});
    QVERIFY(upload.run({f.at(QStringLiteral("sub")), f.at(QStringLiteral("file.lnk")),
                        f.at(QStringLiteral("folder.lnk")), f.at(QStringLiteral("nothing.lnk"))},
                       QStringLiteral("/in")));
    QCOMPARE(f.operations.counts().givenUp, 0);
    for (const char *name : {"file.lnk", "folder.lnk", "nothing.lnk", "sub/file.lnk",
                             "sub/folder.lnk", "sub/nothing.lnk"}) {
        QFile file(f.at(QString::fromLatin1(name)));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(f.remote((QByteArray("/in/") + name).constData()), file.readAll());
    }
}
#endif

QTEST_MAIN(tst_Upload)
#include "tst_Upload.moc"
