#include "startup/ProgramName.h"

namespace venlo
{

QString programBaseName(const QString &executableBaseName)
{
    constexpr QLatin1String mark("_dv");
    const bool marked = executableBaseName.endsWith(mark, Qt::CaseInsensitive);
    return marked ? executableBaseName.chopped(mark.size()) : executableBaseName;
}

} // namespace venlo
