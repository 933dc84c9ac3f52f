#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace venlo
{

/// What a column holds. Private is anything no Jet statement can make (bytes).
enum class JetType { Text, Memo, Byte, Long, Date, YesNo, Private };

struct JetColumn {
    QString name;
    JetType type = JetType::Private;
    int length = 0; ///< characters of a Text column

    /// How the column's type is written in the file.
    [[nodiscard]] QString storedType() const;
    [[nodiscard]] static JetColumn fromStored(const QString &name, const QString &type);
};

/// Private names hold a blank, which no statement can express.
[[nodiscard]] bool isPrivateName(const QString &name);

/// A name as it is written in the store's own language.
[[nodiscard]] QString quotedName(const QString &name);

struct JetTable {
    QString name;
    std::vector<JetColumn> columns;

    /// By name in any letter case; null when there is none.
    [[nodiscard]] const JetColumn *column(const QString &anyCase) const;
};

/// The tables of the file. A value, so that statements can be translated without a file.
class JetCatalogue
{
public:
    JetCatalogue() = default;
    explicit JetCatalogue(std::vector<JetTable> tables) : m_tables(std::move(tables)) {}

    /// By name in any letter case; null when there is none.
    [[nodiscard]] const JetTable *table(const QString &anyCase) const;
    /// Names without the private ones, in their own spelling, in the order they were created.
    [[nodiscard]] QStringList tableNames() const;

private:
    std::vector<JetTable> m_tables;
};

} // namespace venlo
