#pragma once

#include "ftp/EngineFixture.h"
#include "ftp/RemoteOperations.h"
#include "support/ScriptedServer.h"
#include "support/Trees.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

namespace venlo::test
{

/// The operations on a scripted server with the site "web", and a local folder to work in.
struct OperationsFixture : EngineFixture {
    OperationsFixture() : operations(session, cache, person, flags) {}

    /// Starts the server, connects and forgets what was said up to then.
    [[nodiscard]] bool start()
    {
        if (!server.start())
            return false;
        registerSite(QStringLiteral("web"), server.server(), server.user(), server.password());
        const bool connected =
            connectTo(QStringLiteral("web"), server.server(), server.user(), server.password());
        forget();
        return connected;
    }
    void forget()
    {
        server.log().clear();
        person.clear();
    }
    /// Loads a directory's rows as a pane would, and forgets the dialogue.
    void browse(const QString &dir)
    {
        QString names;
        bool ok = false;
        cache.caLoadDir(dir, DirectoryCache::IfAbsent, names, ok);
        forget();
    }

    [[nodiscard]] QString here() const { return QDir::toNativeSeparators(local.path()); }
    [[nodiscard]] QString at(const QString &name) const
    {
        return QDir::toNativeSeparators(local.filePath(name));
    }
    void write(const QString &name, const QByteArray &bytes, const QDateTime &modified = {}) const
    {
        (void)makeTree(here(), {{name.toUtf8(), bytes, modified}});
    }
    [[nodiscard]] QByteArray read(const QString &name) const
    {
        QFile file(at(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<none>");
    }
    /// Names in the local folder, hidden ones included.
    [[nodiscard]] QStringList localNames() const
    {
        return QDir(here()).entryList(
            QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    }
    /// "done/given up/skipped" since the last reset.
    [[nodiscard]] QString counts() const
    {
        const OperationCounts &c = operations.counts();
        return QStringLiteral("%1/%2/%3").arg(c.done).arg(c.givenUp).arg(c.skipped);
    }
    /// The commands without those of a login.
    [[nodiscard]] QList<QByteArray> work() const
    {
        static const QList<QByteArray> login{"AUTH", "USER", "PASS", "FEAT",
                                             "OPTS", "TYPE", "QUIT"};
        QList<QByteArray> commands;
        for (const QByteArray &command : server.commands()) {
            if (!login.contains(command.split(' ').value(0)))
                commands.append(command);
        }
        return commands;
    }
    /// Logins behind the first.
    [[nodiscard]] int reconnects() const { return server.logins() - 1; }
    [[nodiscard]] QStringList status() const { return person.statusLines(); }

    ScriptedServer server;
    RemoteOperations operations;
    QTemporaryDir local;
};

} // namespace venlo::test
