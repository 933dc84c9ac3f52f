#pragma once

#include <QModelIndex>
#include <QPoint>
#include <QString>

class QAbstractItemView;
class QMenu;
class QWidget;

namespace venlo::test
{

/// Where on the display a person would point. Global positions; StepFailed when what is looked for
/// is not there, greyed out or covered. Main thread only.
[[nodiscard]] QPoint placeOfWidget(const QString &path);
[[nodiscard]] QPoint placeOfRow(const QString &view, const QString &text);
[[nodiscard]] QPoint placeOfSpace(const QString &view);
[[nodiscard]] QPoint placeOfArrow(const QString &tree, const QString &text);
/// An entry of a popup menu that shows.
[[nodiscard]] QPoint placeOfEntry(const QString &caption);
[[nodiscard]] QPoint placeOfMenu(const QString &caption);
/// The button of the message box that holds the part.
[[nodiscard]] QPoint placeOfAnswer(const QString &part, const QString &button);

/// First cell of the row with that text, at any depth of a tree; invalid when there is none.
[[nodiscard]] QModelIndex rowOf(const QAbstractItemView &view, const QString &text);
/// A caption as it is read: without mnemonics and shortcut.
[[nodiscard]] QString plainCaption(QString caption);
/// Text of the message box that shows, empty when there is none.
[[nodiscard]] QString boxText();

} // namespace venlo::test
