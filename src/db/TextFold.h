#pragma once

#include <QString>

#include <optional>
#include <string_view>
#include <vector>

namespace venlo
{

/// How the store compares text: letter case does not count (simple case folding of Unicode, one
/// character to one character), order is that of the folded code points. Texts are UTF-8.
/// Negative, zero or positive like strcmp.
[[nodiscard]] int compareFolded(std::string_view left, std::string_view right);

/// A "Like" pattern: "*" is any run, "?" one character, everything else stands for itself without
/// regard to letter case.
class LikePattern
{
public:
    explicit LikePattern(std::string_view utf8);
    [[nodiscard]] bool matches(std::string_view utf8) const;

private:
    std::vector<char32_t> m_folded;
};

/// The texts a pattern can match lie in [low, high) of the store's order. There are no bounds for
/// a pattern that begins with a wildcard.
struct LikeBounds {
    QString low;
    QString high;
};
[[nodiscard]] std::optional<LikeBounds> likeBounds(const QString &pattern);

} // namespace venlo
