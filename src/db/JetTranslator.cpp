#include "db/JetTranslator.h"

#include "db/JetExpression.h"
#include "db/JetLexer.h"
#include "db/JetSchema.h"

namespace venlo
{

namespace
{
constexpr QLatin1String comma(",");

/// The tables below are the store's own; no statement reaches them.
bool isStoresOwn(const QString &name)
{
    return name.startsWith(QLatin1String("sqlite_"), Qt::CaseInsensitive);
}

/// Translates one statement; lives as long as that takes.
class Translation
{
public:
    Translation(const QString &statement, const JetCatalogue &catalogue, const QDate &today)
        : m_lexer(statement), m_catalogue(catalogue), m_today(today)
    {
    }

    JetStatement run()
    {
        if (m_lexer.takeWord(QLatin1String("Select")))
            select();
        else if (m_lexer.takeWord(QLatin1String("Insert")))
            insert();
        else if (m_lexer.takeWord(QLatin1String("Update")))
            update();
        else if (m_lexer.takeWord(QLatin1String("Delete")))
            remove();
        else if (m_lexer.takeWord(QLatin1String("Create")))
            create();
        else if (m_lexer.takeWord(QLatin1String("Drop")))
            drop();
        else
            m_lexer.failHere();
        m_lexer.expectEnd();
        return std::move(m_result);
    }

private:
    const JetTable &knownTable()
    {
        const auto at = m_lexer.position();
        const QString name = m_lexer.takeTableName();
        const JetTable *found = isStoresOwn(name) ? nullptr : m_catalogue.table(name);
        if (!found)
            JetLexer::failAt(at, QStringLiteral("ﾃｰﾌﾞﾙ \"%1\" がありません").arg(name));
        return *found;
    }

    JetExpression expression(const JetTable &table)
    {
        return {m_lexer, table, m_today, m_result.values};
    }

    const JetColumn &column(const JetTable &table)
    {
        const auto at = m_lexer.position();
        return expression(table).column(m_lexer.expectName(), at);
    }

    void finish(JetStatement::Kind kind, const QString &sql)
    {
        m_result.kind = kind;
        m_result.sql = QStringList(sql);
    }

    QString where(const JetTable &table)
    {
        if (!m_lexer.takeWord(QLatin1String("Where")))
            return {};
        return QStringLiteral(" WHERE ") + expression(table).condition();
    }

    /// The columns come before the table that explains them: the list is passed over, the table
    /// read, then the list.
    void select()
    {
        const auto list = m_lexer.position();
        while (!m_lexer.takeWord(QLatin1String("From"))) {
            if (m_lexer.peek().kind == JetLexer::Kind::End)
                m_lexer.failHere();
            m_lexer.take();
        }
        const JetTable &table = knownTable();
        const auto behind = m_lexer.position();
        m_lexer.seek(list);
        QString sql = QStringLiteral("SELECT ") + selectList(table);
        m_lexer.expectWord(QLatin1String("From"));
        m_lexer.seek(behind);
        sql += QStringLiteral(" FROM ") + quotedName(table.name);
        sql += where(table);
        sql += orderBy(table);
        finish(JetStatement::Kind::Query, sql);
    }

    QString selectList(const JetTable &table)
    {
        if (m_lexer.takeSymbol(QLatin1String("*")))
            return allColumns(table).join(comma);
        QStringList pieces;
        do {
            pieces.append(selected(table));
        } while (m_lexer.takeSymbol(comma));
        return pieces.join(comma);
    }

    QString selected(const JetTable &table)
    {
        if (!m_lexer.atWord(QLatin1String("Count")))
            return expression(table).value();
        m_lexer.take();
        m_lexer.expectSymbol(QLatin1String("("));
        m_lexer.expectSymbol(QLatin1String("*"));
        m_lexer.expectSymbol(QLatin1String(")"));
        return QStringLiteral("COUNT(*)");
    }

    static std::vector<const JetColumn *> reachable(const JetTable &table)
    {
        std::vector<const JetColumn *> columns;
        for (const JetColumn &one : table.columns) {
            if (one.type != JetType::Private && !isPrivateName(one.name))
                columns.push_back(&one);
        }
        return columns;
    }

    static QStringList allColumns(const JetTable &table)
    {
        QStringList names;
        for (const JetColumn *one : reachable(table))
            names.append(quotedName(one->name));
        return names;
    }

    QString orderBy(const JetTable &table)
    {
        if (!m_lexer.takeWord(QLatin1String("Order")))
            return {};
        m_lexer.expectWord(QLatin1String("By"));
        QStringList pieces;
        do {
            QString piece = quotedName(column(table).name);
            if (m_lexer.takeWord(QLatin1String("Desc")))
                piece += QStringLiteral(" DESC");
            else
                m_lexer.takeWord(QLatin1String("Asc"));
            pieces.append(piece);
        } while (m_lexer.takeSymbol(comma));
        return QStringLiteral(" ORDER BY ") + pieces.join(comma);
    }

