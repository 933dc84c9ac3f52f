#include "ftp/StatFixture.h"

namespace venlo::test
{

QDateTime daysAgo(int days)
{
    static const QDateTime now = QDateTime::currentDateTimeUtc();
    return now.addDays(-days);
}

QStringList toTheMinute(QStringList rows)
{
    for (QString &row : rows) {
        const auto size = row.lastIndexOf(QLatin1Char('|'));
        row.remove(size - 3, 3);
    }
    return rows;
}

void StatFixture::putFolders(int count)
{
    server.tree().makeFolder("/d00", daysAgo(3));
    for (int i = 0; i < count; ++i) {
        const QByteArray dir = folder(i);
        server.tree().makeFolder(dir, daysAgo(3));
        server.put(dir + "/a.txt", QByteArray(i, 'a'), daysAgo(3));
        server.put(dir + "/b.txt", "b", daysAgo(3));
    }
}

void StatFixture::putMixedTree()
{
    server.put("/index.html", "index", daysAgo(2));
    server.put("/.htaccess", "hidden", daysAgo(2));
    for (const char *dir :
         {"/plain", "/plain/deep", "/plain/deep/deeper", "/with blank", "/with blank/below",
          "/[brackets]", "/dots", "/.hidden", "/old", "/links", "/empty", "/-dash",
          "/\xe6\x97\xa5\xe6\x9c\xac", "/\xe6\x97\xa5\xe6\x9c\xac/\xe8\xaa\x9e", "/Case", "/case"})
        server.tree().makeFolder(dir, daysAgo(1));
    for (const char *file :
         {"/plain/a.txt", "/plain/ lead", "/plain/trail ", "/plain/deep/it's.txt",
          "/plain/deep/deeper/\"q\" [x] *.txt", "/with blank/a b.txt", "/with blank/below/c.txt",
          "/[brackets]/d.txt", "/dots/.profile", "/dots/e.txt", "/.hidden/f.txt", "/links/g.txt",
          "/-dash/-la", "/\xe6\x97\xa5\xe6\x9c\xac/h.txt",
          "/\xe6\x97\xa5\xe6\x9c\xac/\xe8\xaa\x9e/\xe5\xad\x97.txt", "/Case/i.txt", "/case/j.txt"})
        server.put(file, QByteArray(file), daysAgo(static_cast<int>(qstrlen(file))));
    server.put("/old/k.txt", "old", daysAgo(900));
    server.put("/old/l.txt", "new", daysAgo(4));
    server.tree().makeLink("/links/link", "g.txt");
}

} // namespace venlo::test
