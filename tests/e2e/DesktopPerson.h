#pragma once

#include <atomic>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>

#include <QPoint>
#include <QRect>
#include <QString>
#include <QStringList>

class QThread;
class QWidget;

namespace venlo::test
{

/// Why a person's script could not go on.
struct StepFailed {
    QString why;
};

/// Somebody in front of the display: a script in a thread of its own that points, clicks and types
/// by real X events while the program runs in the main thread. Widgets are only looked at from
/// within the main thread. Every wait has a limit; when a step fails, a picture is kept and the
/// person closes everything, so that the program ends and the test can say why.
///
/// Widgets are named by object name, or by a path of such names ("uFtp/LsView"); only what is
/// visible counts. Captions are given without their mnemonics.
///
///     DesktopPerson person(pictures);
///     person.start([&] { person.click("uFtp/imElse"); ... person.pickMenu("FTP", "終了"); });
///     status = runWithWindows(...);
///     QVERIFY2(person.finished(), qPrintable(person.failure()));
class DesktopPerson
{
public:
    /// pictures: the folder for pictures of the display. It is made.
    explicit DesktopPerson(QString pictures);
    ~DesktopPerson();
    Q_DISABLE_COPY_MOVE(DesktopPerson)

    void start(std::function<void()> script);
    /// Called when the program has ended: waits for the script's end. True when every step went
    /// well.
    [[nodiscard]] bool finished();
    [[nodiscard]] const QString &failure() const { return m_failure; }

    // Below: for the script's thread only.

    void click(const QString &widget);
    void doubleClick(const QString &widget);
    void clickRow(const QString &view, const QString &text);
    void rightClickRow(const QString &view, const QString &text);
    void doubleClickRow(const QString &view, const QString &text);
    /// The empty space of a view below its last row.
    void rightClickSpace(const QString &view);
    /// The arrow before an entry of a tree.
    void clickArrow(const QString &tree, const QString &text);
    void chooseInBox(const QString &comboBox, const QString &text);
    /// Picks an entry of the popup menu that shows.
    void pickPopup(const QStringList &captions);
    void pickMenuBar(const QString &menu, const QString &entry);
    /// Waits for a box whose text holds the part, and presses the button.
    void answer(const QString &part, const QString &button = QStringLiteral("OK"));
    /// The same by keyboard: the key goes to the box.
    void answerByKey(const QString &part, const QString &key);

    /// ASCII text as typed on a keyboard.
    void type(const QString &text);
    /// A key as xdotool names it: "Return", "ctrl+v", "shift+F10".
    void key(const QString &name, int times = 1);
    /// Presses Tab until the widget has the focus; StepFailed when it never gets it.
    void tabTo(const QString &widget);
    /// Picks an entry of the popup menu that shows by the arrow keys.
    void pickByKeys(const QStringList &captions);
    /// Gives the active window that size, as pulling at its corner does.
    void resizeWindow(int width, int height);
    /// The window manager's key for closing the active window.
    void closeWindow() { key(QStringLiteral("alt+F4")); }
    /// Pulls with the left button; keys ("shift") are held while it is released.
    void drag(const QPoint &from, const QPoint &to, const QString &heldKey = {});
    /// Runs while the button is still down, above the target.
    void drag(const QPoint &from, const QPoint &to, const std::function<void()> &above);

    [[nodiscard]] QPoint rowPoint(const QString &view, const QString &text);
    [[nodiscard]] QPoint spacePoint(const QString &view);
    [[nodiscard]] QPoint widgetPoint(const QString &widget);

    void waitForWindow(const QString &objectName);
    void waitForRow(const QString &view, const QString &text);
    void waitForNoRow(const QString &view, const QString &text);
    void waitForFocus(const QString &widget);
    /// Waits until the predicate, asked in the main thread, holds.
    void waitFor(const QString &what, std::function<bool()> predicate, int limitMs = 10'000);
    /// The same asked in the script's thread, for what does not concern widgets.
    void waitOutside(const QString &what, const std::function<bool()> &predicate,
                     int limitMs = 20'000);
    void check(bool holds, const QString &what) const;

    /// Keeps a picture of the whole display, or of one window, as "name.png".
    void picture(const QString &name);
    void pictureOf(const QString &window, const QString &name);

    /// Runs in the main thread and hands the result back.
    template <typename Look>
    auto look(Look &&looks) -> std::invoke_result_t<Look>
    {
        using Result = std::invoke_result_t<Look>;
        std::exception_ptr thrown;
        if constexpr (std::is_void_v<Result>) {
            inProgram(guarded(looks, thrown));
            rethrow(thrown);
        } else {
            std::optional<Result> result;
            inProgram(guarded([&] { result.emplace(looks()); }, thrown));
            rethrow(thrown);
            return std::move(*result);
        }
    }

private:
    struct Pending;
    template <typename Look>
    static std::function<void()> guarded(Look &&looks, std::exception_ptr &thrown)
    {
        return [&] {
            try {
                looks();
            } catch (...) {
                thrown = std::current_exception();
            }
        };
    }
    static void rethrow(const std::exception_ptr &thrown)
    {
        if (thrown)
            std::rethrow_exception(thrown);
    }
    void inProgram(std::function<void()> looks);
    void run(const std::function<void()> &script);
    void giveUp();
    void xdotool(const QStringList &arguments) const;
    void press(const QPoint &at, int button, int times = 1) const;
    [[nodiscard]] QPoint steady(const QString &what, const std::function<QPoint()> &place);
    void dragTo(const QPoint &from, const QPoint &to) const;

    QString m_pictures;
    QString m_failure;
    std::unique_ptr<QThread> m_thread;
    std::atomic<bool> m_programEnded = false;
};

/// The visible widget of that name or path of names; StepFailed when there is none. A modal window
/// is searched first. Main thread only.
[[nodiscard]] QWidget &shownWidget(const QString &path);
template <typename Widget>
[[nodiscard]] Widget &shown(const QString &path)
{
    auto *widget = qobject_cast<Widget *>(&shownWidget(path));
    if (widget == nullptr)
        throw StepFailed{path + QStringLiteral(" is something else")};
    return *widget;
}

} // namespace venlo::test
