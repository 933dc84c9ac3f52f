#include <QAbstractItemModelTester>
#include <QFont>
#include <QGuiApplication>
#include <QPalette>
#include <QSignalSpy>
#include <QTest>

#include "views/FolderTree.h"

namespace venlo::test
{

namespace
{

FolderTree::Entry folder(const QString &name, bool hasSubFolders = false)
{
    return {name, hasSubFolders, false, EntryTag::FD};
}

} // namespace

class tst_FolderTree : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void keysOfNodes();
    void keysAreNotGivenTwice();
    void keysRunOut();
    void placeholderMarksUnread();
    void realFolderCalledQuestionMark();
    void paths_data();
    void paths();
    void childByText();
    void nodeByKey();
    void removing();
    void renaming();
    void dropTargetIsBold();
    void paleFollowsThePalette();
    void iconsComeOnce();
    void manyChildren();
    void manyRemovals();

private:
    std::unique_ptr<FolderTree> m_tree;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
};

void tst_FolderTree::init()
{
    m_tester.reset();
    m_tree = std::make_unique<FolderTree>(QLatin1Char('/'));
    m_tester = std::make_unique<QAbstractItemModelTester>(
        m_tree.get(), QAbstractItemModelTester::FailureReportingMode::Fatal);
}

void tst_FolderTree::keysOfNodes()
{
    QVERIFY(!m_tree->root().isValid());
    const QModelIndex root = m_tree->setRoot(QStringLiteral("/"));
    QCOMPARE(root, m_tree->root());
    QCOMPARE(m_tree->key(root), QStringLiteral("N0000"));
    QCOMPARE(m_tree->tag(root), EntryTag::FD);
    QVERIFY(!m_tree->hasChildren(root));
    QVERIFY(m_tree->addChildren(root,
                                {folder(QStringLiteral("a"), true), folder(QStringLiteral("b"))}));
    const QModelIndex a = m_tree->index(0, 0, root);
    QCOMPARE(m_tree->key(a), QStringLiteral("N0001"));
    QCOMPARE(m_tree->key(m_tree->index(0, 0, a)), QStringLiteral("N0002"));
    QCOMPARE(m_tree->key(m_tree->index(1, 0, root)), QStringLiteral("N0003"));
}

void tst_FolderTree::keysAreNotGivenTwice()
{
    m_tree->setRoot(QStringLiteral("/"));
    m_tree->addChild(m_tree->root(), folder(QStringLiteral("a")));
    m_tree->clear();
    QCOMPARE(m_tree->rowCount({}), 0);
    m_tree->setRoot(QStringLiteral("/"));
    const QModelIndex again = m_tree->addChild(m_tree->root(), folder(QStringLiteral("a")));
    QCOMPARE(m_tree->key(m_tree->root()), QStringLiteral("N0000"));
    QCOMPARE(m_tree->key(again), QStringLiteral("N0002"));
}

void tst_FolderTree::keysRunOut()
{
    m_tree->setRoot(QStringLiteral("/"));
    m_tree->keys().restart(KeyCounter::last - 1);
    QVERIFY(!m_tree->addChildren(
        m_tree->root(),
        {folder(QStringLiteral("a")), folder(QStringLiteral("b")), folder(QStringLiteral("c"))}));
    QCOMPARE(m_tree->rowCount(m_tree->root()), 2);
    QVERIFY(!m_tree->addChild(m_tree->root(), folder(QStringLiteral("d"))).isValid());
    QCOMPARE(m_tree->rowCount(m_tree->root()), 2);

    // A folder without its placeholder would look as if it had no folders.
    m_tree->keys().restart(KeyCounter::last);
    QVERIFY(!m_tree->addChildren(m_tree->root(), {folder(QStringLiteral("e"), true)}));
    QCOMPARE(m_tree->rowCount(m_tree->root()), 2);
    m_tree->markUnread(m_tree->index(0, 0, m_tree->root()));
    QVERIFY(!m_tree->isUnread(m_tree->index(0, 0, m_tree->root())));
}

