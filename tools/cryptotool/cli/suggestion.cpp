#include "tools/cryptotool/cli/suggestion.h"

#include "core/base/ascii.h"

#include <algorithm>
#include <array>

namespace ccrypto {

namespace {

constexpr std::size_t maxWord = 32;

/// How many characters must be inserted, removed, replaced or exchanged with their neighbour to make one word of the other, letters
/// in either case. Both have at most maxWord characters.
std::size_t EditDistance(std::string_view from, std::string_view to)
{
    std::array<std::array<std::size_t, maxWord + 1>, maxWord + 1> distance{};
    for (std::size_t i = 0; i <= from.size(); ++i) {
        for (std::size_t j = 0; j <= to.size(); ++j) {
            if (i == 0 || j == 0) {
                distance[i][j] = i + j;
                continue;
            }
            const bool isSame = ToSmall(from[i - 1]) == ToSmall(to[j - 1]);
            distance[i][j] =
                std::min({distance[i - 1][j] + 1, distance[i][j - 1] + 1, distance[i - 1][j - 1] + (isSame ? 0U : 1U)});
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1])
                distance[i][j] = std::min(distance[i][j], distance[i - 2][j - 2] + 1);
        }
    }
    return distance[from.size()][to.size()];
}

} // namespace

std::string DidYouMean(std::string_view word, std::span<const std::string_view> known, std::string_view prefix)
{
    if (word.size() > maxWord)
        return {};
    std::string_view nearest;
    // One mistake in a short word, two in a longer one.
    std::size_t least = word.size() < 5 ? 2 : 3;
    for (const std::string_view candidate : known) {
        if (candidate.empty() || candidate.size() > maxWord)
            continue;
        const std::size_t distance = EditDistance(word, candidate);
        if (distance < least && distance < candidate.size()) {
            least = distance;
            nearest = candidate;
        }
    }
    if (nearest.empty())
        return {};
    return "; did you mean " + std::string(prefix) + std::string(nearest) + "?";
}

} // namespace ccrypto
