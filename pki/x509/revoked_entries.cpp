#include "pki/x509/revoked_entries.h"

#include "asn1/der/der_cursor.h"
#include "core/diagnostics/auto_logger.h"
#include "pki/x509/der_tags.h"
#include "pki/x509/extensions.h"
#include "pki/x509/field_reading.h"
#include "pki/x509/name.h"
#include "pki/x509/x509_time.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <string_view>

using namespace ccrypto;

namespace {

using SerialOctets = std::span<const std::uint8_t>;

/// The last arcs of the extensions of an entry (RFC 5280, 5.3), all under id-ce, 2.5.29.
constexpr std::uint8_t reasonCodeArc = 21;
constexpr std::uint8_t invalidityDateArc = 24;
constexpr std::uint8_t certificateIssuerArc = 29;
constexpr std::array<std::uint8_t, 2> idCe = {0x55, 0x1D};

constexpr std::uint8_t derTrue = 0xFF;
constexpr std::uint8_t signBit = 0x80;
constexpr std::uint8_t longForm = 0x80; ///< bit of a length octet: the others say how many more there are

constexpr std::uint32_t entriesInStep = 64;
/// A bucket holds about six entries of the usual length.
constexpr std::size_t octetsForBucket = 256;
/// Longer buckets are sorted.
constexpr std::size_t maxScanned = 32;

struct ReasonName {
    RevocationReason reason;
    const char* name;
};
constexpr ReasonName reasonNames[] = {
    {RevocationReason::unspecified, "unspecified"},
    {RevocationReason::keyCompromise, "keyCompromise"},
    {RevocationReason::caCompromise, "cACompromise"},
    {RevocationReason::affiliationChanged, "affiliationChanged"},
    {RevocationReason::superseded, "superseded"},
    {RevocationReason::cessationOfOperation, "cessationOfOperation"},
    {RevocationReason::certificateHold, "certificateHold"},
    {RevocationReason::removeFromCrl, "removeFromCRL"},
    {RevocationReason::privilegeWithdrawn, "privilegeWithdrawn"},
    {RevocationReason::aaCompromise, "aACompromise"},
};

/// "unused (7)" for every number.
struct UnusedReasonNames {
    std::array<std::array<char, 13>, 256> texts = {};

    constexpr UnusedReasonNames()
    {
        for (std::size_t number = 0; number < texts.size(); ++number) {
            char* text = std::ranges::copy(std::string_view("unused ("), texts[number].begin()).out;
            if (number >= 100)
                *text++ = static_cast<char>('0' + number / 100);
            if (number >= 10)
                *text++ = static_cast<char>('0' + number / 10 % 10);
            *text++ = static_cast<char>('0' + number % 10);
            *text = ')';
        }
    }
};
constexpr UnusedReasonNames unusedReasonNames;

/// The parts of an entry, within its octets.
struct EntryParts {
    SerialOctets serialNumber;
    DerItem date;
    DerItem extensions; ///< none when they are absent
};

struct EntryExtensions {
    std::optional<RevocationReason> reason;
    DerItem invalidityDate; ///< none when it is absent
    std::span<const std::uint8_t> certificateIssuer;
    bool hasUnknownCritical = false;
};

std::optional<EntryParts> SplitEntry(const DerItem& entry)
{
    DerCursor cursor(entry.value);
    EntryParts parts;
    parts.serialNumber = cursor.read(der_tag::integer).value;
    parts.date = cursor.read();
    if (!cursor.atEnd())
        parts.extensions = cursor.read(der_tag::sequence);
    if (entry.identifier != der_tag::sequence || !IsMinimalInteger(parts.serialNumber) || !parts.date || !cursor.atEnd())
        return std::nullopt;
    return parts;
}

struct EntryExtension {
    std::span<const std::uint8_t> oid;
    std::span<const std::uint8_t> content; ///< inside the OCTET STRING
    bool isCritical = false;

