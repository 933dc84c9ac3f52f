#include "db/Database.h"
#include "support/ScriptedPerson.h"

#include <QFile>

#include <cstdio>

/// Compacts the database of a user data folder again and again, until it is killed or the bound is
/// reached. Prints a line when it begins.
int main(int argc, char **argv)
{
    constexpr int mostRounds = 10000;
    if (argc != 2)
        return 2;
    venlo::test::ScriptedPerson person;
    person.allowMessages();
    venlo::Database db(person, QFile::decodeName(argv[1]));
    bool ok = false;
    db.OpenDb(ok);
    if (!ok)
        return 1;
    std::puts("begins");
    std::fflush(stdout);
    for (int i = 0; i < mostRounds; ++i)
        db.CompactDb();
    return 0;
}
