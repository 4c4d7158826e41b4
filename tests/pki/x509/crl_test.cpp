#include "core/diagnostics/failure.h"
#include "pki/keys/key_file.h"
#include "pki/x509/x509_time.h"
#include "tests/pki/x509/revocation_lists.h"
#include "tests/pki/x509/test_authority.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <sstream>

using namespace ccrypto;

namespace {

std::string TextOf(const CCryptoDateTime& time)
{
    return std::string(time.format("yyyy-MM-dd HH:mm:ss").view());
}

bool LoadOctets(CCrypto_X509_CRL& list, const Bytes& octets)
{
    return list.LoadCRL(ElementOf(octets));
}

struct ListCase {
    const char* name;
    std::function<void(ListText&)> change;
    std::uint32_t version = 2;
    const char* thisUpdate = "2026-11-01 00:00:00";
    const char* nextUpdate = "2026-12-01 00:00:00";
    std::uint32_t entries = 2;
    std::size_t extensions = 1;

    friend void PrintTo(const ListCase& value, std::ostream* out) { *out << value.name; }
};

class ListFields : public ::testing::TestWithParam<ListCase> {};

TEST_P(ListFields, AreReadWhateverIsAbsent)
{
    const ListCase& expected = GetParam();
    ListText text;
    expected.change(text);
    CCrypto_X509_CRL list;
    ASSERT_TRUE(LoadOctets(list, text.octets()));
    EXPECT_EQ(BytesOf(list.GetCRL()), text.octets());
    EXPECT_TRUE(list.isDer());
    EXPECT_EQ(list.version(), expected.version);
    EXPECT_EQ(TextOf(list.thisUpdate()), expected.thisUpdate);
    EXPECT_EQ(list.nextUpdate().isValid() ? TextOf(list.nextUpdate()) : "", expected.nextUpdate);
    EXPECT_EQ(list.issuer().values().size(), 1u);
    EXPECT_EQ(list.extensions().values().size(), expected.extensions);
    EXPECT_EQ(HexOf(list.signature()), "0102");
    EXPECT_EQ(Bytes(list.signedOctets().begin(), list.signedOctets().end()), text.signedPart());
    EXPECT_GT(list.signedOctets().data(), list.der().data());
    EXPECT_LT(list.signedOctets().data(), list.der().data() + list.der().length());

    ASSERT_EQ(list.entryCount(), expected.entries);
    const Bytes five = {5};
    EXPECT_EQ(list.find(five).size(), expected.entries == 0 ? 0u : 1u);
    EXPECT_TRUE(list.find(Bytes{6}).empty());
}

INSTANTIATE_TEST_SUITE_P(
    Lists, ListFields,
    ::testing::Values(
        ListCase{"everything", [](ListText&) {}},
        ListCase{"version 1", [](ListText& list) { list.version = list.extensions = ""; }, 1, "2026-11-01 00:00:00",
                 "2026-12-01 00:00:00", 2, 0},
        ListCase{"no version beside extensions", [](ListText& list) { list.version = ""; }, 1},
        ListCase{"no extensions", [](ListText& list) { list.extensions = ""; }, 2, "2026-11-01 00:00:00", "2026-12-01 00:00:00", 2,
                 0},
        ListCase{"no nextUpdate before entries", [](ListText& list) { list.nextUpdate = ""; }, 2, "2026-11-01 00:00:00", ""},
        ListCase{"no nextUpdate in version 1", [](ListText& list) { list.version = list.nextUpdate = list.extensions = ""; }, 1,
                 "2026-11-01 00:00:00", "", 2, 0},
        ListCase{"no nextUpdate before extensions", [](ListText& list) { list.nextUpdate = list.revoked = ""; }, 2,
                 "2026-11-01 00:00:00", "", 0},
        ListCase{"no nextUpdate at the end", [](ListText& list) { list.nextUpdate = list.revoked = list.extensions = ""; }, 2,
                 "2026-11-01 00:00:00", "", 0, 0},
        ListCase{"no entries", [](ListText& list) { list.revoked = ""; }, 2, "2026-11-01 00:00:00", "2026-12-01 00:00:00", 0},
        ListCase{"an empty list of entries", [](ListText& list) { list.revoked = "3000"; }, 2, "2026-11-01 00:00:00",
                 "2026-12-01 00:00:00", 0},
        ListCase{"both centuries",
                 [](ListText& list) {
                     list.thisUpdate = "17['500101000000Z']";
                     list.nextUpdate = "17['491231235959Z']";
                 },
                 2, "1950-01-01 00:00:00", "2049-12-31 23:59:59"},
        ListCase{"a GeneralizedTime after a UTCTime", [](ListText& list) { list.nextUpdate = "18['20500101000000Z']"; }, 2,
                 "2026-11-01 00:00:00", "2050-01-01 00:00:00"},
        ListCase{"a UTCTime after a GeneralizedTime", [](ListText& list) { list.thisUpdate = "18['19491231235959Z']"; }, 2,
                 "1949-12-31 23:59:59"},
        ListCase{"an algorithm that nobody knows",
                 [](ListText& list) { list.algorithm = list.outerAlgorithm = "30[ 0603550403 ]"; }}));

struct BadListCase {
    const char* name;
    std::function<void(ListText&)> change;
    const char* reason = "Not the structure of a list";

