#include "db/JetSchema.h"

#include "db/JetLexer.h"

#include <algorithm>
#include <array>

namespace venlo
{

namespace
{
constexpr int longestText = 255;

/// Words that mean something else where a column may stand.
bool isReserved(const QString &word)
{
    static constexpr std::array reserved{"And",  "As",    "By",     "From",  "Is",     "Like",
                                         "Not",  "Null",  "Or",     "Order", "Select", "Set",
                                         "True", "False", "Values", "Where", "Count",  "Mid"};
    return std::any_of(reserved.begin(), reserved.end(), [&](const char *one) {
        return word.compare(QLatin1String(one), Qt::CaseInsensitive) == 0;
    });
}

int textLength(JetLexer &lexer)
{
    if (!lexer.takeSymbol(QLatin1String("(")))
        return longestText;
    const JetLexer::Token token = lexer.take();
    bool number = false;
    const int length = token.text.toInt(&number);
    if (token.kind != JetLexer::Kind::Number || !number || length < 1 || length > longestText)
        JetLexer::failAt(token.at, QStringLiteral("Text の長さは 1 から 255 までです"));
    lexer.expectSymbol(QLatin1String(")"));
    return length;
}

void readType(JetLexer &lexer, JetColumn &column)
{
    struct Name {
        const char *word;
        JetType type;
    };
    static constexpr std::array names{
        Name{"Text", JetType::Text},   Name{"Memo", JetType::Memo}, Name{"Byte", JetType::Byte},
        Name{"Long", JetType::Long},   Name{"Date", JetType::Date}, Name{"DateTime", JetType::Date},
        Name{"YesNo", JetType::YesNo}, Name{"Bit", JetType::YesNo}};
    for (const Name &name : names) {
        if (!lexer.takeWord(QLatin1String(name.word)))
            continue;
        column.type = name.type;
        if (name.type == JetType::Text)
            column.length = textLength(lexer);
        return;
    }
    lexer.failHere();
}

/// The condition a column's values meet, and how a person reads it.
struct Limit {
    QString condition;
    QString words;
};

Limit limitOf(const JetColumn &column)
{
    switch (column.type) {
    case JetType::Text:
        return {QStringLiteral("typeof(%1) IN ('text','null') AND ifnull(length(%1),0) <= ") +
                    QString::number(column.length),
                QStringLiteral("%1文字まで").arg(column.length)};
    case JetType::Memo:
        return {QStringLiteral("typeof(%1) IN ('text','null')"), QStringLiteral("文字列")};
    case JetType::Byte:
        return {QStringLiteral("%1 IS NULL OR (typeof(%1)='integer' AND %1 BETWEEN 0 AND 255)"),
                QStringLiteral("0から255まで")};
    case JetType::Long:
        return {QStringLiteral("%1 IS NULL OR (typeof(%1)='integer' AND "
                               "%1 BETWEEN -2147483648 AND 2147483647)"),
                QStringLiteral("-2147483648から2147483647まで")};
    case JetType::Date:
        return {QStringLiteral("typeof(%1) IN ('real','null')"), QStringLiteral("日付")};
    case JetType::YesNo:
    case JetType::Private:
        break;
    }
    return {QStringLiteral("typeof(%1)='integer' AND %1 IN (-1,0,1)"), QStringLiteral("Yes/No")};
}

QString definition(const JetColumn &column)
{
    const bool text = column.type == JetType::Text || column.type == JetType::Memo;
    const QString name = quotedName(column.name);
    const Limit limit = limitOf(column);
    QString sql = name + QLatin1Char(' ') + column.storedType();
    if (text)
        sql += QStringLiteral(" COLLATE venlo");
    if (column.type == JetType::YesNo)
        sql += QStringLiteral(" NOT NULL DEFAULT 0");
    sql += QStringLiteral(" CONSTRAINT ") +
           quotedName(column.name + QStringLiteral(": ") + limit.words);
    return sql + QStringLiteral(" CHECK (") + limit.condition.arg(name) + QLatin1Char(')');
}

/// Text of a trigger that refuses Null in key columns.
QString keyTrigger(const JetIndex &index, const QString &event, const QString &anyNull)
{
    return QStringLiteral("CREATE TRIGGER %1 BEFORE %2 ON %3 WHEN %4 BEGIN "
                          "SELECT RAISE(ABORT, 'ｷｰの列に値がありません'); END")
        .arg(quotedName(index.table + QLatin1Char(' ') + index.name + QLatin1Char(' ') + event),
             event, quotedName(index.table), anyNull);
}

QString anyNull(const JetIndex &index, const QString &prefix)
{
    QStringList tests;
    for (const JetColumn *column : index.columns)
        tests.append(prefix + quotedName(column->name) + QStringLiteral(" IS NULL"));
    return tests.join(QStringLiteral(" OR "));
}
} // namespace

QStringList translateCreateTable(JetLexer &lexer, const QString &table)
{
    JetTable made{table, {}};
    QStringList definitions;
    lexer.expectSymbol(QLatin1String("("));
    do {
        const auto at = lexer.position();
        JetColumn column{lexer.expectName()};
        if (isReserved(column.name) || made.column(column.name))
            JetLexer::failAt(at, QStringLiteral("列名 \"%1\" は使えません").arg(column.name));
        readType(lexer, column);
        definitions.append(definition(column));
        made.columns.push_back(column);
    } while (lexer.takeSymbol(QLatin1String(",")));
    lexer.expectSymbol(QLatin1String(")"));
    return {QStringLiteral("CREATE TABLE %1 (%2)")
                .arg(quotedName(table), definitions.join(QLatin1Char(',')))};
}

/// Index names are unique within the file below; a blank, which no table name holds, joins table
/// and index to one.
QStringList translateCreateIndex(JetLexer &lexer, const JetIndex &index)
{
    bool primary = false;
    if (lexer.takeWord(QLatin1String("With"))) {
        lexer.expectWord(QLatin1String("Primary"));
        primary = true;
    }
    QStringList columns;
    for (const JetColumn *column : index.columns)
        columns.append(quotedName(column->name));
    QStringList sql;
    if (primary) {
        // Setting the columns to themselves runs the new trigger over the rows already there.
        const QString first = columns.first();
        sql << keyTrigger(index, QStringLiteral("INSERT"), anyNull(index, QStringLiteral("NEW.")))
            << keyTrigger(index, QStringLiteral("UPDATE"), anyNull(index, QStringLiteral("NEW.")))
            << QStringLiteral("UPDATE %1 SET %2=%2 WHERE %3")
                   .arg(quotedName(index.table), first, anyNull(index, {}));
    }
    const bool unique = index.unique || primary;
    sql << QStringLiteral("CREATE %1INDEX %2 ON %3 (%4)")
               .arg(unique ? QStringLiteral("UNIQUE ") : QString(),
                    quotedName(index.table + QLatin1Char(' ') + index.name),
                    quotedName(index.table), columns.join(QLatin1Char(',')));
    return sql;
}

} // namespace venlo
