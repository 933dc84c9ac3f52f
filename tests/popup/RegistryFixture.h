#pragma once

#include <functional>

#include <QApplication>
#include <QTemporaryDir>
#include <QTest>
#include <QWidget>

#include "db/Database.h"
#include "db/DatabaseFile.h"
#include "gui/WindowDriver.h"
#include "support/ScriptedPerson.h"

namespace venlo::test
{

/// A fresh database and the person who is told what its dialogs say.
class RegistryFixture
{
public:
    RegistryFixture() : database(person, created())
    {
        bool ok = false;
        database.OpenDb(ok);
        if (!ok)
            qFatal("the test's database does not open");
    }
    void addSite(const QString &name, const QString &server = QStringLiteral("ftp.example.jp"))
    {
        database.run(QStringLiteral("Insert Into msSite (sName, sSvr, sUsr, sPwd, sPxy, bPsv,"
                                    " bSvDb, sMemo)"
                                    " Values ('?', '?', 'taro', 'himitsu', 'proxy:8080', -1, 0,"
                                    " 'memo')"),
                     {name, server});
    }
    void addPattern(const QString &sSync, const QString &sLph = QStringLiteral("/home/a"),
                    const QString &sName = QStringLiteral("site"),
                    const QString &sFph = QStringLiteral("/pub"))
    {
        database.run(QStringLiteral("Insert Into msSync (sSync, sLph, sName, sFph, bCfl, bCfd,"
                                    " sMemo) Values ('?', '?', '?', '?', -1, 0, 'memo')"),
                     {sSync, sLph, sName, sFph});
    }
    /// A query's rows, fields joined with "|", rows with a line feed.
    [[nodiscard]] QString stored(const QString &sql)
    {
        const Rows rows = database.query(sql);
        QStringList lines;
        for (int row = 0; row < rows.count(); ++row) {
            QStringList fields;
            for (int field = 0; field < rows.fields(); ++field)
                fields.append(rows.at(field, row).toString());
            lines.append(fields.join(QLatin1Char('|')));
        }
        return lines.join(QLatin1Char('\n'));
    }

private:
    [[nodiscard]] QString created()
    {
        const QString path = m_folder.path() + QLatin1Char('/');
        createInitialDatabase(path + QStringLiteral("dbFtp.mdb"));
        return path;
    }
    QTemporaryDir m_folder;

public:
    ScriptedPerson person;
    Database database;
};

/// Acts on a modal window once it shows and closes it afterwards, whatever the action found.
inline void whileShown(const QString &objectName, const std::function<void(QWidget &)> &action)
{
    whenShown(objectName, [action](QWidget &window) {
        if (!QTest::qWaitForWindowActive(&window))
            qFatal("the window never became active");
        action(window);
        window.close();
    });
}

template <typename Widget>
[[nodiscard]] Widget &part(QWidget &window, const char *name)
{
    auto *found = window.findChild<Widget *>(QString::fromLatin1(name));
    if (found == nullptr)
        qFatal("no %s", name);
    return *found;
}

inline void click(QWidget &window, const char *name)
{
    QTest::mouseClick(&part<QWidget>(window, name), Qt::LeftButton);
}

/// Every widget a person can reach has a name and an accessible name.
template <typename Kinds>
[[nodiscard]] QString unnamed(QWidget &window, const Kinds &kinds)
{
    QStringList missing;
    for (const QWidget *widget : window.findChildren<QWidget *>()) {
        for (const char *kind : kinds) {
            const bool inner = widget->objectName().startsWith(QLatin1String("qt_"));
            if (widget->inherits(kind) && !inner &&
                (widget->objectName().isEmpty() || widget->accessibleName().isEmpty()))
                missing.append(QString::fromLatin1(kind) + widget->objectName());
        }
    }
    return missing.join(QLatin1Char(','));
}

} // namespace venlo::test
