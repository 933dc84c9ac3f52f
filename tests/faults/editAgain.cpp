#include "db/Database.h"
#include "db/Recordset.h"
#include "startup/settings/SettingsFile.h"
#include "support/ScriptedPerson.h"

#include <QFile>

#include <cstdio>

namespace
{
using namespace venlo;

void say(const char *what, int number)
{
    std::printf("%s %d\n", what, number);
    std::fflush(stdout);
}

bool saveSettings(FrontEnd &frontEnd, const QString &path, int number)
{
    yIni settings(frontEnd);
    bool loaded = false;
    settings.GetTxt(path, loaded);
    settings.GetGtx(QStringLiteral("crash"));
    settings.SetVal(QStringLiteral("first"), number);
    settings.SetVal(QStringLiteral("text"), QString(4000, QLatin1Char('x')));
    settings.SetVal(QStringLiteral("last"), number);
    settings.SetGtx();
    bool saved = false;
    settings.SetTxt(saved);
    return loaded && saved;
}
} // namespace

/// Registers sites and patterns and saves settings again and again, in a user data folder, until it
/// is killed or the bound is reached. Prints a line behind everything that is done.
int main(int argc, char **argv)
{
    constexpr int mostRounds = 100'000;
    if (argc != 3)
        return 2;
    const QString folder = QFile::decodeName(argv[1]);
    const int first = QByteArray(argv[2]).toInt();
    venlo::test::ScriptedPerson person;
    person.allowMessages();
    Database database(person, folder);
    bool ok = false;
    database.OpenDb(ok);
    for (int i = first; ok && i < first + mostRounds; ++i) {
        database.openTable(QStringLiteral("msSite"))
            ->add({QStringLiteral("sName"), QStringLiteral("sSvr"), QStringLiteral("bPsv")},
                  {QStringLiteral("s%1").arg(i), QStringLiteral("host"), -1});
        say("site", i);
        database.run(QStringLiteral("Insert Into msSync (sSync, sLph, sName, sFph)"
                                    " Values ('?', '?', '?', '?')"),
                     {QStringLiteral("p%1").arg(i), folder, QStringLiteral("s%1").arg(i),
                      QStringLiteral("/pub")});
        say("pattern", i);
        ok = saveSettings(person, folder + QStringLiteral("User.xml"), i);
        say("settings", i);
    }
    return ok ? 0 : 1;
}
