#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace ccrypto {

/// One element of DER, whose octets belong to somebody else.
struct DerItem {
    std::uint8_t identifier = 0;
    std::span<const std::uint8_t> octets; ///< identifier, length and value
    std::span<const std::uint8_t> value;

    explicit operator bool() const { return !octets.empty(); }
};

/// Walks the elements of a level without making a tree of them: for what a signature covers, and for lists too long for a tree.
/// Stricter than CCryptoDERParser: lengths are definite and minimal (X.690, 10.1), nothing ends a level but its last octet.
class DerCursor {
public:
    explicit DerCursor(std::span<const std::uint8_t> level) : rest_(level) {}

    [[nodiscard]] bool atEnd() const { return rest_.empty(); }
    /// Whether an element with this identifier octet is next.
    [[nodiscard]] bool nextIs(std::uint8_t identifier) const { return !rest_.empty() && rest_.front() == identifier; }
    /// The next element, which is then behind the cursor. \return none, the cursor unmoved, at the end and for octets that are no
    /// element of DER.
    [[nodiscard]] DerItem read()
    {
        // Most elements have a length of one octet.
        const bool isShort =
            rest_.size() >= 2 && rest_[1] < 0x80 && rest_[1] <= rest_.size() - 2 && rest_[0] != 0 && (rest_[0] & 0x1F) != 0x1F;
        return isShort ? take(2, rest_[1]) : readOther();
    }
    /// The same for an element with this identifier octet; none for any other.
    [[nodiscard]] DerItem read(std::uint8_t identifier) { return nextIs(identifier) ? read() : DerItem(); }
    [[nodiscard]] std::span<const std::uint8_t> rest() const { return rest_; }

private:
    DerItem readOther();
    DerItem take(std::size_t headOctets, std::size_t length)
    {
        const DerItem item = {rest_[0], rest_.first(headOctets + length), rest_.subspan(headOctets, length)};
        rest_ = rest_.subspan(headOctets + length);
        return item;
    }

    std::span<const std::uint8_t> rest_;
};

/// The value of the one element that `octets` hold; none when they hold another one, or more.
[[nodiscard]] std::optional<std::span<const std::uint8_t>> OnlyValue(std::span<const std::uint8_t> octets, std::uint8_t identifier);

} // namespace ccrypto
