#include "tools/cryptotool/cipher/cipher_header.h"

#include <algorithm>
#include <string_view>

namespace ccrypto {

namespace {

constexpr std::string_view magic("CCIPHER\x01", 8);

void AppendCounted(element& bytes, std::span<const std::uint8_t> text)
{
    bytes.append(static_cast<std::uint8_t>(text.size()));
    bytes.append(text.data(), static_cast<std::uint32_t>(text.size()));
}

/// Takes a length and as much text from the front of `rest`.
bool TakeCounted(std::span<const std::uint8_t>& rest, std::span<const std::uint8_t>& text)
{
    if (rest.empty() || rest.size() - 1 < rest.front())
        return false;
    text = rest.subspan(1, rest.front());
    rest = rest.subspan(1 + text.size());
    return true;
}

std::span<const std::uint8_t> BytesOf(std::string_view text)
{
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

} // namespace

element CipherHeader::write() const
{
    element bytes;
    bytes.append(magic);
    bytes.append(static_cast<std::uint8_t>(hasPassword ? 1 : 0));
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.append(static_cast<std::uint8_t>(iterations >> shift));
    bytes.append(salt, saltSize);
    AppendCounted(bytes, iv.bytes());
    AppendCounted(bytes, BytesOf(cipher));
    return bytes;
}

std::size_t CipherHeader::read(std::span<const std::uint8_t> bytes)
{
    if (bytes.size() < fixedSize || !std::ranges::equal(bytes.first(magic.size()), BytesOf(magic)) || bytes[8] > 1)
        return 0;
    hasPassword = bytes[8] == 1;
    iterations = std::uint32_t{bytes[9]} << 24 | std::uint32_t{bytes[10]} << 16 | std::uint32_t{bytes[11]} << 8 | bytes[12];
    std::copy_n(bytes.begin() + 13, saltSize, salt);
    std::span<const std::uint8_t> rest = bytes.subspan(fixedSize);
    std::span<const std::uint8_t> vector;
    std::span<const std::uint8_t> name;
    if (!TakeCounted(rest, vector) || !TakeCounted(rest, name))
        return 0;
    iv = element(vector.data(), static_cast<std::uint32_t>(vector.size()));
    cipher.assign(name.begin(), name.end());
    return bytes.size() - rest.size();
}

} // namespace ccrypto
