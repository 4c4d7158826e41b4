#include "pki/cms/ber_gathering.h"
#include "tests/pki/cms/cms_files.h"
#include "tests/pki/keys/test_keys.h"

using namespace ccrypto;

namespace {

struct GatherCase {
    const char* name;
    std::string_view ber;
    std::string_view der;
};

const GatherCase gatherCases[] = {
    {"DER stays", "30 06 02 01 05 04 01 61", "30 06 02 01 05 04 01 61"},
    {"an indefinite length", "30 80 02 01 05 00 00", "30 03 02 01 05"},
    {"indefinite lengths inside each other", "30 80 31 80 02 01 05 00 00 05 00 00 00", "30 07 31 03 02 01 05 05 00"},
    {"a definite level inside an indefinite one", "30 80 31 03 02 01 05 00 00", "30 05 31 03 02 01 05"},
    {"an indefinite level inside a definite one", "30 07 31 80 02 01 05 00 00", "30 05 31 03 02 01 05"},
    {"a long length of a level", "30 81 03 02 01 05", "30 03 02 01 05"},
    {"a long length of a value", "30 83 00 00 05 02 82 00 01 05", "30 03 02 01 05"},
    {"pieces", "30 80 24 80 04 01 61 04 00 04 02 62 63 00 00 00 00", "30 05 04 03 61 62 63"},
    {"pieces of a definite length", "30 08 24 06 04 01 61 04 01 62", "30 04 04 02 61 62"},
    {"pieces of pieces", "24 80 24 05 04 03 61 62 63 24 80 04 01 64 00 00 00 00", "04 04 61 62 63 64"},
    {"no pieces", "30 04 24 80 00 00", "30 02 04 00"},
    {"a tag around pieces", "30 80 A0 80 24 80 04 01 61 00 00 00 00 00 00", "30 05 A0 03 04 01 61"},
    {"padding after the message", "30 03 02 01 05 00 00 00", "30 03 02 01 05"},
};

struct RefusedBerCase {
    const char* name;
    std::string_view ber;
    const char* reason;
};

const RefusedBerCase refusedBerCases[] = {
    {"nothing", "", "The message ends early"},
    {"an identifier alone", "30", "The message ends early"},
    {"no end of contents", "30 80 02 01 05", "The message ends early"},
    {"half an end of contents", "30 80 02 01 05 00", "The message ends early"},
    {"an end of contents with an octet", "30 80 02 01 05 00 01", "The end of contents stands where an element should"},
    {"the end of an outer level inside an inner one", "30 06 31 80 02 01 05 00 00", "The message ends early"},
    {"a value longer than its level", "30 03 02 02 05 06", "A length is longer than the message"},
    {"a length cut short", "30 04 02 84 00 00", "A length is longer than the message"},
    {"a length that does not fit 64 bits", "30 8A 01 00 00 00 00 00 00 00 00 00 02 01 05", "A length is longer than the message"},
    {"end of contents in a definite level", "30 04 02 00 00 00", "The end of contents stands where an element should"},
    {"an indefinite INTEGER", "30 80 02 80 00 00 00 00", "A primitive element has an indefinite length"},
    {"a piece that is an INTEGER", "24 03 02 01 05", "A piece of an OCTET STRING is not one"},
    {"a UTF8String in pieces", "2C 03 0C 01 61", "A string other than an OCTET STRING is cut into pieces"},
    {"a tag number of two octets", "30 04 9F 1F 01 05", "A tag number is above 30"},
    {"octets after the message", "30 03 02 01 05 00 01", "Octets follow the end of the message"},
};

/// So many levels, the innermost empty.
Bytes Nested(std::size_t levels)
{
    Bytes octets;
    for (std::size_t level = 0; level < levels; ++level)
        octets.insert(octets.end(), {0x30, 0x80});
    octets.resize(levels * 4);
    return octets;
}

} // namespace

TEST(BerGathering, GivesTheSameAsDer)
{
    for (const GatherCase& entry : gatherCases) {
        const Bytes ber = HexOctets(entry.ber);
        EXPECT_EQ(HexOf(GatherBer(ber)), Hex(HexOctets(entry.der))) << entry.name;
    }
}

TEST(BerGathering, RefusesWhatIsNotBer)
{
    for (const RefusedBerCase& entry : refusedBerCases) {
        const Bytes ber = HexOctets(entry.ber);
        ForgetFailure();
        EXPECT_TRUE(GatherBer(ber).isEmpty()) << entry.name;
        EXPECT_TRUE(ReasonOfFailure().starts_with(entry.reason)) << entry.name << ": " << ReasonOfFailure();
    }
}

TEST(BerGathering, HasLimits)
{
    EXPECT_FALSE(GatherBer(Nested(maxMessageDepth)).isEmpty());
    EXPECT_TRUE(GatherBer(Nested(maxMessageDepth + 1)).isEmpty());
    EXPECT_EQ(ReasonOfFailure().substr(0, 49), "The message is nested more than 128 levels deep (");

    // Elements, but not the pieces of content.
    Bytes nulls(2 * std::size_t{maxMessageElements});
    for (std::size_t index = 0; index < nulls.size(); index += 2)
        nulls[index] = 0x05;
    EXPECT_FALSE(GatherBer(Tlv(0x30, Bytes(nulls.begin() + 2, nulls.end()))).isEmpty());
    EXPECT_TRUE(GatherBer(Tlv(0x30, nulls)).isEmpty());
    EXPECT_TRUE(ReasonOfFailure().starts_with("The message has more than 2,000,000 elements"));
    const Bytes certificates = Tlv(0xA0, Tlv(0x30, nulls));
    const Bytes data = Tlv(0x30, {NumberTlv(1), Tlv(0x31, Bytes()), Tlv(0x30, OidTlv("1.2.840.113549.1.7.1")), certificates});
    EXPECT_TRUE(GatherBer(Tlv(0x30, {OidTlv("1.2.840.113549.1.7.2"), Tlv(0xA0, data)})).isEmpty());
    EXPECT_TRUE(ReasonOfFailure().starts_with("The message has more than 2,000,000 elements"));
    for (std::size_t index = 0; index < nulls.size(); index += 2)
        nulls[index] = 0x04;
    EXPECT_FALSE(GatherBer(Tlv(0x24, nulls)).isEmpty());

    // Only the first octets are looked at.
    const std::unique_ptr<std::uint8_t[]> large(new std::uint8_t[maxMessageSize + 1]);
    large[0] = large[1] = 0;
    EXPECT_TRUE(GatherBer({large.get(), maxMessageSize}).isEmpty());
    EXPECT_TRUE(ReasonOfFailure().starts_with("The end of contents"));
    EXPECT_TRUE(GatherBer({large.get(), maxMessageSize + 1}).isEmpty());
    EXPECT_TRUE(ReasonOfFailure().starts_with("The message is longer than 256 MiB"));
}