    friend void PrintTo(const BadListCase& value, std::ostream* out) { *out << value.name; }
};

class BadList : public ::testing::TestWithParam<BadListCase> {};

TEST_P(BadList, LeavesTheObjectEmpty)
{
    CCrypto_X509_CRL list;
    ASSERT_TRUE(LoadOctets(list, ListText().octets()));
    ListText text;
    GetParam().change(text);
    EXPECT_FALSE(LoadOctets(list, text.octets())) << GetParam().name;
    EXPECT_EQ(LastFailure()->text, GetParam().reason);
    EXPECT_EQ(list.failure(), LoadFailure::malformed);
    EXPECT_FALSE(list.isLoaded());
    EXPECT_FALSE(list.isDer());
    EXPECT_EQ(list.entryCount(), 0u);
    EXPECT_TRUE(list.find(Bytes{5}).empty());
    EXPECT_TRUE(list.signedOctets().empty());
    EXPECT_TRUE(list.extensions().isEmpty());
    EXPECT_FALSE(list.thisUpdate().isValid() || list.nextUpdate().isValid());
}

INSTANTIATE_TEST_SUITE_P(
    Lists, BadList,
    ::testing::Values(
        BadListCase{"version 1 that is written", [](ListText& list) { list.version = "020100"; }, "Invalid version: 1"},
        BadListCase{"version 3", [](ListText& list) { list.version = "020102"; }, "Invalid version: 3"},
        BadListCase{"version 2 with a power of 256", [](ListText& list) { list.version = "02050100000001"; }, "Invalid version: 0"},
        BadListCase{"version below 0", [](ListText& list) { list.version = "0201FF"; }, "Invalid version: 0"},
        BadListCase{"no algorithm", [](ListText& list) { list.algorithm = ""; }},
        BadListCase{"no issuer", [](ListText& list) { list.issuer = ""; }},
        BadListCase{"no time", [](ListText& list) { list.thisUpdate = list.nextUpdate = ""; }},
        BadListCase{"a text for nextUpdate", [](ListText& list) { list.nextUpdate = "13['261201000000Z']"; }},
        BadListCase{"an OCTET STRING for nextUpdate", [](ListText& list) { list.nextUpdate = "0400"; }},
        BadListCase{"a third time", [](ListText& list) { list.nextUpdate += list.nextUpdate; }},
        BadListCase{"a month that is none", [](ListText& list) { list.thisUpdate = "17['261301000000Z']"; },
                    "A time of the list is malformed"},
        BadListCase{"a day that is none", [](ListText& list) { list.nextUpdate = "17['270229000000Z']"; },
                    "A time of the list is malformed"},
        BadListCase{"no seconds", [](ListText& list) { list.nextUpdate = "17['2612010000Z']"; }, "A time of the list is malformed"},
        BadListCase{"a zone", [](ListText& list) { list.nextUpdate = "17['261201000000+0000']"; },
                    "A time of the list is malformed"},
        BadListCase{"entries twice", [](ListText& list) { list.revoked += list.revoked; }},
        BadListCase{"entries twice, one empty", [](ListText& list) { list.revoked = "3000" + list.revoked; }},
        BadListCase{"extensions twice", [](ListText& list) { list.afterExtensions = list.extensions; }},
        BadListCase{"extensions under another tag", [](ListText& list) { list.extensions.replace(0, 2, "A1"); }},
        BadListCase{"more after the extensions", [](ListText& list) { list.afterExtensions = "0500"; }},
        BadListCase{"more inside the tag", [](ListText& list) { list.extensions.insert(list.extensions.size() - 1, "0500"); }},
        BadListCase{"entries after the extensions", [](ListText& list) { std::swap(list.revoked, list.extensions); }},
        BadListCase{"an extension without content", [](ListText& list) { list.extensions = "A0[30[30[0603551D14]]]"; },
                    "Not a list of extensions"},
        BadListCase{"no extension in the extensions", [](ListText& list) { list.extensions = "A0[30[]]"; }, "Invalid extensions"},
        BadListCase{"extensions in relative names",
                    [](ListText& list) { list.extensions = "A0[30[31[30[0603551D14 0403020105]]]]"; }, "Not a list of extensions"},
        BadListCase{"an issuer of extensions", [](ListText& list) { list.issuer = "30[30[0603551D14 0403020105]]"; }, "Not a name"},
        BadListCase{"no signature", [](ListText& list) { list.signature = ""; }},
        BadListCase{"a signature of no bytes", [](ListText& list) { list.signature = "0300"; }},
        BadListCase{"a signature without bits", [](ListText& list) { list.signature = "030100"; }, "Invalid signature"},
        BadListCase{"a signature with eight unused bits", [](ListText& list) { list.signature = "0303080102"; },
                    "Invalid signature"},
        BadListCase{"an OCTET STRING as signature", [](ListText& list) { list.signature = "0403000102"; }},
        BadListCase{"more after the signature", [](ListText& list) { list.afterSignature = "0500"; }},
        BadListCase{"no outer algorithm", [](ListText& list) { list.outerAlgorithm = ""; }},
        BadListCase{"no entry in the entries", [](ListText& list) { list.revoked = "30[ 0500 ]"; }, "Entry 0 is malformed"},
        BadListCase{"an entry in pieces", [](ListText& list) { list.revoked = "30[ 3014 020105 ]"; }, "Loading failed!"}));

TEST(RevocationList, SaysWhyItDidNotLoad)
{
    CCrypto_X509_CRL list;
    EXPECT_FALSE(list.LoadCRL(element()));
    EXPECT_EQ(LastFailure()->text, "value is empty");
    EXPECT_FALSE(list.entry(0));
    EXPECT_TRUE(list.find(Bytes{5}).empty());

    const Bytes whole = ListText().octets();
    for (std::size_t length = 1; length < whole.size(); ++length)
        EXPECT_FALSE(LoadOctets(list, Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)))) << length;
    EXPECT_FALSE(LoadOctets(list, Joined({whole, whole})));
}

