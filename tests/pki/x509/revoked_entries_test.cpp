#include "core/diagnostics/failure.h"
#include "pki/x509/revoked_entries.h"
#include "pki/x509/template_filling.h"
#include "tests/crypto/base/test_bytes.h"
#include "tests/pki/x509/der_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

using namespace ccrypto;

namespace {

constexpr std::uint32_t noLimit = 0xFFFFFFFF;
constexpr const char* entryDate = "17['261020120000Z']";
constexpr const char* reasonExtension = "30[ 0603551D15 04[ 0A0101 ] ]";
constexpr const char* invalidityExtension = "30[ 0603551D18 04[ 18['20261001000000Z'] ] ]";
constexpr const char* issuerExtension = "30[ 0603551D1D 0101FF 04[ 30[ 8203'abc' A4[ 30[ 31[ 30[ 0603550403 0C['A'] ] ] ] ] ] ] ]";
constexpr const char* otherExtension = "30[ 06032A0304 04[ 0500 ] ]";

std::string EntryText(const std::string& serialNumber, const std::string& extensions = "")
{
    return "30[ 02[" + serialNumber + "]" + entryDate + (extensions.empty() ? "" : "30[" + extensions + "]") + "]";
}

std::string TextOfTime(const CCryptoDateTime& time)
{
    return std::string(time.format("yyyy-MM-dd HH:mm:ss").view());
}

std::string WhatIsSaid(const RevokedEntry& entry)
{
    std::string said = TextOfTime(entry.revocationDate);
    if (entry.reason)
        said += std::string(" ") + RevocationReasonName(*entry.reason);
    if (entry.invalidityDate.isValid())
        said += " invalid " + TextOfTime(entry.invalidityDate);
    if (!entry.certificateIssuer.empty())
        said += " by " + HexOf(OctetsOfSpan(entry.certificateIssuer));
    return entry.hasUnknownCritical ? said + " unknown critical" : said;
}

struct EntryCase {
    const char* name;
    std::string entry;
    const char* said;
    const char* serialNumber = "05";

    friend void PrintTo(const EntryCase& value, std::ostream* out) { *out << value.name; }
};

class RevokedEntryIs : public ::testing::TestWithParam<EntryCase> {};

TEST_P(RevokedEntryIs, ReadBetweenOthers)
{
    const EntryCase& expected = GetParam();
    const Bytes octets = DerOf(EntryText("04") + expected.entry + EntryText("06"));
    RevokedEntries entries;
    ASSERT_TRUE(entries.Read(octets, noLimit)) << expected.name << ": " << LastFailure()->text;
    ASSERT_EQ(entries.count(), 3u);
    const std::vector<RevokedEntry> found = entries.find(DerOf(expected.serialNumber));
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(WhatIsSaid(found[0]), expected.said) << expected.name;
    EXPECT_EQ(WhatIsSaid(entries.entry(1).value()), expected.said);
    EXPECT_EQ(HexOf(found[0].serialNumber), Hex(DerOf(expected.serialNumber)));
    EXPECT_EQ(entries.hasUnknownCritical(), found[0].hasUnknownCritical);
}

std::string Repeated(const std::string& text, std::size_t count)
{
    std::string all;
    for (std::size_t index = 0; index < count; ++index)
        all += text;
    return all;
}

/// As many extensions as that, each with an OID of its own.
std::string OtherExtensions(std::size_t count)
{
    std::string all;
    for (std::size_t index = 0; index < count; ++index)
        all += "30[ 06032A03" + Hex({static_cast<std::uint8_t>(index)}) + "0400 ]";
    return all;
}

const std::string longSerialNumber = "01" + Repeated("AB", 63);

INSTANTIATE_TEST_SUITE_P(
    Entries, RevokedEntryIs,
    ::testing::Values(
        EntryCase{"no extensions", EntryText("05"), "2026-10-20 12:00:00"},
        EntryCase{"only a reason", EntryText("05", reasonExtension), "2026-10-20 12:00:00 keyCompromise"},
        EntryCase{"only an invalidity date", EntryText("05", invalidityExtension),
                  "2026-10-20 12:00:00 invalid 2026-10-01 00:00:00"},
        EntryCase{"a reason first", EntryText("05", std::string(reasonExtension) + invalidityExtension),
                  "2026-10-20 12:00:00 keyCompromise invalid 2026-10-01 00:00:00"},
        EntryCase{"a reason last, another between",
                  EntryText("05", std::string(invalidityExtension) + otherExtension + reasonExtension),
                  "2026-10-20 12:00:00 keyCompromise invalid 2026-10-01 00:00:00"},
        EntryCase{"critical ones that are known",
                  EntryText("05", "30[ 0603551D15 0101FF 04[ 0A010A ] ]" + std::string(issuerExtension)),
                  "2026-10-20 12:00:00 aACompromise by 30158203616263a40e300c310a300806035504030c0141"},
        EntryCase{"a flag that is FALSE", EntryText("05", "30[ 0603551D15 010100 04[ 0A0108 ] ]"),
                  "2026-10-20 12:00:00 removeFromCRL"},
        EntryCase{"another that is critical",
                  EntryText("05", "30[ 06032A0303 0101FF 0400 ]" + std::string(otherExtension) + reasonExtension),
                  "2026-10-20 12:00:00 keyCompromise unknown critical"},
        EntryCase{"a critical one with a number that begins like a known",
                  EntryText("05", "30[ 0604551D1501 0101FF 04[ 0A0101 ] ]"), "2026-10-20 12:00:00 unknown critical"},
        EntryCase{"the number of a reason in another arc", EntryText("05", "30[ 06032A0315 0400 ]"), "2026-10-20 12:00:00"},
        EntryCase{"a reason that is not used", EntryText("05", "30[ 0603551D15 04[ 0A0107 ] ]"), "2026-10-20 12:00:00 unused (7)"},
        EntryCase{"the largest reason", EntryText("05", "30[ 0603551D15 04[ 0A017F ] ]"), "2026-10-20 12:00:00 unused (127)"},
        EntryCase{"the longest list of extensions", EntryText("05", OtherExtensions(32)), "2026-10-20 12:00:00"},
        EntryCase{"the first year of two digits", "30[ 020105 17['500101000000Z'] ]", "1950-01-01 00:00:00"},
        EntryCase{"the last year of two digits", "30[ 020105 17['491231235959Z'] ]", "2049-12-31 23:59:59"},
        EntryCase{"four digits of a year", "30[ 020105 18['20500101000000Z'] ]", "2050-01-01 00:00:00"},
        EntryCase{"serial number 0", EntryText("00"), "2026-10-20 12:00:00", "00"},
        EntryCase{"a serial number below 0", EntryText("FF7F"), "2026-10-20 12:00:00", "FF7F"},
        EntryCase{"a serial number with the sign bit", EntryText("0080"), "2026-10-20 12:00:00", "0080"},
        EntryCase{"the longest serial number", EntryText(longSerialNumber), "2026-10-20 12:00:00", longSerialNumber.c_str()}));

struct BadEntryCase {
    const char* name;
    std::string entry;
    const char* reason;