void tst_FolderTree::placeholderMarksUnread()
{
    const QModelIndex root = m_tree->setRoot(QStringLiteral("/"));
    const QModelIndex a = m_tree->addChild(root, folder(QStringLiteral("a"), true));
    const QModelIndex b = m_tree->addChild(root, folder(QStringLiteral("b")));
    QVERIFY(!m_tree->isUnread(root));
    QVERIFY(m_tree->isUnread(a));
    QVERIFY(m_tree->hasChildren(a));
    QVERIFY(!m_tree->isUnread(b));
    QVERIFY(!m_tree->hasChildren(b));
    const QModelIndex placeholder = m_tree->index(0, 0, a);
    QCOMPARE(m_tree->text(placeholder), QStringLiteral("?"));
    QCOMPARE(m_tree->tag(placeholder), EntryTag::DM);
    QVERIFY(!(m_tree->flags(placeholder) & Qt::ItemIsSelectable));
    QVERIFY(m_tree->flags(a) & Qt::ItemIsEditable);

    m_tree->markUnread(b);
    QVERIFY(m_tree->isUnread(b));
    m_tree->markUnread(b);
    QCOMPARE(m_tree->rowCount(b), 1);
    m_tree->removeChildren(b);
    QVERIFY(!m_tree->isUnread(b));
}

void tst_FolderTree::realFolderCalledQuestionMark()
{
    const QModelIndex root = m_tree->setRoot(QStringLiteral("/"));
    m_tree->addChild(root, folder(QStringLiteral("?")));
    QVERIFY(!m_tree->isUnread(root));
    QVERIFY(m_tree->child(root, QStringLiteral("?"), Qt::CaseSensitive).isValid());
    m_tree->removeChildren(root);
    m_tree->markUnread(root);
    QVERIFY(m_tree->isUnread(root));
    QVERIFY(!m_tree->child(root, QStringLiteral("?"), Qt::CaseSensitive).isValid());
}

void tst_FolderTree::paths_data()
{
    QTest::addColumn<QChar>("separator");
    QTest::addColumn<QString>("root");
    QTest::addColumn<QString>("path");
    QTest::newRow("unix root") << QChar(u'/') << "/"
                               << "/usr/lib";
    QTest::newRow("folder") << QChar(u'/') << "/home"
                            << "/home/usr/lib";
    QTest::newRow("bare drive") << QChar(u'\\') << "C:"
                                << "C:\\usr\\lib";
    QTest::newRow("drive root") << QChar(u'\\') << "C:\\"
                                << "C:\\usr\\lib";
    QTest::newRow("server") << QChar(u'/') << "ftp.example.jp/pub"
                            << "ftp.example.jp/pub/usr/lib";
}

void tst_FolderTree::paths()
{
    QFETCH(QChar, separator);
    QFETCH(QString, root);
    QFETCH(QString, path);
    FolderTree tree(separator);
    tree.setRoot(root);
    QCOMPARE(tree.path(tree.root()), root);
    const QModelIndex usr = tree.addChild(tree.root(), folder(QStringLiteral("usr")));
    const QModelIndex lib = tree.addChild(usr, folder(QStringLiteral("lib")));
    QCOMPARE(tree.path(lib), path);
    QCOMPARE(tree.path({}), QString());
}

void tst_FolderTree::childByText()
{
    const QModelIndex root = m_tree->setRoot(QStringLiteral("/"));
    QVERIFY(m_tree->addChildren(root, {folder(QStringLiteral("DOC")), folder(QStringLiteral("doc")),
                                       folder(QStringLiteral("Web"))}));
    const auto found = [&](const QString &text, Qt::CaseSensitivity how) {
        return m_tree->text(m_tree->child(root, text, how));
    };
    QCOMPARE(found(QStringLiteral("doc"), Qt::CaseSensitive), QStringLiteral("doc"));
    QCOMPARE(found(QStringLiteral("doc"), Qt::CaseInsensitive), QStringLiteral("doc"));
    QCOMPARE(found(QStringLiteral("Doc"), Qt::CaseInsensitive), QStringLiteral("DOC"));
    QCOMPARE(found(QStringLiteral("web"), Qt::CaseInsensitive), QStringLiteral("Web"));
    QVERIFY(!m_tree->child(root, QStringLiteral("web"), Qt::CaseSensitive).isValid());
    QVERIFY(!m_tree->child({}, QStringLiteral("web"), Qt::CaseSensitive).isValid());
}

