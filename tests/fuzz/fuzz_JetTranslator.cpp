// Statements: translated, or refused with an error; nothing else.
#include "db/DbError.h"
#include "db/JetTranslator.h"

#include "FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    using venlo::JetColumn;
    using venlo::JetType;
    static const venlo::JetCatalogue catalogue(
        {venlo::JetTable{QStringLiteral("tbFile"),
                         {JetColumn{QStringLiteral("sPh"), JetType::Text, 255},
                          JetColumn{QStringLiteral("sFL"), JetType::Memo, 0},
                          JetColumn{QStringLiteral("nSL"), JetType::Long, 0},
                          JetColumn{QStringLiteral("bFd"), JetType::Byte, 0},
                          JetColumn{QStringLiteral("dDate"), JetType::Date, 0},
                          JetColumn{QStringLiteral("bPsv"), JetType::YesNo, 0},
                          JetColumn{QStringLiteral("raw name"), JetType::Private, 0}}}});
    const QString statement = QString::fromUtf8(fuzzInput(data, size));
    try {
        const auto translated = venlo::translateJet(statement, catalogue, QDate(2026, 11, 21));
        promise(!translated.sql.isEmpty());
        for (const QString &sql : translated.sql)
            promise(!sql.contains(QLatin1String("raw name")));
    } catch (const venlo::DbError &error) {
        promise(!error.words().isEmpty());
    }
    return 0;
}