struct OtherThanDerCase {
    const char* name;
    std::function<void(ListText&)> change;

    friend void PrintTo(const OtherThanDerCase& value, std::ostream* out) { *out << value.name; }
};

class OtherThanDer : public ::testing::TestWithParam<OtherThanDerCase> {};

/// Such lists are shown, but nothing may be verified of them.
TEST_P(OtherThanDer, IsReadAndMarked)
{
    ListText text;
    GetParam().change(text);
    CCrypto_X509_CRL list;
    ASSERT_TRUE(LoadOctets(list, text.octets())) << GetParam().name;
    EXPECT_FALSE(list.isDer());
    EXPECT_TRUE(list.signedOctets().empty());
    EXPECT_EQ(BytesOf(list.der()), text.octets());
    EXPECT_EQ(list.entryCount(), 2u);
    EXPECT_EQ(list.find(Bytes{5}).size(), 1u);
    // What was read before leaves nothing in the next.
    ASSERT_TRUE(LoadOctets(list, ListText().octets()));
    EXPECT_TRUE(list.isDer());
}

INSTANTIATE_TEST_SUITE_P(
    Lists, OtherThanDer,
    ::testing::Values(
        OtherThanDerCase{
            "a long length in an entry",
            [](ListText& list) { list.revoked = "30[ 30[ 02810105 17['261020120000Z'] ] 30[ 020107 17['261021120000Z'] ] ]"; }},
        OtherThanDerCase{
            "an indefinite length of entries",
            [](ListText& list) { list.revoked = "3080 30[ 020105 17['261020120000Z'] ] 30[ 020107 17['261021120000Z'] ] 0000"; }},
        OtherThanDerCase{"octets hidden in an entry",
                         [](ListText& list) {
                             list.revoked = "30[ 30[ 020105 17['261020120000Z'] 0001020304 ] 30[ 020107 17['261021120000Z'] ] ]";
                         }},
        OtherThanDerCase{"octets hidden after the entries",
                         [](ListText& list) { list.revoked.insert(list.revoked.size() - 1, "0001020304"); }},
        OtherThanDerCase{"octets hidden after the extensions", [](ListText& list) { list.afterExtensions = "0001020304"; }},
        OtherThanDerCase{"octets hidden after the signature", [](ListText& list) { list.afterSignature = "0001020304"; }},
        OtherThanDerCase{"a long length in the issuer",
                         [](ListText& list) { list.issuer = "30[ 31[ 30[ 0603550403 0C8107'Test CA' ] ] ]"; }},
        OtherThanDerCase{"octets hidden in an extension",
                         [](ListText& list) { list.extensions = "A0[ 30[ 30[ 0603551D14 04[ 020107 ] 0001020304 ] ] ]"; }},
        OtherThanDerCase{"a long length of the signature", [](ListText& list) { list.signature = "038103000102"; }}));