    /// The last arc of one under id-ce with a single octet after it; 0 for any other.
    std::uint8_t arc() const { return oid.size() == 3 && std::ranges::equal(oid.first(2), idCe) ? oid[2] : std::uint8_t{0}; }
};

std::optional<EntryExtension> SplitExtension(const DerItem& item)
{
    if (item.identifier != der_tag::sequence)
        return std::nullopt;
    DerCursor cursor(item.value);
    EntryExtension extension;
    extension.oid = cursor.read(der_tag::objectIdentifier).value;
    if (cursor.nextIs(der_tag::boolean)) {
        // FALSE is the default and should be left out; it says the same where it is written.
        const DerItem critical = cursor.read();
        if (critical.value.size() != 1 || (critical.value[0] != derTrue && critical.value[0] != 0))
            return std::nullopt;
        extension.isCritical = critical.value[0] == derTrue;
    }
    const DerItem content = cursor.read(der_tag::octetString);
    extension.content = content.value;
    if (!IsIdentifierContent(extension.oid) || !content || !cursor.atEnd())
        return std::nullopt;
    return extension;
}

/// Whether a certificateIssuer has a directory name to compare with: without one, its entries would belong to nobody.
bool NamesAnIssuer(std::span<const std::uint8_t> content)
{
    const std::optional<GeneralNames> names = ReadGeneralNames(content);
    bool isNamed = false;
    for (const GeneralName& name : names.value_or(GeneralNames())) {
        if (name.kind != GeneralName::Kind::directory)
            continue;
        if (!ComparableName::Read(name.value.bytes()))
            return false;
        isNamed = true;
    }
    return isNamed;
}

/// \return false for an extension that is known and malformed.
bool ReadEntryExtension(const EntryExtension& extension, EntryExtensions& read)
{
    switch (extension.arc()) {
    case reasonCodeArc: {
        const auto number = OnlyValue(extension.content, der_tag::enumerated);
        if (!number || number->size() != 1 || number->front() >= signBit)
            return false;
        read.reason = static_cast<RevocationReason>(number->front());
        return true;
    }
    case invalidityDateArc: {
        DerCursor cursor(extension.content);
        read.invalidityDate = cursor.read(der_tag::generalizedTime);
        return read.invalidityDate && cursor.atEnd() && ReadX509Time(read.invalidityDate).isValid();
    }
    case certificateIssuerArc:
        read.certificateIssuer = extension.content;
        return NamesAnIssuer(extension.content);
    default:
        read.hasUnknownCritical |= extension.isCritical;
        return true;
    }
}

/// \return none for malformed extensions, for one that stands twice and for too many.
std::optional<EntryExtensions> ReadEntryExtensions(std::span<const std::uint8_t> list)
{
    std::array<std::span<const std::uint8_t>, RevokedEntries::maxExtensions> oids;
    std::size_t count = 0;
    EntryExtensions read;
    DerCursor cursor(list);
    do {
        const std::optional<EntryExtension> extension = SplitExtension(cursor.read());
        if (!extension || count == oids.size())
            return std::nullopt;
        const auto isSame = [&](std::span<const std::uint8_t> oid) { return std::ranges::equal(oid, extension->oid); };
        if (std::any_of(oids.begin(), oids.begin() + static_cast<std::ptrdiff_t>(count), isSame) ||
            !ReadEntryExtension(*extension, read))
            return std::nullopt;
        oids[count++] = extension->oid;
    } while (!cursor.atEnd());
    return read;
}

// Of elements that were checked. The length of a serial number takes one octet.

std::size_t HeadOctets(std::span<const std::uint8_t> element)
{
    return element[1] < longForm ? 2 : 2 + (element[1] - longForm);
}

std::uint32_t EntryLength(std::span<const std::uint8_t> entry)
{
    const std::size_t head = HeadOctets(entry);
    std::size_t length = head == 2 ? entry[1] : 0;
    for (std::size_t index = 2; index < head; ++index)
        length = length << 8 | entry[index];
    return static_cast<std::uint32_t>(head + length);
}

/// Any order in which the same numbers are equal.
bool IsBefore(SerialOctets left, SerialOctets right)
{
    if (left.size() != right.size())
        return left.size() < right.size();
    return std::memcmp(left.data(), right.data(), left.size()) < 0;
}

std::uint64_t Mixed(std::uint64_t hash, std::uint64_t word)
{
    constexpr std::uint64_t odd = 0x9E3779B97F4A7C15; // 2^64 / the golden ratio
    hash = (hash ^ word) * odd;
    return hash ^ hash >> 32;
}

std::uint64_t HashOf(SerialOctets number)
{
    std::uint64_t hash = number.size();
    std::uint64_t word = 0;
    if (number.size() < sizeof word) {
        for (const std::uint8_t octet : number)
            word = word << 8 | octet;
        return Mixed(hash, word);
    }
    // The last word overlaps the one before it.
    const std::uint8_t* const last = number.data() + number.size() - sizeof word;
    for (const std::uint8_t* at = number.data(); at < last; at += sizeof word) {
        std::memcpy(&word, at, sizeof word);
        hash = Mixed(hash, word);
    }
    std::memcpy(&word, last, sizeof word);
    return Mixed(hash, word);
}

} // namespace