void tst_FolderTree::nodeByKey()
{
    const QModelIndex root = m_tree->setRoot(QStringLiteral("/"));
    const QModelIndex a = m_tree->addChild(root, folder(QStringLiteral("a"), true));
    const QString inner = m_tree->key(m_tree->index(0, 0, a));
    QCOMPARE(m_tree->node(QStringLiteral("N0000")), root);
    QCOMPARE(m_tree->node(m_tree->key(a)), a);
    QCOMPARE(m_tree->node(inner).parent(), a);
    m_tree->remove(a);
    QVERIFY(!m_tree->node(QStringLiteral("N0001")).isValid());
    QVERIFY(!m_tree->node(inner).isValid());
    QVERIFY(!m_tree->node(QStringLiteral("N9999")).isValid());
}

void tst_FolderTree::removing()
{
    const QModelIndex root = m_tree->setRoot(QStringLiteral("/"));
    QVERIFY(m_tree->addChildren(root, {folder(QStringLiteral("a"), true),
                                       folder(QStringLiteral("b"), true),
                                       folder(QStringLiteral("c"), true)}));
    const QPersistentModelIndex c = m_tree->index(2, 0, root);
    m_tree->remove(m_tree->index(0, 0, root));
    QCOMPARE(m_tree->rowCount(root), 2);
    QCOMPARE(c.row(), 1);
    QCOMPARE(m_tree->path(c), QStringLiteral("/c"));
    QCOMPARE(m_tree->index(0, 0, c).parent(), QModelIndex(c));
    m_tree->removeChildren(root);
    QVERIFY(!c.isValid());
    QVERIFY(!m_tree->hasChildren(root));
    m_tree->remove(root);
    QVERIFY(!m_tree->root().isValid());
}

void tst_FolderTree::renaming()
{
    const QModelIndex root = m_tree->setRoot(QStringLiteral("/"));
    const QModelIndex made =
        m_tree->addChild(root, {QStringLiteral("_Directry"), false, false, EntryTag::NW});
    QSignalSpy changed(m_tree.get(), &QAbstractItemModel::dataChanged);
    m_tree->setText(made, QStringLiteral("新"));
    m_tree->setTag(made, EntryTag::FD);
    QCOMPARE(changed.size(), 2);
    m_tree->setText(made, QStringLiteral("新"));
    m_tree->setTag(made, EntryTag::FD);
    QCOMPARE(changed.size(), 2);
    QCOMPARE(made.data().toString(), QStringLiteral("新"));
    QCOMPARE(made.data(entryTagRole).toInt(), static_cast<int>(EntryTag::FD));
    QCOMPARE(m_tree->path(made), QStringLiteral("/新"));
}

void tst_FolderTree::dropTargetIsBold()
{
    const QModelIndex root = m_tree->setRoot(QStringLiteral("/"));
    const QModelIndex a = m_tree->addChild(root, folder(QStringLiteral("a")));
    QVERIFY(!a.data(Qt::FontRole).isValid());
    m_tree->setDropTarget(a);
    QVERIFY(a.data(Qt::FontRole).value<QFont>().bold());
    QCOMPARE(m_tree->dropTarget(), a);
    m_tree->setDropTarget(root);
    QVERIFY(!a.data(Qt::FontRole).isValid());
    QVERIFY(root.data(Qt::FontRole).value<QFont>().bold());
    m_tree->setDropTarget({});
    QVERIFY(!root.data(Qt::FontRole).isValid());
    m_tree->setDropTarget(a);
    m_tree->remove(a);
    QVERIFY(!m_tree->dropTarget().isValid());
}

