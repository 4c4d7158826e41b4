#include "core/base/ascii.h"
#include "core/log/log_writers.h"
#include "core/text/element.h"

#include <array>

using namespace ccrypto;

namespace {

constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t noDigit = 0xFF;

constexpr auto digitOf = [] {
    std::array<std::uint8_t, 256> digits{};
    digits.fill(noDigit);
    for (std::uint8_t value = 0; value < 64; ++value)
        digits[static_cast<std::uint8_t>(alphabet[value])] = value;
    return digits;
}();

/// Collects digits of six bits and appends whole bytes.
class BitCollector {
public:
    explicit BitCollector(element& target) : target_(target) {}

    void add(std::uint8_t digit)
    {
        bits_ = bits_ << 6 | digit;
        ++digits_;
        if (digits_ % 4 == 0)
            flush(3);
    }

    /// Hands out what a last group of two or three digits holds; a single digit does not make a byte and is dropped.
    /// \return false when the last group is not complete with its padding, or without any.
    bool finish(std::uint32_t padding)
    {
        const auto rest = static_cast<std::uint32_t>(digits_ % 4);
        if (rest > 1) {
            bits_ <<= 6 * (4 - rest);
            flush(rest - 1);
        }
        return rest != 1 && (padding == 0 || (rest != 0 && rest + padding == 4));
    }

private:
    void flush(std::uint32_t count)
    {
        for (std::uint32_t index = 0; index < count; ++index)
            target_.append(static_cast<std::uint8_t>(bits_ >> (16 - 8 * index)));
        bits_ = 0;
    }

    element& target_;
    std::uint32_t bits_ = 0;
    std::uint64_t digits_ = 0;
};

} // namespace

element element::FromBase64(std::string_view text)
{
    element decoded;
    decoded.reserve(static_cast<std::uint32_t>(text.size() / 4 * 3 + 3));
    BitCollector collector(decoded);
    std::uint32_t padding = 0;
    for (const char character : text) {
        if (IsBlank(character))
            continue;
        const std::uint8_t digit = digitOf[static_cast<std::uint8_t>(character)];
        if (character == '=') {
            ++padding;
        } else if (digit == noDigit || padding != 0) {
            WriteErrorEx_G("Base64 text holds the character 0x%02x, which does not belong there",
                           static_cast<std::uint8_t>(character));
            return {};
        } else {
            collector.add(digit);
        }
    }
    if (!collector.finish(padding))
        WriteErrorEx_G("Base64 text ends inside a group");
    return decoded;
}

element element::toBase64() const
{
    element text(ElementType::text);
    text.reserve(static_cast<std::uint32_t>((static_cast<std::uint64_t>(length_) + 2) / 3 * 4));
    for (std::uint32_t index = 0; index < length_; index += 3) {
        const std::uint32_t count = length_ - index < 3 ? length_ - index : 3;
        std::uint32_t bits = static_cast<std::uint32_t>(data_[index]) << 16;
        if (count > 1)
            bits |= static_cast<std::uint32_t>(data_[index + 1]) << 8;
        if (count > 2)
            bits |= data_[index + 2];
        char group[4] = {'=', '=', '=', '='};
        for (std::uint32_t digit = 0; digit <= count; ++digit)
            group[digit] = alphabet[bits >> (18 - 6 * digit) & 0x3F];
        text.append(group, sizeof group);
    }
    return text;
}