namespace ccrypto {

const char* RevocationReasonName(RevocationReason reason)
{
    const auto* const found = std::ranges::find(reasonNames, reason, &ReasonName::reason);
    return found != std::end(reasonNames) ? found->name : unusedReasonNames.texts[static_cast<std::uint8_t>(reason)].data();
}

bool IsLastingRevocation(std::optional<RevocationReason> reason, const CCryptoDateTime& since, const CCryptoDateTime& at)
{
    return reason != RevocationReason::certificateHold && since.isValid() && since <= at;
}

bool RevokedEntries::Read(std::span<const std::uint8_t> octets, std::uint32_t maxEntries)
{
    clear();
    octets_ = octets;
    // Sizes first, which become the starts: bucket n counts in n + 2, so that filling leaves each start in its place.
    bucketStarts_.assign(std::bit_floor(octets.size() / octetsForBucket + 1) + 2, 0);
    if (check(maxEntries) && makeIndex())
        return true;
    clear();
    return false;
}

/// Looks at every entry, and counts those of each bucket.
bool RevokedEntries::check(std::uint32_t maxEntries)
{
    CCryptoAutoLogger logger("RevokedEntries::check");
    std::uint32_t count = 0;
    for (DerCursor cursor(octets_); !cursor.atEnd(); ++count) {
        if (count == maxEntries)
            return logger.fail(false, "There are more than %u entries", maxEntries);
        const auto place = static_cast<Place>(octets_.size() - cursor.rest().size());
        const std::optional<EntryParts> parts = SplitEntry(cursor.read());
        if (!parts)
            return logger.fail(false, "Entry %u is malformed", count);
        if (parts->serialNumber.size() > maxSerialNumber)
            return logger.fail(false, "The serial number of entry %u is longer than %u bytes", count, maxSerialNumber);
        if (!ReadX509Time(parts->date).isValid())
            return logger.fail(false, "The date of entry %u is malformed", count);
        if (parts->extensions) {
            const std::optional<EntryExtensions> extensions = ReadEntryExtensions(parts->extensions.value);
            if (!extensions)
                return logger.fail(false, "The extensions of entry %u are malformed", count);
            hasUnknownCritical_ |= extensions->hasUnknownCritical;
            if (!extensions->certificateIssuer.empty())
                issuers_.push_back({place, extensions->certificateIssuer});
        }
        if (count % entriesInStep == 0)
            steps_.push_back(place);
        ++bucketStarts_[bucketOf(parts->serialNumber) + 2];
    }
    places_.resize(count);
    return logger.setResult(true);
}

bool RevokedEntries::makeIndex()
{
    CCryptoAutoLogger logger("RevokedEntries::makeIndex");
    for (std::size_t bucket = 2; bucket < bucketStarts_.size(); ++bucket)
        bucketStarts_[bucket] += bucketStarts_[bucket - 1];
    for (Place place = 0; place < octets_.size(); place += EntryLength(octets_.subspan(place)))
        places_[bucketStarts_[bucketOf(serialNumberAt(place)) + 1]++] = place;
    bucketStarts_.pop_back();

    for (std::size_t bucket = 0; bucket + 1 < bucketStarts_.size(); ++bucket) {
        const std::size_t start = bucketStarts_[bucket];
        const std::size_t size = bucketStarts_[bucket + 1] - start;
        if (size > maxScanned && !sortBucket(std::span(places_).subspan(start, size)))
            return logger.fail(false, "One serial number has more than %u entries", maxOfOneSerialNumber);
    }
    return logger.setResult(true);
}

/// By serial numbers, entries of the same in the order of the list. \return false for too many of one.
bool RevokedEntries::sortBucket(std::span<Place> bucket) const
{
    std::ranges::sort(bucket, [this](Place left, Place right) {
        const SerialOctets leftNumber = serialNumberAt(left);
        const SerialOctets rightNumber = serialNumberAt(right);
        return IsBefore(leftNumber, rightNumber) || (left < right && !IsBefore(rightNumber, leftNumber));
    });
    for (std::size_t first = 0; first + maxOfOneSerialNumber < bucket.size(); ++first) {
        if (std::ranges::equal(serialNumberAt(bucket[first]), serialNumberAt(bucket[first + maxOfOneSerialNumber])))
            return false;
    }
    return true;
}

std::size_t RevokedEntries::bucketOf(std::span<const std::uint8_t> serialNumber) const
{
    // The number of buckets is a power of two, and up to two more are there for the starts.
    const std::size_t buckets = std::bit_floor(octets_.size() / octetsForBucket + 1);
    return HashOf(serialNumber) & (buckets - 1);
}

/// The entries among which those of this number are; in a sorted bucket those alone.
std::span<const RevokedEntries::Place> RevokedEntries::candidates(std::span<const std::uint8_t> serialNumber) const
{
    if (places_.empty())
        return {};
    const std::size_t bucket = bucketOf(serialNumber);
    const auto all = std::span(places_).subspan(bucketStarts_[bucket], bucketStarts_[bucket + 1] - bucketStarts_[bucket]);
    if (all.size() <= maxScanned)
        return all;
    // Two searches: std::ranges::equal_range gives a subrange, which clang 14 cannot compile with this standard library.
    const auto serialNumberOf = [this](Place place) { return serialNumberAt(place); };
    const auto first = std::ranges::lower_bound(all, serialNumber, IsBefore, serialNumberOf);
    return {first, std::ranges::upper_bound(first, all.end(), serialNumber, IsBefore, serialNumberOf)};
}

SerialOctets RevokedEntries::serialNumberAt(Place place) const
{
    const std::span<const std::uint8_t> entry = octets_.subspan(place);
    const SerialOctets number = entry.subspan(HeadOctets(entry));
    return number.subspan(HeadOctets(number), number[1]);
}

std::optional<RevokedEntry> RevokedEntries::entry(std::uint32_t index) const
{
    if (index >= count()) {
        CCryptoAutoLogger logger("RevokedEntries::entry");
        logger.fail(false, "There is no entry %u", index);
        return std::nullopt;
    }
    Place place = steps_[index / entriesInStep];
    for (std::uint32_t before = index % entriesInStep; before != 0; --before)
        place += EntryLength(octets_.subspan(place));
    return decode(place);
}

std::vector<RevokedEntry> RevokedEntries::find(std::span<const std::uint8_t> serialNumber) const
{
    // The same number may have been written with more octets than it needs, where it was not read as DER.
    while (serialNumber.size() > 1 && !IsMinimalInteger(serialNumber))
        serialNumber = serialNumber.subspan(1);
    std::vector<RevokedEntry> found;
    for (const Place place : candidates(serialNumber)) {
        if (std::ranges::equal(serialNumberAt(place), serialNumber))
            found.push_back(decode(place));
    }
    return found;
}

RevokedEntry RevokedEntries::decode(Place place) const
{
    const auto octetsOf = [](std::span<const std::uint8_t> octets) {
        return element(octets.data(), static_cast<std::uint32_t>(octets.size()));
    };
    RevokedEntry entry;
    const std::optional<EntryParts> parts = SplitEntry(DerCursor(octets_.subspan(place)).read());
    entry.serialNumber = octetsOf(parts->serialNumber);
    entry.revocationDate = ReadX509Time(parts->date);
    if (parts->extensions) {
        const std::optional<EntryExtensions> extensions = ReadEntryExtensions(parts->extensions.value);
        entry.reason = extensions->reason;
        entry.hasUnknownCritical = extensions->hasUnknownCritical;
        if (extensions->invalidityDate)
            entry.invalidityDate = ReadX509Time(extensions->invalidityDate);
    }
    const auto after = std::ranges::upper_bound(issuers_, place, {}, &IssuerPlace::entry);
    if (after != issuers_.begin())
        entry.certificateIssuer = std::prev(after)->names;
    return entry;
}

std::size_t RevokedEntries::indexSize() const
{
    return (places_.capacity() + bucketStarts_.capacity() + steps_.capacity()) * sizeof(Place) +
           issuers_.capacity() * sizeof(IssuerPlace);
}

} // namespace ccrypto
