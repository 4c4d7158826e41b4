#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ccrypto::internal {

/// The names of object identifiers with a hash index over the dotted text, made by the compiler: nothing is set up at run time.
///
/// Each row is the dotted identifier, one blank and the name, ended by a zero byte. All rows are one string, which the table does
/// not copy. A search that compares at each step, over the dotted text or over the encoded octets, takes several times as long.
class OidTable {
public:
    template <std::size_t length>
    consteval explicit OidTable(const char (&rows)[length]) : rows_(rows, length - 1)
    {
        std::size_t count = 0;
        for (std::size_t start = 0; start < rows_.size(); start = rows_.find('\0', start) + 1) {
            const std::size_t oidLength = rows_.find(' ', start) - start;
            maxOidLength_ = oidLength > maxOidLength_ ? oidLength : maxOidLength_;
            insert(static_cast<std::uint32_t>(start), Hash(rows_.substr(start, oidLength)));
            ++count;
        }
        if (rows_.size() >= maxRowsSize || count > slotCount / 2)
            throw "more names than offsets or slots";
    }

    /// The name in the row that begins with all of `text` and a blank; null when there is none. The text may extend into the name.
    const char* Find(std::string_view text) const
    {
        if (const char* const name = find(text, text))
            return name;
        const std::string_view oid = text.substr(0, text.find(' '));
        return oid.size() < text.size() ? find(oid, text) : nullptr;
    }

    std::string_view Rows() const { return rows_; }

private:
    // At most half of the slots are taken, so that a search ends after a slot or two.
    static constexpr unsigned slotBits = 13;
    static constexpr std::size_t slotCount = std::size_t{1} << slotBits;
    /// A slot holds the offset of a row and, above it, bits of the hash that are not the slot's number.
    static constexpr unsigned offsetBits = 20;
    static constexpr std::uint32_t maxRowsSize = (1u << offsetBits) - 1;
    static constexpr std::uint32_t empty = 0xFFFFFFFF;

    static constexpr std::uint64_t Word(const char* bytes)
    {
        const auto byte = [bytes](unsigned index) {
            return static_cast<std::uint64_t>(static_cast<unsigned char>(bytes[index])) << (8 * index);
        };
        return byte(0) | byte(1) | byte(2) | byte(3) | byte(4) | byte(5) | byte(6) | byte(7);
    }

    /// Eight bytes at a time; the last eight overlap those before. The upper bits are the well mixed ones.
    static constexpr std::uint64_t Hash(std::string_view oid)
    {
        constexpr std::uint64_t odd = 0x9E3779B97F4A7C15;
        std::uint64_t hash = oid.size();
        if (oid.size() < sizeof(std::uint64_t)) {
            for (const char character : oid)
                hash = hash << 8 | static_cast<unsigned char>(character);
            return hash * odd;
        }
        const char* const last = oid.data() + oid.size() - sizeof(std::uint64_t);
        for (const char* next = oid.data(); next < last; next += sizeof(std::uint64_t)) {
            hash = (hash ^ Word(next)) * odd;
            hash ^= hash >> 32;
        }
        return (hash ^ Word(last)) * odd;
    }

    static constexpr std::size_t FirstSlot(std::uint64_t hash) { return static_cast<std::size_t>(hash >> (64 - slotBits)); }
    static constexpr std::size_t NextSlot(std::size_t slot) { return (slot + 1) % slotCount; }
    static constexpr std::uint32_t HashBits(std::uint64_t hash)
    {
        return static_cast<std::uint32_t>(hash >> (32 - slotBits)) & ~maxRowsSize;
    }

    consteval void insert(std::uint32_t offset, std::uint64_t hash)
    {
        std::size_t slot = FirstSlot(hash);
        while (slots_[slot] != empty)
            slot = NextSlot(slot);
        slots_[slot] = HashBits(hash) | offset;
    }

    const char* find(std::string_view oid, std::string_view text) const
    {
        if (oid.size() > maxOidLength_)
            return nullptr;
        const std::uint64_t hash = Hash(oid);
        for (std::size_t slot = FirstSlot(hash); slots_[slot] != empty; slot = NextSlot(slot)) {
            if (((slots_[slot] ^ HashBits(hash)) & ~maxRowsSize) != 0)
                continue;
            const std::string_view rest = rows_.substr(slots_[slot] & maxRowsSize);
            if (rest.size() > text.size() && rest[text.size()] == ' ' && rest.starts_with(text))
                return rest.data() + text.size() + 1;
        }
        return nullptr;
    }

    static constexpr auto NoSlots = [] {
        std::array<std::uint32_t, slotCount> slots{};
        slots.fill(empty);
        return slots;
    };

    std::string_view rows_;
    std::size_t maxOidLength_ = 0;
    std::array<std::uint32_t, slotCount> slots_ = NoSlots();
};

/// The rows of object_identifiers.txt, in its order.
extern const OidTable oidTable;

} // namespace ccrypto::internal
