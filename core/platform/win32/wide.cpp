#include "core/platform/win32/wide.h"

#include <cstdint>

namespace ccrypto::platform {

namespace {

bool IsLeading(std::uint32_t unit)
{
    return (unit & 0xFC00) == 0xD800;
}

bool IsTrailing(std::uint32_t unit)
{
    return (unit & 0xFC00) == 0xDC00;
}

void AppendUtf8(std::string& utf8, std::uint32_t character)
{
    const auto continuation = [&](unsigned shift) { utf8 += static_cast<char>(0x80 | ((character >> shift) & 0x3F)); };
    if (character < 0x80) {
        utf8 += static_cast<char>(character);
    } else if (character < 0x800) {
        utf8 += static_cast<char>(0xC0 | (character >> 6));
        continuation(0);
    } else if (character < 0x10000) {
        utf8 += static_cast<char>(0xE0 | (character >> 12));
        continuation(6);
        continuation(0);
    } else {
        utf8 += static_cast<char>(0xF0 | (character >> 18));
        continuation(12);
        continuation(6);
        continuation(0);
    }
}

/// Surrogates count as characters. \return the number of bytes of the sequence at the start of `bytes`, 0 when there is no valid
/// one.
std::size_t DecodeUtf8(std::string_view bytes, std::uint32_t& character)
{
    const auto byte = [&](std::size_t index) { return static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[index])); };
    const std::uint32_t lead = byte(0);
    if (lead < 0x80) {
        character = lead;
        return 1;
    }
    const std::size_t length = lead < 0xC0 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF8 ? 4 : 0;
    if (length == 0 || length > bytes.size())
        return 0;
    character = lead & (0x7FU >> length);
    for (std::size_t index = 1; index < length; ++index) {
        if ((byte(index) & 0xC0) != 0x80)
            return 0;
        character = character << 6 | (byte(index) & 0x3F);
    }
    constexpr std::uint32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    return character >= smallest[length] && character <= 0x10FFFF ? length : 0;
}

} // namespace

std::string WideToUtf8(std::wstring_view wide)
{
    std::string utf8;
    utf8.reserve(wide.size());
    for (std::size_t index = 0; index < wide.size(); ++index) {
        std::uint32_t character = static_cast<std::uint16_t>(wide[index]);
        if (IsLeading(character) && index + 1 < wide.size() && IsTrailing(wide[index + 1])) {
            ++index;
            character = 0x10000 + ((character & 0x3FF) << 10) + (static_cast<std::uint32_t>(wide[index]) & 0x3FF);
        }
        AppendUtf8(utf8, character);
    }
    return utf8;
}

std::wstring Utf8ToWide(std::string_view utf8)
{
    std::wstring wide;
    wide.reserve(utf8.size());
    for (std::size_t index = 0; index < utf8.size();) {
        std::uint32_t character = 0;
        const std::size_t length = DecodeUtf8(utf8.substr(index), character);
        if (length == 0) {
            wide.clear();
            for (const char latin : utf8)
                wide += static_cast<wchar_t>(static_cast<unsigned char>(latin));
            return wide;
        }
        if (character < 0x10000) {
            wide += static_cast<wchar_t>(character);
        } else {
            wide += static_cast<wchar_t>(0xD7C0 + (character >> 10));
            wide += static_cast<wchar_t>(0xDC00 + (character & 0x3FF));
        }
        index += length;
    }
    return wide;
}

} // namespace ccrypto::platform