TEST(RevocationList, OfOtherThanDerIsReadUpToALimit)
{
    // One long extension; the length of the signature is one octet longer than it need be.
    const auto listOf = [](std::size_t size) {
        const auto encoded = [](std::uint8_t tag, const Bytes& content) {
            const auto length = static_cast<std::uint32_t>(content.size());
            Bytes octets = {tag, 0x83, std::uint8_t(length >> 16), std::uint8_t(length >> 8), std::uint8_t(length)};
            octets.insert(octets.end(), content.begin(), content.end());
            return octets;
        };
        const ListText text;
        const Bytes fields = DerOf(text.version + text.algorithm + text.issuer + text.thisUpdate + text.nextUpdate);
        const Bytes end = DerOf(text.algorithm + "038103000102");
        const std::size_t heads = 6 * 5 + DerOf("0603551D14").size();
        const Bytes content(size - heads - fields.size() - end.size(), 0x2A);
        const Bytes extension = encoded(0x30, Joined({DerOf("0603551D14"), encoded(0x04, content)}));
        return encoded(0x30, Joined({encoded(0x30, Joined({fields, encoded(0xA0, encoded(0x30, extension))})), end}));
    };
    CCrypto_X509_CRL list;
    const Bytes atLimit = listOf(CCrypto_X509_CRL::maxNotDer);
    ASSERT_EQ(atLimit.size(), CCrypto_X509_CRL::maxNotDer);
    EXPECT_TRUE(LoadOctets(list, atLimit));
    EXPECT_FALSE(list.isDer());
    EXPECT_FALSE(LoadOctets(list, listOf(CCrypto_X509_CRL::maxNotDer + 1)));
}

/// The words of the database of openssl's command, and what they mean here.
const std::map<std::string, std::string> reasonsOfDatabase = {
    {"", ""},
    {"unspecified", "unspecified"},
    {"keyCompromise", "keyCompromise"},
    {"CACompromise", "cACompromise"},
    {"affiliationChanged", "affiliationChanged"},
    {"superseded", "superseded"},
    {"cessationOfOperation", "cessationOfOperation"},
    {"certificateHold", "certificateHold"},
    {"holdInstruction,holdInstructionReject", "certificateHold"},
    {"keyTime,20261001000000Z", "keyCompromise since 20261001000000Z"},
    {"CAkeyTime,20261002000000Z", "cACompromise since 20261002000000Z"},
};

