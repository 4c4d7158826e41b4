#pragma once

#include <span>
#include <string>
#include <string_view>

namespace ccrypto {

/// "; did you mean gzip?" for a mistyped word, when one of the known words is near it; otherwise empty. \param prefix stands before
/// the known word: "--".
std::string DidYouMean(std::string_view word, std::span<const std::string_view> known, std::string_view prefix = {});

} // namespace ccrypto
