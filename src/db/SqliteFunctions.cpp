#include "db/SqliteConnection.h"
#include "db/TextFold.h"

#include <sqlite3.h>

#include <algorithm>
#include <string_view>

namespace venlo
{

namespace
{
constexpr int plain = SQLITE_UTF8 | SQLITE_DETERMINISTIC;

std::string_view textOf(sqlite3_value *value)
{
    const auto *text = reinterpret_cast<const char *>(sqlite3_value_text(value));
    return {text ? text : "", static_cast<size_t>(sqlite3_value_bytes(value))};
}

bool anyNull(int count, sqlite3_value **values)
{
    return std::any_of(values, values + count,
                       [](auto *one) { return sqlite3_value_type(one) == SQLITE_NULL; });
}

int compareTexts(void * /*context*/, int leftSize, const void *left, int rightSize,
                 const void *right)
{
    return compareFolded({static_cast<const char *>(left), static_cast<size_t>(leftSize)},
                         {static_cast<const char *>(right), static_cast<size_t>(rightSize)});
}

void deletePattern(void *pattern)
{
    delete static_cast<LikePattern *>(pattern);
}

/// venlo_like(text, pattern). The pattern is read once a statement where it is a value.
void like(sqlite3_context *context, int count, sqlite3_value **values)
{
    if (anyNull(count, values))
        return;
    auto *kept = static_cast<LikePattern *>(sqlite3_get_auxdata(context, 1));
    if (kept) {
        sqlite3_result_int(context, kept->matches(textOf(values[0])) ? 1 : 0);
        return;
    }
    auto fresh = std::make_unique<LikePattern>(textOf(values[1]));
    sqlite3_result_int(context, fresh->matches(textOf(values[0])) ? 1 : 0);
    sqlite3_set_auxdata(context, 1, fresh.release(), &deletePattern);
}

/// venlo_mid(text, start[, length]): start counts from 1, in the units the callers measure paths
/// in (16-bit).
void mid(sqlite3_context *context, int count, sqlite3_value **values)
{
    if (anyNull(count, values))
        return;
    const sqlite3_int64 start = sqlite3_value_int64(values[1]);
    const sqlite3_int64 length = count > 2 ? sqlite3_value_int64(values[2]) : -1;
    if (start < 1 || (count > 2 && length < 0)) {
        sqlite3_result_error(context, "Mid: 開始位置または長さが正しくありません", -1);
        return;
    }
    const auto utf8 = textOf(values[0]);
    const auto text = QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
    const auto from = std::min<sqlite3_int64>(start - 1, text.size());
    const auto rest = text.size() - from;
    const auto taken = count > 2 ? std::min<sqlite3_int64>(length, rest) : rest;
    const QByteArray result = text.mid(from, taken).toUtf8();
    sqlite3_result_text64(context, result.constData(), static_cast<sqlite3_uint64>(result.size()),
                          SQLITE_TRANSIENT, SQLITE_UTF8);
}

/// venlo_yesno(number): any number but 0 is yes, -1; Null is no.
void yesNo(sqlite3_context *context, int /*count*/, sqlite3_value **values)
{
    const int type = sqlite3_value_type(values[0]);
    if (type == SQLITE_TEXT || type == SQLITE_BLOB) {
        sqlite3_result_error(context, "Yes/No: 数値ではありません", -1);
        return;
    }
    const double number = sqlite3_value_double(values[0]);
    sqlite3_result_int(context, number < 0 || number > 0 ? -1 : 0);
}
} // namespace

void addJetFunctions(sqlite3 *handle)
{
    sqlite3_create_collation_v2(handle, "venlo", SQLITE_UTF8, nullptr, &compareTexts, nullptr);
    const auto add = [handle](const char *name, int count, auto *function) {
        sqlite3_create_function_v2(handle, name, count, plain, nullptr, function, nullptr, nullptr,
                                   nullptr);
    };
    add("venlo_like", 2, &like);
    add("venlo_mid", 2, &mid);
    add("venlo_mid", 3, &mid);
    add("venlo_yesno", 1, &yesNo);
}

} // namespace venlo
