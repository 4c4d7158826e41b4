#include "asn1/types/algorithm_identifier.h"
#include "asn1/types/algorithm_table.h"
#include "asn1/types/asn1_collections.h"
#include "asn1/types/asn1_values.h"
#include "asn1/types/bit_string.h"
#include "core/diagnostics/auto_logger.h"
#include "core/diagnostics/failure.h"
#include "tests/asn1/parser/text_forms.h"
#include "tests/support/captured_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>

using namespace ccrypto;

namespace {

using std::string_view_literals::operator""sv;
using testing::Contains;
using testing::HasSubstr;

TEST(AlgorithmIdentifier, BuildsAndReadsItsParameters)
{
    CCryptoAlgorithmIdentifier sha256(algorithm::sha256, true);
    const element der = sha256.BuildDer();
    EXPECT_EQ(Hex(der), "300d06096086480165030402010500");
    EXPECT_EQ(Hex(sha256.GetDerEncodedOID()), "608648016503040201");

    CCryptoAlgorithmIdentifier read;
    ASSERT_TRUE(read.ParseDer(der));
    EXPECT_EQ(read.id(), algorithm::sha256);
    ASSERT_NE(read.parameters(), nullptr);
    EXPECT_TRUE(read.BuildDer() == der);

    CCryptoAlgorithmIdentifier bare(algorithm::ecdsaWithSha256, false);
    EXPECT_EQ(Hex(bare.BuildDer()), "300a06082a8648ce3d040302");
    EXPECT_TRUE(CCryptoAlgorithmIdentifier().BuildDer().isEmpty());
}

TEST(AlgorithmIdentifier, KeepsTheOidAndOctetsOfWhatTheTableDoesNotHave)
{
    const element der = Der("\x30\x0D\x06\x09\x2A\x86\x48\x86\xF7\x0D\x01\x01\x0C\x05\x00"sv);
    CCryptoAlgorithmIdentifier identifier;
    const CapturedLog log;
    ASSERT_TRUE(identifier.ParseDer(der));
    EXPECT_FALSE(identifier.isSupported());
    EXPECT_EQ(identifier.id(), algorithm::none);
    EXPECT_EQ(identifier.oid(), "1.2.840.113549.1.1.12");
    EXPECT_EQ(identifier.parameters()->type(), ElementType::asn1Null);
    EXPECT_EQ(identifier.readOctets(), der);
    EXPECT_TRUE(identifier.BuildDer().isEmpty());
    EXPECT_TRUE(identifier.GetDerEncodedOID().isEmpty());
    EXPECT_THAT(log.texts(), Contains(HasSubstr("Unsupported OID: 1.2.840.113549.1.1.12")));
    EXPECT_THAT(log.texts(), Contains(HasSubstr("Algorithm 1.2.840.113549.1.1.12 is not supported")));

    // An algorithm that is set, or read afterwards, takes its place.
    identifier.setId(algorithm::sha512WithRsa);
    EXPECT_EQ(identifier.oid(), "1.2.840.113549.1.1.13");
    EXPECT_EQ(Hex(identifier.BuildDer()), "300d06092a864886f70d01010d0500");
    ASSERT_TRUE(identifier.ParseDer(CCryptoAlgorithmIdentifier(algorithm::sha1, false).BuildDer()));
    EXPECT_EQ(identifier.oid(), "1.3.14.3.2.26");
    EXPECT_FALSE(identifier.ParseDer(Der("\x30\x00"sv)));
    EXPECT_EQ(identifier.oid(), "");
}

TEST(AlgorithmIdentifier, PutsNullInThePlaceOfParametersThatWereThere)
{
    CCryptoAlgorithmIdentifier identifier;
    ASSERT_TRUE(identifier.ParseDer(Der("\x30\x0A\x06\x05\x2B\x0E\x03\x02\x1A\x04\x01\xFF")));
    EXPECT_TRUE(identifier.nullParameters());
    identifier.setParameters(nullptr);
    EXPECT_EQ(Hex(identifier.BuildDer()), "300906052b0e03021a0500");
    ASSERT_TRUE(identifier.ParseDer(Der("\x30\x07\x06\x05\x2B\x0E\x03\x02\x1A")));
    EXPECT_FALSE(identifier.nullParameters());
    EXPECT_EQ(Hex(identifier.BuildDer()), "300706052b0e03021a");
}

TEST(AlgorithmIdentifier, IsClearedByAFailedParseAndWordsItsReasons)
{
    CCryptoAlgorithmIdentifier stale(algorithm::sha256, true);
    const CCryptoParser number(elementNode::Make(ElementType::asn1Integer));
    EXPECT_FALSE(stale.Assign(number.root()));
    EXPECT_EQ(stale.id(), algorithm::none);

    const auto logged = [](const std::function<void()>& operation, std::string_view text) {
        const CapturedLog log;
        operation();
        const std::vector<std::string> lines = log.texts();
        return std::ranges::any_of(lines, [text](const std::string& line) { return line.find(text) != std::string::npos; });
    };
    EXPECT_TRUE(logged([] { EXPECT_TRUE(CCryptoAlgorithmIdentifier(algorithm::reserved900, false).BuildDer().isEmpty()); },
                       "Algorithm 900 has no OID"));
    EXPECT_TRUE(logged([] { EXPECT_TRUE(CCryptoAlgorithmIdentifier().GetDerEncodedOID().isEmpty()); }, "Algorithm 0 has no OID"));
    const element longOid = Der("\x30\x82\x03\x04\x06\x82\x03\x00"sv);
    element der = longOid;
    der.resize(longOid.length() + 0x300);
    std::fill(der.data() + longOid.length(), der.data() + der.length(), std::uint8_t{0x81});
    EXPECT_TRUE(logged([&der] { CCryptoAlgorithmIdentifier().ParseDer(der); }, "Unsupported OID: 8181"));
    EXPECT_TRUE(logged([&number] { CCryptoAlgorithmIdentifier{number.root()}; }, "Invalid elementToParse"));
    EXPECT_TRUE(logged([&number] { CCryptoAlgorithmIdentifier().Parse(number.root()); }, "ParseNode() failed"));
    EXPECT_TRUE(
        logged([&number] { CCryptoAlgorithmIdentifier().Parse(number.root()); }, "SEQUENCE: the data holds INTEGER (item 1)"));
    EXPECT_FALSE(logged([] { CCryptoAlgorithmIdentifier{nullptr}; }, "Invalid elementToParse"));
    EXPECT_TRUE(logged([] { CCryptoAlgorithmIdentifier{nullptr}; }, "elementNode is NULL"));
    EXPECT_TRUE(logged([] { CCryptoAlgorithmIdentifier().Parse(nullptr); }, "elementNode is NULL"));
    EXPECT_TRUE(logged([&number] { CCryptoAlgorithmIdentifier().Assign(number.root()); }, "Parsing failed?"));
    EXPECT_FALSE(logged([&number] { CCryptoAlgorithmIdentifier().Parse(number.root()); }, "Parsing failed?"));
    CCryptoParser sha384WithRsa;
    ASSERT_TRUE(sha384WithRsa.Load_ASCII_Memory("SEQUENCE{OBJECT_IDENTIFIER=\"1.2.840.113549.1.1.12\"}"));
    EXPECT_FALSE(logged([&] { CCryptoAlgorithmIdentifier{sha384WithRsa.root()}; }, "Invalid elementToParse"));
}

TEST(BitString, NumbersBitsFromTheFirstBytesTop)
{
    bitString bits;
    bits.SetBit(9, true);
    EXPECT_EQ(Hex(bits.bits()), "0040");
    EXPECT_TRUE(bits.GetBit(9));
    EXPECT_FALSE(bits.GetBit(100));
    EXPECT_EQ(Hex(bits.BuildDer()), "0303000040");
    bitString read;
    EXPECT_TRUE(read.ParseDer(bits.BuildDer()));
    EXPECT_EQ(read.bits(), bits.bits());
    EXPECT_FALSE(read.ParseDer(Der("\x03\x02\x08\xFF")));
    EXPECT_FALSE(read.ParseDer(Der("\x03\x01\x05")));
}

TEST(BitString, UsesTheBitsThatAreSet)
{
    const struct {
        std::uint32_t bit;
        const char* der;
    } cases[] = {{1, "030205e0"}, {2, "030205a0"}, {4, "030203a8"}, {7, "030200a1"}, {10, "030305a020"}, {15, "030300a001"}};
    for (const auto& [bit, der] : cases) {
        SCOPED_TRACE(bit);
        bitString bits;
        ASSERT_TRUE(bits.ParseDer(Der("\x03\x02\x05\xA0")));
        bits.SetBit(bit, true);
        EXPECT_EQ(Hex(bits.BuildDer()), der);
    }
}

TEST(BitString, RefusesUnusedBitsOfNoBits)
{
    EXPECT_TRUE(bitString(element(), 5).BuildDer().isEmpty());
    EXPECT_EQ(Hex(bitString(element(), 0).BuildDer()), "030100");
}

class OctetStrings : public CCryptoASN1SequenceOfObjects {
public:
    std::unique_ptr<CCryptoASN1Object> CreateMember() override { return std::make_unique<CCryptoASN1OctetStringObject>(); }
};

TEST(Collections, ReadAndBuildTheirMembers)
{
    const element der = Der("\x30\x08\x04\x02hi\x04\x02yo");
    OctetStrings strings;
    ASSERT_TRUE(strings.ParseDer(der));
    ASSERT_EQ(strings.objects().size(), 2u);
    EXPECT_TRUE(strings.BuildDer() == der);
    EXPECT_FALSE(strings.ParseDer(Der("\x30\x03\x02\x01\x05")));
    EXPECT_TRUE(strings.objects().empty());
    CCryptoParser tree;
    ASSERT_TRUE(tree.Load_DER_Memory(der));
    const CCryptoASN1SequenceOfObjects made(tree.root(), MakeAsn1Member<CCryptoASN1OctetStringObject>);
    EXPECT_EQ(made.objects().size(), 2u);
    EXPECT_FALSE(strings.ParseDer(Der("\x30\x04\x04\x02hi\x05\x00"sv)));
    OctetStrings none;
    EXPECT_EQ(Hex(none.BuildDer()), "3000");
    EXPECT_TRUE(none.ParseDer(none.BuildDer()));

    const CapturedLog log;
    CCryptoASN1SETofObjects unmade;
    unmade.add(unmade.CreateMember());
    EXPECT_EQ(unmade.BuildTree(), nullptr);
    EXPECT_THAT(log.texts(), Contains(HasSubstr("A member is null")));
}

/// Two elements a member, of which it notes how many nodes it keeps.
class Pair : public CCryptoASN1Object {
public:
    Pair() : CCryptoASN1Object("INTEGER=first, OCTET_STRING(OPTIONAL)=second") {}
    bool BuildNode() override
    {
        return builder().fill("first", element(first)) && (second.isEmpty() || builder().fill("second", second));
    }
    bool ParseNode() override
    {
        first = findNumber("first");
        second = findBytes("second");
        for (const elementNode* node = data(); node != nullptr; node = node->next())
            ++kept;
        return true;
    }
    std::uint32_t first = 0;
    element second;
    std::uint32_t kept = 0;
};

TEST(Collections, TakeMembersOfSeveralElementsAndKeepNoMoreOfThem)
{
    constexpr std::uint32_t count = 2000;
    CCryptoASN1SequenceOfObjects list(MakeAsn1Member<Pair>);
    for (std::uint32_t index = 0; index < count; ++index) {
        auto member = std::make_unique<Pair>();
        member->first = index;
        list.add(std::move(member));
    }
    const element der = list.BuildDer();
    CCryptoASN1SequenceOfObjects read(MakeAsn1Member<Pair>);
    ASSERT_TRUE(read.ParseDer(der));
    ASSERT_EQ(read.objects().size(), count);
    std::uint64_t kept = 0;
    for (std::uint32_t index = 0; index < count; ++index) {
        const auto& member = static_cast<const Pair&>(*read.objects()[index]);
        EXPECT_EQ(member.first, index);
        kept += member.kept;
    }
    EXPECT_EQ(kept, count);
    EXPECT_TRUE(read.BuildDer() == der);

    // The second element belongs to the first, and is not tried as a member of its own.
    ASSERT_TRUE(read.ParseDer(Der("\x30\x09\x02\x01\x05\x04\x01\xFF\x02\x01\x06")));
    ASSERT_EQ(read.objects().size(), 2u);
    EXPECT_EQ(read.objects()[0]->taken(), 2u);
    EXPECT_EQ(static_cast<const Pair&>(*read.objects()[1]).first, 6u);
    EXPECT_FALSE(read.ParseDer(Der("\x30\x06\x04\x01\xFF\x02\x01\x06")));
}

/// A template of the test's own, whose names are asked for.
class Reader : public CCryptoASN1Object {
public:
    explicit Reader(const char* templateText) : CCryptoASN1Object(templateText) {}
    bool BuildNode() override { return true; }
    bool ParseNode() override { return true; }
};

TEST(Numbers, AreTheirOctetsWhateverTextTheyLookLike)
{
    const struct {
        std::string_view der;
        std::uint32_t number;
        const char* text;
    } cases[] = {
        {"\x80\x02\x31\x32", 12594, "12"},
        {"\x80\x02\xC3\xA4", 50084, "\xC3\xA4"},
        {"\x80\x01\x31", 49, "31"},
        {"\x0A\x02\x31\x32", 12594, "12"},
        {"\x02\x02\x31\x32", 12594, "12594"},
        {"\x02\x02\x00\xC8"sv, 200, "200"},
        {"\x02\x05\x00\xFF\xFF\xFF\xFF"sv, 4294967295, "4294967295"},
        {"\x02\x03\x00\x00\x05"sv, 5, "5"},
        {"\x0A\x02\x00\xC8"sv, 200, "00c8"},
    };
    for (const auto& [der, number, text] : cases) {
        SCOPED_TRACE(Hex(Der(der)));
        Reader parsed("number");
        ASSERT_TRUE(parsed.ParseDer(Der(der)));
        EXPECT_EQ(parsed.findNumber("number"), number);
        EXPECT_EQ(parsed.findBytes("number").toWord32(), number);
        EXPECT_EQ(parsed.findText("number"), text);
    }
    Reader tagged("CONTEXT_SPECIFIC[0]{number}");
    ASSERT_TRUE(tagged.ParseDer(Der("\x80\x02\x31\x32")));
    EXPECT_EQ(tagged.findNumber("number"), 12594u);
    EXPECT_EQ(tagged.findBytes("number").type(), ElementType::bytes);
}

/// Says why it refuses 1, and not why it refuses 2.
class Choosy : public CCryptoASN1Object {
public:
    Choosy() : CCryptoASN1Object("INTEGER=number") {}
    bool BuildNode() override { return true; }
    bool ParseNode() override
    {
        CCryptoAutoLogger logger("Choosy::ParseNode");
        const std::uint32_t number = findNumber("number");
        return number == 1 ? logger.fail(false, "Not this one") : number != 2;
    }

protected:
    const char* MeaningOfMismatch() const override { return data()->type() == ElementType::asn1Null ? "Nothing" : nullptr; }
};

TEST(Failures, AreThoseOfTheInnermostObjectThatGaveAReason)
{
    const struct {
        std::string_view der;
        const char* reason;
    } cases[] = {
        {"\x30\x03\x02\x01\x01", "Not this one"},
        {"\x30\x03\x02\x01\x02", "ParseNode() failed"},
        {"\x30\x03\x04\x01\x02", "ParseNode() failed: INTEGER: the data holds OCTET_STRING (item 1)"},
        {"\x30\x02\x05\x00"sv, "Nothing"},
    };
    for (const auto& [der, reason] : cases) {
        CCryptoAutoLogger("Earlier").fail(false, "something else");
        const CapturedLog log;
        EXPECT_FALSE(CCryptoASN1SequenceOfObjects(MakeAsn1Member<Choosy>).ParseDer(Der(der)));
        EXPECT_EQ(LastFailure().value_or(Failure()).text, reason);
        EXPECT_THAT(log.texts(), Contains(HasSubstr("ParseNode() failed")));
    }
}

TEST(Surplus, IsRefusedUnlessTheCallerAllowsIt)
{
    const struct {
        std::string_view der;
        const char* reason;
    } cases[] = {
        {"\x30\x08\x02\x01\x01\x30\x03\x02\x01\x02"sv, ""},
        {"\x30\x0A\x02\x01\x01\x30\x05\x02\x01\x02\x00\xFF\xFF\x00"sv, ""},
        {"\x30\x80\x02\x01\x01\x30\x80\x02\x01\x02\x00\x00\x00\x00"sv, ""},
        {"\x30\x08\x02\x01\x01\x30\x03\x02\x01\x02\x00\x05\x00"sv, "Octets other than padding follow"},
        {"\x30\x0A\x02\x01\x01\x30\x05\x02\x01\x02\xFF\xAA"sv, "Octets other than padding follow"},
        {"\x30\x80\x02\x01\x01\x30\x03\x02\x01\x02\x00\x00\x00\xAA"sv, "Octets other than padding follow"},
        {"\x30\x0A\x02\x01\x01\x30\x05\x02\x01\x02\x05\x00"sv, "Data follows the last item of the template"},
        {"\x30\x0A\x02\x01\x01\x30\x03\x02\x01\x02\x05\x00"sv, "Data follows the last item of the template"},
        {"\x30\x08\x02\x01\x01\x30\x03\x02\x01\x02\x05\x00"sv, "More elements follow the first"},
    };
    for (const auto& [der, reason] : cases) {
        SCOPED_TRACE(Hex(Der(der)));
        const CapturedLog log;
        Reader object("SEQUENCE{INTEGER=a,SEQUENCE{INTEGER=b}}");
        EXPECT_EQ(object.ParseDer(Der(der)), *reason == '\0');
        EXPECT_EQ(object.isBound("b"), *reason == '\0');
        if (*reason != '\0') {
            EXPECT_THAT(log.texts(), Contains(HasSubstr(reason)));
        }
        object.allowSurplus();
        ASSERT_TRUE(object.ParseDer(Der(der)));
        EXPECT_EQ(object.findNumber("b"), 2u);
    }
}

TEST(Objects, AreParsedFromPartsOfThemselves)
{
    // A template of several items is matched before the data is copied, here with the rest of a BIT STRING.
    Reader bits("BIT_STRING{unused, rest}, x(OPTIONAL)");
    ASSERT_TRUE(bits.ParseDer(Der("\x03\x05\x00zzzz"sv)));
    EXPECT_FALSE(bits.Parse(bits.find("rest")));
    EXPECT_FALSE(bits.isBound("rest"));
}

template <typename Object>
std::string ReadAndBuilt(std::string_view der)
{
    Object object;
    if (!object.ParseDer(Der(der)))
        return "refused";
    const ElementNodePtr tree = object.BuildTree();
    Object again;
    EXPECT_TRUE(again.Parse(tree.get())) << "the tree itself";
    EXPECT_TRUE(again.BuildDer() == object.BuildDer());
    return Hex(object.BuildDer());
}

TEST(Values, BuildWhatTheyReadAndReadTheTreesTheyBuild)
{
    struct Case {
        std::string (*readAndBuilt)(std::string_view);
        std::string_view der;
        const char* result;
    };
    const Case cases[] = {
        {ReadAndBuilt<CCryptoASN1SETObject>, "\x31\x00"sv, "3100"},
        {ReadAndBuilt<CCryptoASN1SETObject>, "\x11\x00"sv, "refused"},
        {ReadAndBuilt<CCryptoASN1SETofObjects>, "\x31\x00"sv, "3100"},
        {ReadAndBuilt<CCryptoASN1ContextSpecific>, "\xA0\x00"sv, "a000"},
        {ReadAndBuilt<CCryptoASN1ContextSpecific>, "\x80\x00"sv, "8000"},
        {ReadAndBuilt<CCryptoASN1ContextSpecific>, "\x80\x02\x41\x42"sv, "80024142"},
        {ReadAndBuilt<bitString>, "\x03\x03\x06\x00\x40"sv, "0303060040"},
        {ReadAndBuilt<bitString>, "\x03\x01\x00"sv, "030100"},
        {ReadAndBuilt<bitString>, "\x03\x00"sv, "refused"},
        {ReadAndBuilt<CCryptoAlgorithmIdentifier>, "\x30\x0A\x06\x08\x2A\x86\x48\xCE\x3D\x04\x03\x02"sv,
         "300a06082a8648ce3d040302"},
        {ReadAndBuilt<CCryptoAlgorithmIdentifier>, "\x30\x0F\x26\x0B\x06\x09\x60\x86\x48\x01\x65\x03\x04\x02\x01\x05\x00"sv,
         "refused"},
        {ReadAndBuilt<CCryptoASN1ObjectIdentifier>, "\x06\x00"sv, "refused"},
        {ReadAndBuilt<CCryptoASN1ObjectIdentifier>, "\x06\x02\x55\x80"sv, "refused"},
        {ReadAndBuilt<CCryptoASN1GeneralString>, "\x3B\x06\x1B\x01\x61\x1B\x01\x62"sv, "refused"},
        {ReadAndBuilt<CCryptoASN1GeneralString>, "\x1B\x00"sv, "1b00"},
        {ReadAndBuilt<CCryptoASN1OctetStringObject>, "\x24\x04\x04\x02\x01\x02"sv, "refused"},
        {ReadAndBuilt<CCryptoASN1OctetStringObject>, "\x04\x01\x41\x05\x00"sv, "refused"},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(Hex(Der(each.der)));
        EXPECT_EQ(each.readAndBuilt(each.der), each.result);
    }
}

TEST(Values, TakeTheOctetsOfWhatWasDecodedInsideStrings)
{
    const DerOptions looking{.insideOctetStrings = true, .insideBitStrings = true};
    CCryptoParser octets;
    ASSERT_TRUE(octets.Load_DER_Memory(Der("\x04\x05\x02\x01\x05\x05\x00"sv), looking));
    EXPECT_EQ(Hex(CCryptoASN1OctetStringObject(octets.root()).bytes()), "0201050500");
    CCryptoParser bits;
    ASSERT_TRUE(bits.Load_DER_Memory(Der("\x03\x04\x00\x02\x01\x05"sv), looking));
    EXPECT_EQ(Hex(bitString(bits.root()).bits()), "020105");
}

TEST(Values, AreReadFromAPartOfTheSameObject)
{
    CCryptoASN1ContextSpecific tagged;
    ASSERT_TRUE(tagged.ParseDer(Der("\xA0\x05\xA3\x03\x02\x01\x05")));
    ASSERT_TRUE(tagged.Parse(tagged.data()));
    EXPECT_EQ(tagged.tagNumber(), 3u);
    EXPECT_EQ(Hex(CCryptoParser::ToDer(tagged.data())), "020105");
}

TEST(GeneralizedTime, TakesTheFormOfDerAlone)
{
    const std::pair<std::string, bool> cases[] = {
        {"20261122230000Z", true},      {"20260101000000.5Z", true}, {"20260101000000.125Z", true},
        {"20260231230000Z", false},     {"20260101000000.Z", false}, {"20260101000000,5Z", false},
        {"2020-01-01", false},          {"20260101000000", false},   {"260101000000Z", false},
        {"20260101000000+0200", false}, {"202601010000Z", false},    {"\x20\x20\x01\x01\x05\x05\x05", false},
    };
    for (const auto& [text, accepted] : cases) {
        SCOPED_TRACE(text);
        const std::string der = "\x18" + std::string(1, static_cast<char>(text.size())) + text;
        CCryptoASN1GeneralizedTime time;
        EXPECT_EQ(time.ParseDer(Der(der)), accepted);
        EXPECT_EQ(time.time().isValid() && time.time().isUtc(), accepted);
        EXPECT_EQ(time.BuildDer() == Der(der), accepted);
    }
}

TEST(Values, RoundTripAndRefuseOtherTypes)
{
    EXPECT_EQ(Hex(CCryptoASN1ObjectIdentifier("2.5.4.3").BuildDer()), "0603550403");
    EXPECT_FALSE(CCryptoASN1ObjectIdentifier().ParseDer(Der("\x02\x01\x05")));
    EXPECT_FALSE(CCryptoASN1ObjectIdentifier().Parse(nullptr));

    CCryptoASN1ContextSpecific tagged;
    ASSERT_TRUE(tagged.ParseDer(Der("\xA3\x06\x02\x01\x05\x02\x01\x06")));
    EXPECT_EQ(tagged.tagNumber(), 3u);
    EXPECT_EQ(Hex(tagged.BuildDer()), "a306020105020106");
}

} // namespace