    friend void PrintTo(const BadEntryCase& value, std::ostream* out) { *out << value.name; }
};

class BadRevokedEntry : public ::testing::TestWithParam<BadEntryCase> {};

/// Whoever asks for the certificate that the entry means must not hear that it is good.
TEST_P(BadRevokedEntry, FailsTheWholeList)
{
    const Bytes good = DerOf(EntryText("04") + EntryText("06"));
    const Bytes bad = DerOf(EntryText("04") + GetParam().entry + EntryText("06"));
    RevokedEntries entries;
    ASSERT_TRUE(entries.Read(good, noLimit));
    EXPECT_FALSE(entries.Read(bad, noLimit)) << GetParam().name;
    EXPECT_EQ(LastFailure()->text, GetParam().reason) << GetParam().name;
    EXPECT_EQ(entries.count(), 0u);
    EXPECT_TRUE(entries.find(Bytes{4}).empty());
    EXPECT_FALSE(entries.entry(0));
}

constexpr const char* malformed = "Entry 1 is malformed";
constexpr const char* malformedDate = "The date of entry 1 is malformed";
constexpr const char* malformedExtensions = "The extensions of entry 1 are malformed";

INSTANTIATE_TEST_SUITE_P(
    Entries, BadRevokedEntry,
    ::testing::Values(
        BadEntryCase{"a SET", "31[ 020105 17['261020120000Z'] ]", malformed}, BadEntryCase{"nothing", "3000", malformed},
        BadEntryCase{"no date", "30[ 020105 ]", malformed},
        BadEntryCase{"no serial number", "30[ 17['261020120000Z'] ]", malformed},
        BadEntryCase{"a serial number of no octets", EntryText(""), malformed},
        BadEntryCase{"a serial number with a needless 00", EntryText("0005"), malformed},
        BadEntryCase{"a serial number with a needless FF", EntryText("FF80"), malformed},
        BadEntryCase{"a serial number as ENUMERATED", "30[ 0A0105 17['261020120000Z'] ]", malformed},
        BadEntryCase{"a serial number that is too long", EntryText(longSerialNumber + "AB"),
                     "The serial number of entry 1 is longer than 64 bytes"},
        BadEntryCase{"extensions that are no SEQUENCE", "30[ 020105 17['261020120000Z'] 31[ 0500 ] ]", malformed},
        BadEntryCase{"more after the extensions", "30[ 020105 17['261020120000Z'] 30[" + std::string(reasonExtension) + "] 0500 ]",
                     malformed},
        BadEntryCase{"a hidden octet", "30[ 020105 17['261020120000Z'] 00 ]", malformed},
        BadEntryCase{"a length of more octets than it needs", "3081[ 020105 17['261020120000Z'] ]", malformed},
        BadEntryCase{"an indefinite length", "3080 020105 17['261020120000Z'] 0000", malformed},
        BadEntryCase{"a date that is text", "30[ 020105 13['261020120000Z'] ]", malformedDate},
        BadEntryCase{"a day that is none", "30[ 020105 17['260230120000Z'] ]", malformedDate},
        BadEntryCase{"second 60", "30[ 020105 17['261020120060Z'] ]", malformedDate},
        BadEntryCase{"a date with a zone", "30[ 020105 17['261020120000+0200'] ]", malformedDate},
        BadEntryCase{"a date with a fraction", "30[ 020105 18['20261020120000.5Z'] ]", malformedDate},
        BadEntryCase{"no extension", "30[ 020105 17['261020120000Z'] 3000 ]", malformedExtensions},
        BadEntryCase{"too many extensions", EntryText("05", OtherExtensions(33)), malformedExtensions},
        BadEntryCase{"a reason twice", EntryText("05", std::string(reasonExtension) + otherExtension + reasonExtension),
                     malformedExtensions},
        BadEntryCase{"a reason and again", EntryText("05", std::string(reasonExtension) + reasonExtension), malformedExtensions},
        BadEntryCase{"another twice", EntryText("05", std::string(otherExtension) + reasonExtension + otherExtension),
                     malformedExtensions},
        BadEntryCase{"an extension without a number", EntryText("05", "30[ 0400 ]"), malformedExtensions},
        BadEntryCase{"an extension with a number of no octets", EntryText("05", "30[ 0600 0400 ]"), malformedExtensions},
        BadEntryCase{"an extension without content", EntryText("05", "30[ 06032A0304 ]"), malformedExtensions},
        BadEntryCase{"an extension with content of another type", EntryText("05", "30[ 06032A0304 0500 ]"), malformedExtensions},
        BadEntryCase{"an extension with more after it", EntryText("05", "30[ 06032A0304 0400 0500 ]"), malformedExtensions},
        BadEntryCase{"an extension that is a SET", EntryText("05", "31[ 06032A0304 0400 ]"), malformedExtensions},
        BadEntryCase{"a flag of 01", EntryText("05", "30[ 06032A0304 010101 0400 ]"), malformedExtensions},
        BadEntryCase{"a flag of two octets", EntryText("05", "30[ 06032A0304 0102FFFF 0400 ]"), malformedExtensions},
        BadEntryCase{"a flag of none", EntryText("05", "30[ 06032A0304 0100 0400 ]"), malformedExtensions},
        BadEntryCase{"a reason that is INTEGER", EntryText("05", "30[ 0603551D15 04[ 020101 ] ]"), malformedExtensions},
        BadEntryCase{"a reason of two octets", EntryText("05", "30[ 0603551D15 04[ 0A020101 ] ]"), malformedExtensions},
        BadEntryCase{"a reason of none", EntryText("05", "30[ 0603551D15 04[ 0A00 ] ]"), malformedExtensions},
        BadEntryCase{"a reason below 0", EntryText("05", "30[ 0603551D15 04[ 0A0180 ] ]"), malformedExtensions},
        BadEntryCase{"a reason and more", EntryText("05", "30[ 0603551D15 04[ 0A0101 00 ] ]"), malformedExtensions},
        BadEntryCase{"an invalidity date of two digits", EntryText("05", "30[ 0603551D18 04[ 17['261001000000Z'] ] ]"),
                     malformedExtensions},
        BadEntryCase{"an invalidity date that is none", EntryText("05", "30[ 0603551D18 04[ 18['20261301000000Z'] ] ]"),
                     malformedExtensions},
        BadEntryCase{"an invalidity date and more", EntryText("05", "30[ 0603551D18 04[ 18['20261001000000Z'] 0500 ] ]"),
                     malformedExtensions},
        BadEntryCase{"a name for an issuer", EntryText("05", "30[ 0603551D1D 0101FF 04[ 8203'abc' ] ]"), malformedExtensions},
        BadEntryCase{"an issuer without a directory name", EntryText("05", "30[ 0603551D1D 0101FF 04[ 30[ 8203'abc' ] ] ]"),
                     malformedExtensions},
        BadEntryCase{"an issuer with a directory name that is none",
                     EntryText("05", "30[ 0603551D1D 0101FF 04[ 30[ A4[ 30[ 0500 ] ] ] ] ]"), malformedExtensions},
        BadEntryCase{"an issuer with a name of no kind", EntryText("05", "30[ 0603551D1D 0101FF 04[ 30[ A4[ 3000 ] 8900 ] ] ]"),
                     malformedExtensions},
        BadEntryCase{"no name of an issuer", EntryText("05", "30[ 0603551D1D 0101FF 04[ 3000 ] ]"), malformedExtensions}));

TEST(RevokedEntries, TakeTheIssuerOfTheLastOneThatNamesIt)
{
    const std::string second = "30[ 0603551D1D 0101FF 04[ 30[ A4[ 30[ 31[ 30[ 0603550403 0C['B'] ] ] ] ] ] ] ]";
    const Bytes octets = DerOf(EntryText("05") + EntryText("06", issuerExtension) + EntryText("05") +
                               EntryText("07", reasonExtension) + EntryText("05", second) + EntryText("08"));
    RevokedEntries entries;
    ASSERT_TRUE(entries.Read(octets, noLimit));
    const char* const issuers[] = {"",
                                   "30158203616263a40e300c310a300806035504030c0141",
                                   "30158203616263a40e300c310a300806035504030c0141",
                                   "30158203616263a40e300c310a300806035504030c0141",
                                   "3010a40e300c310a300806035504030c0142",
                                   "3010a40e300c310a300806035504030c0142"};
    for (std::uint32_t index = 0; index < entries.count(); ++index)
        EXPECT_EQ(HexOf(OctetsOfSpan(entries.entry(index)->certificateIssuer)), issuers[index]) << index;
    std::vector<std::string> found;
    for (const RevokedEntry& entry : entries.find(Bytes{5}))
        found.push_back(HexOf(OctetsOfSpan(entry.certificateIssuer)));
    EXPECT_EQ(found, (std::vector<std::string>{issuers[0], issuers[2], issuers[4]}));
    EXPECT_EQ(HexOf(OctetsOfSpan(entries.find(Bytes{8}).at(0).certificateIssuer)), issuers[5]);
    // It is not copied: a list may have ten thousand entries of one number under one long name.
    for (const RevokedEntry& entry : entries.find(Bytes{5}))
        EXPECT_TRUE(entry.certificateIssuer.empty() || (entry.certificateIssuer.data() > octets.data() &&
                                                        entry.certificateIssuer.data() < octets.data() + octets.size()));
}

TEST(RevokedEntries, KnowOfAnUnknownCriticalExtensionWhereverItIs)
{
    RevokedEntries entries;
    const Bytes octets =
        DerOf(EntryText("05") + EntryText("06", "30[ 06032A0304 0101FF 0400 ]") + EntryText("07", reasonExtension));
    ASSERT_TRUE(entries.Read(octets, noLimit));
    EXPECT_TRUE(entries.hasUnknownCritical());
    EXPECT_FALSE(entries.find(Bytes{5}).at(0).hasUnknownCritical);
    ASSERT_TRUE(entries.Read(DerOf(EntryText("05")), noLimit));
    EXPECT_FALSE(entries.hasUnknownCritical());
}

TEST(RevokedEntries, AreFoundByANumberWithNeedlessOctets)
{
    const Bytes octets = DerOf(EntryText("05") + EntryText("0080") + EntryText("80"));
    RevokedEntries entries;
    ASSERT_TRUE(entries.Read(octets, noLimit));
    for (const char* number : {"05", "0005", "00000005", "0080", "000080", "80", "FF80", "FFFF80"})
        EXPECT_EQ(entries.find(DerOf(number)).size(), 1u) << number;
    for (const char* number : {"", "00", "FF", "FF05", "050000", "FF0080"})
        EXPECT_TRUE(entries.find(DerOf(number)).empty()) << number;
}

TEST(RevokedEntries, AreCountedUpToALimit)
{
    RevokedEntries entries;
    const Bytes octets = DerOf(EntryText("05") + EntryText("06") + EntryText("07"));
    EXPECT_TRUE(entries.Read(octets, 3));
    EXPECT_FALSE(entries.Read(octets, 2));
    EXPECT_EQ(LastFailure()->text, "There are more than 2 entries");
}

TEST(RevokedEntries, OfOneSerialNumberHaveALimit)
{
    const Bytes one = DerOf(EntryText("05"));
    Bytes octets = DerOf(EntryText("04"));
    for (std::uint32_t count = 0; count < RevokedEntries::maxOfOneSerialNumber; ++count)
        octets.insert(octets.end(), one.begin(), one.end());
    RevokedEntries entries;
    ASSERT_TRUE(entries.Read(octets, noLimit));
    EXPECT_EQ(entries.find(Bytes{5}).size(), RevokedEntries::maxOfOneSerialNumber);
    octets.insert(octets.end(), one.begin(), one.end());
    EXPECT_FALSE(entries.Read(octets, noLimit));
    EXPECT_EQ(LastFailure()->text, "One serial number has more than 10000 entries");
}

struct SizeCase {
    std::size_t entries;
    std::size_t numbers;   ///< that the entries share
    std::size_t maxOctets; ///< of a number
};

class RevokedEntriesOf : public ::testing::TestWithParam<SizeCase> {};

/// The index against what a walk over the octets finds. Few numbers for many entries make buckets that are sorted.
TEST_P(RevokedEntriesOf, EachNumberAreFoundInTheOrderOfTheList)
{
    const SizeCase& size = GetParam();
    std::mt19937 random(7);
    std::vector<Bytes> numbers(size.numbers);
    for (Bytes& number : numbers) {
        number = RandomBytes(random, 1 + random() % size.maxOctets);
        number[0] = static_cast<std::uint8_t>(1 + number[0] % 0x7F);
    }
    std::map<Bytes, std::vector<std::uint32_t>> places;
    Bytes octets;
    for (std::uint32_t index = 0; index < size.entries; ++index) {
        const Bytes& number = numbers[random() % numbers.size()];
        places[number].push_back(index);
        const std::string extensions = random() % 3 == 0 ? reasonExtension : random() % 3 == 0 ? OtherExtensions(8) : "";
        const Bytes entry = DerOf(EntryText(Hex(number), extensions));
        octets.insert(octets.end(), entry.begin(), entry.end());
    }

    RevokedEntries entries;
    ASSERT_TRUE(entries.Read(octets, noLimit));
    ASSERT_EQ(entries.count(), size.entries);
    for (const auto& [number, indices] : places) {
        const std::vector<RevokedEntry> found = entries.find(number);
        ASSERT_EQ(found.size(), indices.size());
        for (std::size_t which = 0; which < found.size(); ++which) {
            const std::optional<RevokedEntry> entry = entries.entry(indices[which]);
            ASSERT_TRUE(entry);
            ASSERT_EQ(BytesOf(entry->serialNumber), number);
            ASSERT_EQ(BytesOf(found[which].serialNumber), number);
            ASSERT_EQ(WhatIsSaid(found[which]), WhatIsSaid(*entry));
        }
        Bytes another = number;
        another.back() ^= 0x55;
        ASSERT_EQ(entries.find(another).empty(), !places.contains(another));
    }
    EXPECT_FALSE(entries.entry(static_cast<std::uint32_t>(size.entries)));
}

INSTANTIATE_TEST_SUITE_P(Entries, RevokedEntriesOf,
                         ::testing::Values(SizeCase{1, 1, 1}, SizeCase{64, 64, 2}, SizeCase{65, 65, 20}, SizeCase{600, 600, 20},
                                           SizeCase{400, 5, 3}, SizeCase{200, 2, 64}));

TEST(RevokedEntries, HaveAnIndexThatIsSmallBesideThem)
{
    Bytes octets;
    for (std::uint32_t index = 0; index < 4096; ++index) {
        const Bytes number = {0x5A, static_cast<std::uint8_t>(index >> 8), static_cast<std::uint8_t>(index)};
        const Bytes entry = DerOf(EntryText(Hex(number) + Repeated("17", 17)));
        octets.insert(octets.end(), entry.begin(), entry.end());
    }
    RevokedEntries entries;
    ASSERT_TRUE(entries.Read(octets, noLimit));
    EXPECT_LE(entries.indexSize(), octets.size() / 5);
}

TEST(RevocationReason, HasANameWhateverItsNumber)
{
    EXPECT_STREQ(RevocationReasonName(RevocationReason::unspecified), "unspecified");
    EXPECT_STREQ(RevocationReasonName(RevocationReason::aaCompromise), "aACompromise");
    EXPECT_STREQ(RevocationReasonName(static_cast<RevocationReason>(7)), "unused (7)");
    EXPECT_STREQ(RevocationReasonName(static_cast<RevocationReason>(11)), "unused (11)");
    EXPECT_STREQ(RevocationReasonName(static_cast<RevocationReason>(255)), "unused (255)");
}

} // namespace
