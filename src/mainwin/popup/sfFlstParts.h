#pragma once

#include "mainwin/popup/sfFlst.h"

class QLabel;
class QLineEdit;
class QTableView;

namespace venlo
{

class FileListModel;

/// What the file list's window is made of.
struct sfFlst::Parts {
    Parts(Database &database, Session &session, WindowDesk &desk, sfFlst &window);

    Database &database;
    Session &session;
    WindowDesk &desk;
    FileListModel *model;
    QLineEdit *filter; ///< txFlt
    QTableView *grid;  ///< vSpr
    QLabel *shown;     ///< the path
    QLabel *count;
    QString path; ///< the one last shown
};

} // namespace venlo
