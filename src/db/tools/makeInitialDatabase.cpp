#include "db/DatabaseFile.h"
#include "db/DbError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstdio>

/// Writes the database that a new installation starts from. The one argument is its path.
int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fputs("usage: makeInitialDatabase PATH\n", stderr);
        return 2;
    }
    const QString path = QFile::decodeName(argv[1]);
    try {
        QDir().mkpath(QFileInfo(path).absolutePath());
        venlo::createInitialDatabase(path);
        // It holds nothing yet, and every user of an installation copies it.
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup |
                                        QFile::ReadOther);
    } catch (const venlo::DbError &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
