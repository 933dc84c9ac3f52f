#include "db/JetCatalogue.h"

namespace venlo
{

namespace
{
template <typename Named>
const Named *findNamed(const std::vector<Named> &all, const QString &anyCase)
{
    for (const Named &one : all) {
        if (one.name.compare(anyCase, Qt::CaseInsensitive) == 0)
            return &one;
    }
    return nullptr;
}
} // namespace

bool isPrivateName(const QString &name)
{
    return name.contains(QLatin1Char(' '));
}

QString quotedName(const QString &name)
{
    QString quoted = name;
    quoted.replace(QLatin1Char('"'), QStringLiteral("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

QString JetColumn::storedType() const
{
    switch (type) {
    case JetType::Text:
        return QStringLiteral("TEXT(%1)").arg(length);
    case JetType::Memo:
        return QStringLiteral("TEXT");
    case JetType::Byte:
        return QStringLiteral("TINYINT");
    case JetType::Long:
        return QStringLiteral("INTEGER");
    case JetType::Date:
        return QStringLiteral("REAL");
    case JetType::YesNo:
        return QStringLiteral("BOOLEAN");
    case JetType::Private:
        break;
    }
    return QStringLiteral("BLOB");
}

JetColumn JetColumn::fromStored(const QString &name, const QString &type)
{
    JetColumn column{name, JetType::Private, 0};
    if (type == QLatin1String("TEXT")) {
        column.type = JetType::Memo;
    } else if (type.startsWith(QLatin1String("TEXT("))) {
        column.type = JetType::Text;
        column.length = QStringView(type).mid(5).chopped(1).toInt();
    } else if (type == QLatin1String("TINYINT")) {
        column.type = JetType::Byte;
    } else if (type == QLatin1String("INTEGER")) {
        column.type = JetType::Long;
    } else if (type == QLatin1String("REAL")) {
        column.type = JetType::Date;
    } else if (type == QLatin1String("BOOLEAN")) {
        column.type = JetType::YesNo;
    }
    return column;
}

const JetColumn *JetTable::column(const QString &anyCase) const
{
    return findNamed(columns, anyCase);
}

const JetTable *JetCatalogue::table(const QString &anyCase) const
{
    return findNamed(m_tables, anyCase);
}

QStringList JetCatalogue::tableNames() const
{
    QStringList names;
    for (const JetTable &table : m_tables) {
        if (!isPrivateName(table.name))
            names.append(table.name);
    }
    return names;
}

} // namespace venlo
