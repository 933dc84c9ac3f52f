#pragma once

#include <QString>
#include <QStringList>
#include <QVariantList>

namespace venlo
{

class ComparisonWork;
class DirectoryCache;
class ErrorLog;
class Rows;

/// Gathers the FTP side as the cache has it.
class RemoteGathering
{
public:
    RemoteGathering(ComparisonWork &work, DirectoryCache &cache, const QString &site,
                    ErrorLog &errorLog);

    /// False when a statement failed: each one is logged, and names that broke one are shown.
    [[nodiscard]] bool gather();
    /// Takes the server's minute for files whose listing shows only a day, where both sides have
    /// them and the day does not decide already. Throws DbError.
    void refineDays();

private:
    void addRoot();
    void addFolders();
    void addFiles();
    void refine(const QString &dir, const QString &name);
    /// Statements that fail are logged and remembered; the rows of a failed query are none.
    [[nodiscard]] Rows ask(const QString &sql, const QVariantList &values);
    void failed(const QString &statement, const QString &words, const QString &path);
    [[nodiscard]] QString below(const QString &path) const;

    ComparisonWork &m_work;
    DirectoryCache &m_cache;
    QString m_site;
    ErrorLog &m_errorLog;
    QString m_root;
    bool m_ok = true;
    QStringList m_broken;
};

} // namespace venlo
