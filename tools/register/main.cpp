// venlo-register FOLDER SITE SERVER USER PASSWORD PATTERN LOCAL REMOTE [keep]
//
// Registers a site (passive mode; "keep" keeps its cache between connections) and a pattern in the
// "dbFtp.mdb" of a user data folder. What is registered under these names already is replaced. A
// PASSWORD "-" is read from the first line of stdin: other users see the arguments of a process.
#include "db/Database.h"
#include "db/Recordset.h"
#include "platform/CrashDump.h"
#include "shared/FrontEnd.h"

#include <cstdio>

#include <QDir>
#include <QFile>
#include <QStringList>

namespace
{

using namespace venlo;

/// Shows the database's messages on stderr and answers nothing.
class StderrFrontEnd : public FrontEnd
{
public:
    void message(const QString &text) override
    {
        std::fprintf(stderr, "%s\n", text.toUtf8().constData());
    }
    bool question(const QString &) override { return false; }
    bool retryOrCancel(const QString &) override { return false; }
    QString pickFolder(const QString &, const QString &) override { return {}; }
    OverwriteAnswer askOverwrite(const OverwriteQuestion &) override { return {}; }
    void showWait(const QString &) override {}
    void closeWait() override {}
    void setMessageLine(const QString &) override {}
    void addStatus(const QString &) override {}
    void progress(const TransferProgress &) override {}
    void outcome(const Outcome &) override {}
    void printResult(const QString &) override {}
    void warn(const QString &line) override { message(line); }
    [[nodiscard]] bool cancelled() const override { return false; }
    void yield() override {}
};

QStringList columns(std::initializer_list<const char *> names)
{
    QStringList list;
    for (const char *name : names)
        list.append(QLatin1String(name));
    return list;
}

QString firstLineOfInput()
{
    QFile input;
    if (!input.open(stdin, QIODevice::ReadOnly))
        return {};
    QByteArray line = input.readLine();
    while (line.endsWith('\n') || line.endsWith('\r'))
        line.chop(1);
    return QString::fromLocal8Bit(line);
}

void registerPair(Database &database, const QStringList &given)
{
    Transaction transaction(database);
    const auto sites = database.openTable(QStringLiteral("msSite"));
    (void)sites->remove(columns({"sName"}), {given.at(1)});
    sites->add(columns({"sName", "sSvr", "sUsr", "sPwd", "sPxy", "bPsv", "bSvDb"}),
               {given.at(1), given.at(2), given.at(3), given.at(4), QString(), -1,
                given.value(8) == QLatin1String("keep") ? -1 : 0});
    const auto patterns = database.openTable(QStringLiteral("msSync"));
    (void)patterns->remove(columns({"sSync"}), {given.at(5)});
    patterns->add(
        columns({"sSync", "sLph", "sName", "sFph", "bCfl", "bCfd"}),
        {given.at(5), QDir::toNativeSeparators(given.at(6)), given.at(1), given.at(7), 0, 0});
    transaction.commit();
}

} // namespace

int main(int argc, char **argv)
{
    QStringList given;
    for (int i = 1; i < argc; ++i)
        given.append(QString::fromLocal8Bit(argv[i]));
    if (given.size() < 8) {
        std::fputs("usage: venlo-register FOLDER SITE SERVER USER PASSWORD|- PATTERN LOCAL REMOTE "
                   "[keep]\n",
                   stderr);
        return 2;
    }
    keepMemoryOutOfCrashDumps();
    if (QString &password = given[4]; password == QLatin1String("-"))
        password = firstLineOfInput();
    StderrFrontEnd frontEnd;
    Database database(frontEnd, QDir(given.at(0)).absolutePath() + QLatin1Char('/'));
    bool ok = false;
    database.OpenDb(ok);
    if (!ok)
        return 1;
    try {
        registerPair(database, given);
    } catch (const DbError &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