    void insert()
    {
        m_lexer.expectWord(QLatin1String("Into"));
        const JetTable &table = knownTable();
        auto columns = reachable(table);
        if (m_lexer.takeSymbol(QLatin1String("(")))
            columns = columnList(table);
        m_lexer.expectWord(QLatin1String("Values"));
        const auto at = m_lexer.position();
        m_lexer.expectSymbol(QLatin1String("("));
        const JetTable noTable;
        QStringList names;
        QStringList pieces;
        do {
            const auto index = static_cast<size_t>(pieces.size());
            if (index >= columns.size())
                failCounts(at);
            names.append(quotedName(columns[index]->name));
            pieces.append(expression(noTable).valueFor(*columns[index]));
        } while (m_lexer.takeSymbol(comma));
        m_lexer.expectSymbol(QLatin1String(")"));
        if (static_cast<size_t>(pieces.size()) != columns.size())
            failCounts(at);
        finish(JetStatement::Kind::Change,
               QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)")
                   .arg(quotedName(table.name), names.join(comma), pieces.join(comma)));
    }

    [[noreturn]] static void failCounts(qsizetype at)
    {
        JetLexer::failAt(at, QStringLiteral("列の数と値の数が一致しません"));
    }

    /// Behind the opening parenthesis; takes the closing one. No column twice.
    std::vector<const JetColumn *> columnList(const JetTable &table)
    {
        std::vector<const JetColumn *> columns;
        do {
            const auto at = m_lexer.position();
            const JetColumn &one = column(table);
            for (const JetColumn *before : columns) {
                if (before == &one)
                    JetLexer::failAt(at,
                                     QStringLiteral("列 \"%1\" が重複しています").arg(one.name));
            }
            columns.push_back(&one);
        } while (m_lexer.takeSymbol(comma));
        m_lexer.expectSymbol(QLatin1String(")"));
        return columns;
    }

    void update()
    {
        const JetTable &table = knownTable();
        m_lexer.expectWord(QLatin1String("Set"));
        QStringList pieces;
        do {
            const JetColumn &target = column(table);
            m_lexer.expectSymbol(QLatin1String("="));
            pieces.append(QStringLiteral("%1=").arg(quotedName(target.name)) +
                          expression(table).valueFor(target));
        } while (m_lexer.takeSymbol(comma));
        finish(JetStatement::Kind::Change, QStringLiteral("UPDATE ") + quotedName(table.name) +
                                               QStringLiteral(" SET ") + pieces.join(comma) +
                                               where(table));
    }

    void remove()
    {
        m_lexer.takeSymbol(QLatin1String("*"));
        m_lexer.expectWord(QLatin1String("From"));
        const JetTable &table = knownTable();
        finish(JetStatement::Kind::Change,
               QStringLiteral("DELETE FROM ") + quotedName(table.name) + where(table));
    }

    void create()
    {
        m_result.kind = JetStatement::Kind::Schema;
        if (m_lexer.takeWord(QLatin1String("Table"))) {
            const auto at = m_lexer.position();
            const QString name = m_lexer.takeTableName();
            if (isStoresOwn(name) || m_catalogue.table(name))
                JetLexer::failAt(at, QStringLiteral("ﾃｰﾌﾞﾙ \"%1\" は作れません").arg(name));
            m_result.sql = translateCreateTable(m_lexer, name);
            return;
        }
        const bool unique = m_lexer.takeWord(QLatin1String("Unique"));
        m_lexer.expectWord(QLatin1String("Index"));
        const QString index = m_lexer.expectName();
        m_lexer.expectWord(QLatin1String("On"));
        const JetTable &table = knownTable();
        m_lexer.expectSymbol(QLatin1String("("));
        const auto columns = columnList(table);
        m_result.sql = translateCreateIndex(m_lexer, {table.name, index, columns, unique});
    }

    void drop()
    {
        m_lexer.expectWord(QLatin1String("Table"));
        finish(JetStatement::Kind::Schema,
               QStringLiteral("DROP TABLE ") + quotedName(knownTable().name));
    }

    JetLexer m_lexer;
    const JetCatalogue &m_catalogue;
    QDate m_today;
    JetStatement m_result;
};
} // namespace

JetStatement translateJet(const QString &statement, const JetCatalogue &catalogue,
                          const QDate &today)
{
    return Translation(statement, catalogue, today).run();
}

} // namespace venlo
