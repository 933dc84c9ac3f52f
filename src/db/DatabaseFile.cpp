#include "db/DatabaseFile.h"

#include "db/DbError.h"
#include "db/Store.h"
#include "platform/Files.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>

namespace venlo
{

namespace
{
constexpr qsizetype headerSize = 32;
constexpr std::array ourTables{"msSite", "msSync", "tbFold", "tbFile"};

constexpr std::array initialStatements{
    "Create Table msSite (sName Text(255), sSvr Text(255), sUsr Text(255), sPwd Text(255), "
    "sPxy Text(255), bPsv YesNo, bSvDb YesNo, sMemo Memo)",
    // Two sites may have one name for a while: renaming does not look.
    "Create Index sName On msSite (sName)",
    "Create Table msSync (sSync Text(255), sLph Text(255), sName Text(255), sFph Text(255), "
    "bCfl YesNo, bCfd YesNo, sMemo Memo)",
    "Create Index PrimaryKey On msSync (sSync) With Primary",
    "Create Table tbFold (sPh Memo, sUL Memo, sUF Memo, sEd Memo)",
    "Create Index sPh On tbFold (sPh)",
    "Create Table tbFile (sPh Memo, sFL Memo, sUL Memo, nSL Long, sUF Memo, nSF Long, sEd Memo)",
    "Create Index sPhFL On tbFile (sPh, sFL)"};
} // namespace

FileKind kindOfFile(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return FileKind::Missing;
    if (!info.isFile())
        return FileKind::Foreign;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return FileKind::Unreadable;
    const QByteArray header = file.read(headerSize);
    if (header.startsWith(QByteArrayView("SQLite format 3\0", 16)))
        return FileKind::Sqlite;
    const QByteArray engine = header.mid(4);
    const bool jet = engine.startsWith("Standard Jet DB") || engine.startsWith("Standard ACE DB");
    return jet ? FileKind::Jet : FileKind::Foreign;
}

bool holdsOurTables(Store &store)
{
    return store.userVersion() <= tablesVersion &&
           std::all_of(ourTables.begin(), ourTables.end(), [&store](const char *name) {
               return store.table(QLatin1String(name)) != nullptr;
           });
}

void createInitialDatabase(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || !makePrivateFile(path))
        throw DbError(path + QStringLiteral(" : ") + file.errorString());
    file.close();
    Store store;
    store.open(path, Store::Mode::Create);
    store.begin();
    for (const char *statement : initialStatements)
        store.execJet(QLatin1String(statement));
    store.setUserVersion(tablesVersion);
    store.commit();
}

} // namespace venlo