TEST(RevocationList, OfAnotherProgramIsRead)
{
    for (const TestVector& vector : ReadVectors("crls.txt")) {
        SCOPED_TRACE(vector.text("Name"));
        CCrypto_X509_CRL list;
        ASSERT_TRUE(LoadOctets(list, vector.bytes("List")));
        const std::unique_ptr<ICryptoKeyPair> key = CCryptoKeyFile().Load(vector.bytes("PublicKeyInfo"));
        EXPECT_EQ(list.verifySignature(*key), SignatureResult::good);
        EXPECT_EQ(list.version(), vector.text("Name").starts_with("version 1") ? 1u : 2u);
        EXPECT_EQ(TextOf(list.thisUpdate()), "2026-11-01 00:00:00");
        EXPECT_EQ(TextOf(list.nextUpdate()), "2026-12-01 00:00:00");
        EXPECT_FALSE(list.hasUnknownCriticalEntry());

        std::uint32_t count = 0;
        std::istringstream entries(vector.text("Entries"));
        for (std::string number, said; entries >> number && std::getline(entries >> std::ws, said, ';'); ++count) {
            const std::size_t comma = said.find(',');
            const std::vector<RevokedEntry> found = list.find(DerOf((number == "80" ? "00" : "") + number));
            ASSERT_EQ(found.size(), 1u) << number;
            EXPECT_EQ(found[0].revocationDate, ReadX509Time({der::utcTime, {}, TextBytes(said.substr(0, comma))}));
            std::string reason = found[0].reason ? RevocationReasonName(*found[0].reason) : "";
            if (found[0].invalidityDate.isValid())
                reason += " since " + std::string(found[0].invalidityDate.toGeneralizedTime().view());
            EXPECT_EQ(reason, reasonsOfDatabase.at(comma == std::string::npos ? "" : said.substr(comma + 1))) << number;
        }
        EXPECT_EQ(list.entryCount(), count);
    }
}

TEST(RevocationList, IsNoLongerSignedWithAnyBitFlipped)
{
    const TestIssuer issuer = {.name = TestName("C=FI,CN=Root"), .key = TestKey(1)};
    const Bytes good = TestCrl().entry(5).entry(7, 1).build(issuer);
    CCrypto_X509_CRL list;
    ASSERT_TRUE(LoadOctets(list, good));
    ASSERT_EQ(list.verifySignature(*issuer.key), SignatureResult::good);
    EXPECT_EQ(list.verifySignature(*TestKey(2)), SignatureResult::bad);
    for (std::size_t index = 0; index < good.size(); ++index) {
        Bytes bad = good;
        bad[index] ^= static_cast<std::uint8_t>(1 << (index % 8));
        EXPECT_FALSE(LoadOctets(list, bad) && list.verifySignature(*issuer.key) == SignatureResult::good) << index;
    }
}

TEST(RevocationList, IsNotSignedWithAnUnusedBit)
{
    ListText text;
    text.signature = "0303010102";
    CCrypto_X509_CRL list;
    ASSERT_TRUE(LoadOctets(list, text.octets()));
    EXPECT_EQ(list.entryCount(), 2u);
    EXPECT_TRUE(list.isDer());
    EXPECT_TRUE(list.signature().isEmpty());
    EXPECT_NE(list.verifySignature(*TestKey(1)), SignatureResult::good);
}

TEST(RevocationList, IsNotSignedWhereItIsNotDer)
{
    // The octets that were signed are untouched: the length of the signature alone is written in another way.
    const TestIssuer issuer = {.name = TestName("CN=Root"), .key = TestKey(1)};
    const Bytes tbs = TestCrl().entry(5).tbs(issuer);
    const Bytes whole = TestCrl().entry(5).build(issuer);
    const Bytes algorithm = TestAlgorithm(issuer);
    const Bytes signature(whole.end() - static_cast<std::ptrdiff_t>(whole.size() - 3 - tbs.size() - algorithm.size()), whole.end());
    ASSERT_EQ(signature[0], der::bitString);
    Bytes longer = signature;
    longer.insert(longer.begin() + 1, 0x81);
    CCrypto_X509_CRL list;
    ASSERT_TRUE(LoadOctets(list, Tlv(der::sequence, {tbs, algorithm, signature})));
    ASSERT_EQ(list.verifySignature(*issuer.key), SignatureResult::good);
    ASSERT_TRUE(LoadOctets(list, Tlv(der::sequence, {tbs, algorithm, longer})));
    EXPECT_EQ(list.verifySignature(*issuer.key), SignatureResult::bad);
}

} // namespace
