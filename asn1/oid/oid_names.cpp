#include "asn1/oid/oid_names.h"

#include "asn1/oid/oid_name_tables.h"
#include "core/base/ascii.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace {

const oid_names::Table* const tables[] = {
    &oid_names::itu,           &oid_names::countries, &oid_names::us,          &oid_names::rsadsi,   &oid_names::usCompanies,
    &oid_names::organisations, &oid_names::internet,  &oid_names::enterprises, &oid_names::security, &oid_names::joint,
    &oid_names::international, &oid_names::directory,
};

std::string_view UpToBlank(std::string_view text)
{
    return text.substr(0, text.find(' '));
}

std::uint64_t Word(const char* bytes)
{
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

/// Eight bytes at a time; the last eight overlap those before. The upper bits are the well mixed ones.
std::uint64_t Hash(std::string_view oid)
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

/// Finds a row by the hash of its OID: open addressing, at most half full, so that a search ends after a slot or two.
class RowIndex {
public:
    RowIndex();

    /// The row that begins with `text` and goes on with a blank; null for none. The text may reach into the description.
    const std::string_view* Find(std::string_view text) const;

private:
    struct Place {
        std::uint16_t table = empty;
        std::uint16_t row = 0;
    };

    static constexpr std::uint16_t empty = 0xFFFF;
    static constexpr unsigned slotBits = 13;
    static constexpr std::size_t slotMask = (std::size_t{1} << slotBits) - 1;

    static std::size_t FirstSlot(std::string_view oid) { return static_cast<std::size_t>(Hash(oid) >> (64 - slotBits)); }

    std::array<Place, slotMask + 1> places;
    std::size_t longestOid = 0;
};

RowIndex::RowIndex()
{
    for (std::size_t table = 0; table < std::size(tables); ++table) {
        for (std::size_t row = 0; row < tables[table]->size(); ++row) {
            const std::string_view oid = UpToBlank((*tables[table])[row]);
            longestOid = std::max(longestOid, oid.size());
            std::size_t slot = FirstSlot(oid);
            while (places[slot].table != empty)
                slot = (slot + 1) & slotMask;
            places[slot] = {static_cast<std::uint16_t>(table), static_cast<std::uint16_t>(row)};
        }
    }
}

const std::string_view* RowIndex::Find(std::string_view text) const
{
    const std::string_view oid = UpToBlank(text);
    if (oid.size() > longestOid)
        return nullptr;
    for (std::size_t slot = FirstSlot(oid); places[slot].table != empty; slot = (slot + 1) & slotMask) {
        const std::string_view& row = (*tables[places[slot].table])[places[slot].row];
        if (row.size() > text.size() && row[text.size()] == ' ' && row.starts_with(text))
            return &row;
    }
    return nullptr;
}

bool Contains(std::string_view text, std::string_view part)
{
    const auto same = [](char left, char right) { return ToSmall(left) == ToSmall(right); };
    return part.empty() || std::search(text.begin(), text.end(), part.begin(), part.end(), same) != text.end();
}

} // namespace

const char* FindOidName(std::string_view dotted)
{
    static const RowIndex index;
    const std::string_view* const row = index.Find(dotted);
    return row != nullptr ? row->data() + dotted.size() + 1 : nullptr;
}

std::vector<OidName> FindOidsByName(std::string_view part)
{
    std::vector<OidName> found;
    for (const oid_names::Table* const table : tables) {
        for (const std::string_view row : *table) {
            const std::string_view dotted = UpToBlank(row);
            if (Contains(row.substr(dotted.size() + 1), part))
                found.push_back({dotted, row.data() + dotted.size() + 1});
        }
    }
    return found;
}
