#pragma once

#include "tests/crypto/base/vector_file.h"

#include <string>
#include <string_view>
#include <vector>

// DER as the tables of the tests write it.

namespace ccrypto {

/// Hexadecimal digits are octets, text in apostrophes is its characters, and content in brackets has its length before it:
/// "30[ 0101FF 020100 ]", "82['example.com']". Blanks are ignored.
inline Bytes DerOf(std::string_view text)
{
    std::vector<Bytes> levels(1);
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char character = text[at];
        if (character == '[') {
            levels.emplace_back();
        } else if (character == ']') {
            const Bytes content = std::move(levels.back());
            levels.pop_back();
            Bytes& outer = levels.back();
            if (content.size() > 255)
                outer.insert(outer.end(), {0x82, static_cast<std::uint8_t>(content.size() >> 8)});
            else if (content.size() > 127)
                outer.push_back(0x81);
            outer.push_back(static_cast<std::uint8_t>(content.size()));
            outer.insert(outer.end(), content.begin(), content.end());
        } else if (character == '\'') {
            const std::size_t end = text.find('\'', at + 1);
            levels.back().insert(levels.back().end(), text.begin() + static_cast<std::ptrdiff_t>(at) + 1,
                                 text.begin() + static_cast<std::ptrdiff_t>(end));
            at = end;
        } else if (character != ' ') {
            levels.back().push_back(static_cast<std::uint8_t>(std::stoi(std::string(text.substr(at, 2)), nullptr, 16)));
            ++at;
        }
    }
    return levels.front();
}

} // namespace ccrypto