void tst_FolderTree::paleFollowsThePalette()
{
    const QModelIndex root = m_tree->setRoot(QStringLiteral("/"));
    const QModelIndex hidden =
        m_tree->addChild(root, {QStringLiteral(".git"), false, true, EntryTag::FD});
    const auto lightness = [&] {
        return hidden.data(Qt::ForegroundRole).value<QBrush>().color().lightness();
    };
    QVERIFY(!root.data(Qt::ForegroundRole).isValid());
    const QPalette before = QGuiApplication::palette();
    QPalette palette = before;
    palette.setColor(QPalette::Text, Qt::black);
    palette.setColor(QPalette::Base, Qt::white);
    QGuiApplication::setPalette(palette);
    const int light = lightness();
    palette.setColor(QPalette::Text, Qt::white);
    palette.setColor(QPalette::Base, Qt::black);
    QGuiApplication::setPalette(palette);
    const int dark = lightness();
    QGuiApplication::setPalette(before);
    QVERIFY(light > 50 && light < 128);
    QVERIFY(dark > 128 && dark < 205);
}

void tst_FolderTree::iconsComeOnce()
{
    QStringList asked;
    m_tree->setIconSource([&asked, this](const QModelIndex &node, bool open) {
        asked += m_tree->path(node) + (open ? QStringLiteral(" open") : QStringLiteral(" closed"));
        QPixmap pixmap(16, 16);
        pixmap.fill(open ? Qt::red : Qt::blue);
        return QIcon(pixmap);
    });
    const QModelIndex root = m_tree->setRoot(QStringLiteral("/"));
    const QModelIndex a = m_tree->addChild(root, folder(QStringLiteral("a"), true));
    asked.clear(); // the model's tester reads everything
    m_tree->setText(a, QStringLiteral("b"));
    static_cast<void>(a.data(Qt::DecorationRole));
    static_cast<void>(a.data(Qt::DecorationRole));
    QCOMPARE(asked, QStringList{QStringLiteral("/b closed")});
    m_tree->setOpenNode(a);
    QVERIFY(!a.data(Qt::DecorationRole).value<QIcon>().isNull());
    QCOMPARE(asked.last(), QStringLiteral("/b open"));
    m_tree->setOpenNode({});
    static_cast<void>(a.data(Qt::DecorationRole));
    QCOMPARE(asked.size(), 2);
    QVERIFY(!m_tree->index(0, 0, a).data(Qt::DecorationRole).isValid());
}

void tst_FolderTree::manyChildren()
{
    m_tester.reset();
    m_tree->setRoot(QStringLiteral("/"));
    std::vector<FolderTree::Entry> entries;
    for (int i = 0; i < 30000; ++i)
        entries.push_back(folder(QString::number(i)));
    QSignalSpy inserted(m_tree.get(), &QAbstractItemModel::rowsInserted);
    QVERIFY(m_tree->addChildren(m_tree->root(), entries));
    QCOMPARE(inserted.size(), 1);
    QCOMPARE(m_tree->rowCount(m_tree->root()), 30000);
    const QModelIndex last = m_tree->index(29999, 0, m_tree->root());
    QCOMPARE(last.parent(), m_tree->root());
    QCOMPARE(m_tree->node(m_tree->key(last)), last);
}

void tst_FolderTree::manyRemovals()
{
    m_tester.reset();
    const QModelIndex root = m_tree->setRoot(QStringLiteral("/"));
    std::vector<FolderTree::Entry> entries;
    for (int i = 0; i < 1000; ++i)
        entries.push_back(folder(QString::number(i)));
    QVERIFY(m_tree->addChildren(root, entries));
    for (int i = 0; i < 1000; i += 2)
        m_tree->remove(m_tree->child(root, QString::number(i), Qt::CaseSensitive));
    QCOMPARE(m_tree->rowCount(root), 500);
    for (int row = 0; row < 500; ++row) {
        const QModelIndex node = m_tree->index(row, 0, root);
        QCOMPARE(m_tree->text(node), QString::number(2 * row + 1));
        QCOMPARE(m_tree->node(m_tree->key(node)).row(), row);
    }
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_FolderTree)
#include "tst_FolderTree.moc"
