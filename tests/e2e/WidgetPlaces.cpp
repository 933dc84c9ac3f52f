#include "e2e/WidgetPlaces.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QRegularExpression>
#include <QTreeView>
#include <QWindow>

#include "e2e/DesktopPerson.h"

namespace venlo::test
{

namespace
{
QWidget *below(QWidget &root, const QString &name)
{
    if (root.objectName() == name && root.isVisible())
        return &root;
    for (QWidget *widget : root.findChildren<QWidget *>(name)) {
        if (widget->isVisible())
            return widget;
    }
    return nullptr;
}

QWidget *along(QWidget &root, const QStringList &names)
{
    QWidget *widget = &root;
    for (const QString &name : names) {
        widget = below(*widget, name);
        if (widget == nullptr)
            return nullptr;
    }
    return widget;
}

/// A press there must reach the widget: not another window, nor another widget.
QPoint reachable(const QWidget &widget, const QPoint &at, const QString &what)
{
    if (!widget.isEnabled())
        throw StepFailed{what + QStringLiteral(" is grey")};
    const QWindow *window = widget.window()->windowHandle();
    if (window == nullptr || !window->isExposed())
        throw StepFailed{what + QStringLiteral(" is not on the display yet")};
    const QPoint global = widget.mapToGlobal(at);
    const QWidget *hit = QApplication::widgetAt(global);
    if (hit == nullptr || (hit != &widget && !widget.isAncestorOf(hit)))
        throw StepFailed{what + QStringLiteral(" is covered")};
    return global;
}

QModelIndex findRow(const QAbstractItemModel &model, const QModelIndex &parent, const QString &text)
{
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        if (index.data().toString() == text)
            return index;
        if (const QModelIndex found = findRow(model, index, text); found.isValid())
            return found;
    }
    return {};
}

QModelIndex neededRow(QAbstractItemView &view, const QString &text)
{
    const QModelIndex index = rowOf(view, text);
    if (!index.isValid())
        throw StepFailed{QStringLiteral("no row ") + text};
    view.scrollTo(index);
    return index;
}

QMessageBox *messageBox()
{
    for (QWidget *window : QApplication::topLevelWidgets()) {
        auto *box = qobject_cast<QMessageBox *>(window);
        if (box != nullptr && box->isVisible())
            return box;
    }
    return nullptr;
}
} // namespace

QWidget &shownWidget(const QString &path)
{
    const QStringList names = path.split(QLatin1Char('/'));
    QWidgetList roots = QApplication::topLevelWidgets();
    if (QWidget *modal = QApplication::activeModalWidget())
        roots.prepend(modal);
    for (QWidget *root : std::as_const(roots)) {
        if (!root->isVisible())
            continue;
        if (QWidget *widget = along(*root, names))
            return *widget;
    }
    throw StepFailed{path + QStringLiteral(" does not show")};
}

QPoint placeOfWidget(const QString &path)
{
    const QWidget &widget = shownWidget(path);
    return reachable(widget, widget.rect().center(), path);
}

QModelIndex rowOf(const QAbstractItemView &view, const QString &text)
{
    return view.model() == nullptr ? QModelIndex() : findRow(*view.model(), {}, text);
}

QPoint placeOfRow(const QString &view, const QString &text)
{
    auto &list = shown<QAbstractItemView>(view);
    const QRect place = list.visualRect(neededRow(list, text)).intersected(list.viewport()->rect());
    if (place.isEmpty())
        throw StepFailed{text + QStringLiteral(" cannot be seen in ") + view};
    // On the text, which stands at the left.
    const QPoint at(place.left() + std::min(place.width() / 2, 30), place.center().y());
    return reachable(*list.viewport(), at, text);
}

QPoint placeOfSpace(const QString &view)
{
    const auto &list = shown<QAbstractItemView>(view);
    const QRect room = list.viewport()->rect();
    const QPoint at(room.width() / 2, room.height() - 8);
    if (list.indexAt(at).isValid())
        throw StepFailed{view + QStringLiteral(" has no empty space")};
    return reachable(*list.viewport(), at, view);
}

QPoint placeOfArrow(const QString &tree, const QString &text)
{
    auto &view = shown<QTreeView>(tree);
    const QModelIndex index = neededRow(view, text);
    if (!view.model()->hasChildren(index))
        throw StepFailed{text + QStringLiteral(" has no arrow")};
    const QRect place = view.visualRect(index);
    return reachable(*view.viewport(), {place.left() - view.indentation() / 2, place.center().y()},
                     text);
}

QPoint placeOfEntry(const QString &caption)
{
    for (QWidget *window : QApplication::topLevelWidgets()) {
        auto *menu = qobject_cast<QMenu *>(window);
        if (menu == nullptr || !menu->isVisible())
            continue;
        for (QAction *entry : menu->actions()) {
            if (plainCaption(entry->text()) != caption)
                continue;
            if (!entry->isEnabled())
                throw StepFailed{caption + QStringLiteral(" is grey")};
            return reachable(*menu, menu->actionGeometry(entry).center(), caption);
        }
    }
    throw StepFailed{QStringLiteral("no menu shows ") + caption};
}

QPoint placeOfMenu(const QString &caption)
{
    for (QWidget *window : QApplication::topLevelWidgets()) {
        for (auto *bar : window->findChildren<QMenuBar *>()) {
            for (QAction *entry : bar->actions()) {
                if (bar->isVisible() && plainCaption(entry->text()) == caption)
                    return reachable(*bar, bar->actionGeometry(entry).center(), caption);
            }
        }
    }
    throw StepFailed{QStringLiteral("no menu ") + caption};
}

QPoint placeOfAnswer(const QString &part, const QString &button)
{
    const QMessageBox *box = messageBox();
    if (box == nullptr)
        throw StepFailed{QStringLiteral("no box asks: ") + part};
    if (!box->text().contains(part))
        throw StepFailed{QStringLiteral("a box says: ") + box->text()};
    for (const QAbstractButton *each : box->buttons()) {
        if (plainCaption(each->text()) == button)
            return reachable(*each, each->rect().center(), button);
    }
    throw StepFailed{QStringLiteral("the box has no button ") + button};
}

QString plainCaption(QString caption)
{
    caption = caption.section(QLatin1Char('\t'), 0, 0);
    static const QRegularExpression bracketed(QStringLiteral("\\(&.\\)"));
    caption.remove(bracketed);
    return caption.remove(QLatin1Char('&'));
}

QString boxText()
{
    const QMessageBox *box = messageBox();
    return box != nullptr ? box->text() : QString();
}

} // namespace venlo::test
