#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QFileInfo>
#include <QLineEdit>
#include <QListWidget>
#include <QMainWindow>
#include <QMenuBar>
#include <QMessageBox>
#include <QSplitter>
#include <QTemporaryDir>

#include "e2e/DesktopMain.h"
#include "e2e/DesktopPerson.h"
#include "e2e/WidgetPlaces.h"

namespace venlo::test
{

namespace
{
/// A window with a little of everything: menu, box, text, and two lists to drag between.
class PlainWindow : public QMainWindow
{
public:
    PlainWindow()
    {
        setObjectName(QStringLiteral("plain"));
        auto *split = new QSplitter(this);
        for (QListWidget *list : {m_left, m_right}) {
            list->setDragDropMode(QAbstractItemView::DragDrop);
            list->setDefaultDropAction(Qt::CopyAction);
            list->setContextMenuPolicy(Qt::ActionsContextMenu);
            split->addWidget(list);
        }
        m_left->setObjectName(QStringLiteral("left"));
        m_right->setObjectName(QStringLiteral("right"));
        m_text->setObjectName(QStringLiteral("text"));
        split->addWidget(m_text);
        m_left->addItems({QStringLiteral("one"), QStringLiteral("two")});
        setCentralWidget(split);
        menuBar()
            ->addMenu(QStringLiteral("&File"))
            ->addAction(QStringLiteral("Ask(&A)"), this, [this] {
                QMessageBox box(QMessageBox::Question, QString(),
                                QStringLiteral("really remove it?"),
                                QMessageBox::Ok | QMessageBox::Cancel, this);
                box.setObjectName(QStringLiteral("messageBox"));
                box.button(QMessageBox::Cancel)->setText(QStringLiteral("ｷｬﾝｾﾙ"));
                m_answers << box.exec();
            });
        auto *clear = new QAction(QStringLiteral("clear"), m_left);
        m_left->addAction(clear);
        connect(clear, &QAction::triggered, m_left, &QListWidget::clear);
        resize(700, 300);
    }
    QListWidget *m_left = new QListWidget;
    QListWidget *m_right = new QListWidget;
    QLineEdit *m_text = new QLineEdit;
    QList<int> m_answers;
};
} // namespace

/// The person acts by real events, and ends a program in which a step goes wrong.
class tst_DesktopPerson : public QObject
{
    Q_OBJECT

public:
    explicit tst_DesktopPerson(QApplication &application) : m_application(application) {}

private Q_SLOTS:
    void clicksTypesAndAnswers();
    void dragsBetweenWidgets();
    void aFailedStepClosesEverything();

private:
    bool act(PlainWindow &window, const std::function<void()> &script);

    QApplication &m_application;
    QTemporaryDir m_pictures;
    DesktopPerson m_person{m_pictures.path()};
};

bool tst_DesktopPerson::act(PlainWindow &window, const std::function<void()> &script)
{
    window.show();
    m_person.start([&] {
        script();
        m_person.look([&] { window.close(); });
    });
    (void)m_application.exec();
    return m_person.finished();
}

void tst_DesktopPerson::clicksTypesAndAnswers()
{
    PlainWindow window;
    const bool well = act(window, [&] {
        m_person.click(QStringLiteral("plain/text"));
        m_person.waitForFocus(QStringLiteral("text"));
        m_person.type(QStringLiteral("a-b_C 1:2/x"));
        m_person.waitFor(QStringLiteral("the text"),
                         [&] { return window.m_text->text() == QLatin1String("a-b_C 1:2/x"); });
        m_person.key(QStringLiteral("BackSpace"), 3);
        m_person.pickMenuBar(QStringLiteral("File"), QStringLiteral("Ask"));
        m_person.answer(QStringLiteral("remove"), QStringLiteral("ｷｬﾝｾﾙ"));
        m_person.pickMenuBar(QStringLiteral("File"), QStringLiteral("Ask"));
        m_person.answerByKey(QStringLiteral("remove"), QStringLiteral("Return"));
        m_person.rightClickRow(QStringLiteral("left"), QStringLiteral("two"));
        m_person.pickPopup({QStringLiteral("clear")});
        m_person.waitForNoRow(QStringLiteral("left"), QStringLiteral("two"));
    });
    QVERIFY2(well, qPrintable(m_person.failure()));
    QCOMPARE(window.m_text->text(), QStringLiteral("a-b_C 1:"));
    QCOMPARE(window.m_answers, QList<int>({QMessageBox::Cancel, QMessageBox::Ok}));
}

void tst_DesktopPerson::dragsBetweenWidgets()
{
    PlainWindow window;
    const bool well = act(window, [&] {
        m_person.drag(m_person.rowPoint(QStringLiteral("left"), QStringLiteral("two")),
                      m_person.spacePoint(QStringLiteral("right")));
        m_person.waitForRow(QStringLiteral("right"), QStringLiteral("two"));
        m_person.picture(QStringLiteral("dragged"));
    });
    QVERIFY2(well, qPrintable(m_person.failure()));
    QVERIFY(QFileInfo(m_pictures.filePath(QStringLiteral("dragged.png"))).size() > 1000);
}

void tst_DesktopPerson::aFailedStepClosesEverything()
{
    PlainWindow window;
    const bool well = act(window, [&] {
        m_person.pickMenuBar(QStringLiteral("File"), QStringLiteral("Ask"));
        m_person.answer(QStringLiteral("remove"), QStringLiteral("no such button"));
    });
    QVERIFY(!well);
    QVERIFY2(m_person.failure().contains(QStringLiteral("no such button")) &&
                 m_person.failure().contains(QStringLiteral("really remove it?")),
             qPrintable(m_person.failure()));
    QVERIFY(QFileInfo::exists(
        m_pictures.filePath(QStringLiteral("failed-aFailedStepClosesEverything.png"))));
}

} // namespace venlo::test

int main(int argc, char **argv)
{
    return venlo::test::runOnDisplay<venlo::test::tst_DesktopPerson, QApplication>(argc, argv);
}

#include "tst_DesktopPerson.moc"
