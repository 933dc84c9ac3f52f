#pragma once

#include "support/ScriptedTree.h"
#include "support/ServerOptions.h"

namespace venlo::test
{

/// A folder as LIST shows it in the dialect of the options.
[[nodiscard]] QByteArray listText(const std::vector<ScriptedTree::Item> &items,
                                  const ServerOptions &options);
/// A folder as STAT shows it on the control connection, without the lines around. all: "-a".
[[nodiscard]] QByteArray statText(const std::vector<ScriptedTree::Item> &items,
                                  const ServerOptions &options, bool all);
/// An entry as MLSD and MLST show it.
[[nodiscard]] QByteArray mlsdLine(const ScriptedTree::Item &item);
/// A folder as MLSD shows it (RFC 3659, 7), with its own and its parent's entry.
[[nodiscard]] QByteArray mlsdText(const std::vector<ScriptedTree::Item> &items,
                                  const ServerOptions &options);
/// Names only.
[[nodiscard]] QByteArray nlstText(const std::vector<ScriptedTree::Item> &items,
                                  const ServerOptions &options);
/// YYYYMMDDHHMMSS of UTC (RFC 3659, 2.3).
[[nodiscard]] QByteArray timeVal(const QDateTime &utc);
/// The other way round; invalid when the text is none.
[[nodiscard]] QDateTime fromTimeVal(const QByteArray &text);

} // namespace venlo::test
