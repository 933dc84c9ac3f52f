#include "platform/ShellFileOperation.h"

namespace venlo
{

ShellVerb shellVerbCode(const QString &verb)
{
    if (verb == QStringLiteral("移動"))
        return ShellVerb::Move;
    if (verb == QStringLiteral("複写"))
        return ShellVerb::Copy;
    if (verb == QStringLiteral("削除"))
        return ShellVerb::Delete;
    return ShellVerb::None;
}

quint16 shellFileFlags(ShellVerb verb, bool silent, bool noConfirm)
{
    constexpr quint16 silentFlag = 4;
    constexpr quint16 noConfirmFlag = 16;
    constexpr quint16 allowUndo = 64;
    unsigned flags = 0;
    if (verb == ShellVerb::Delete)
        flags |= allowUndo;
    if (silent)
        flags |= silentFlag;
    if (noConfirm)
        flags |= noConfirmFlag;
    return static_cast<quint16>(flags);
}

} // namespace venlo
