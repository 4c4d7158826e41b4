#include "core/diagnostics/failure.h"
#include "pki/pkcs12/pkcs12.h"
#include "tests/crypto/base/test_bytes.h"
#include "tests/pki/test_der.h"
#include "tests/pki/x509/test_authority.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <set>
#include <string>

namespace ccrypto {

namespace {

const std::vector<TestVector>& StoreFiles()
{
    static const std::vector<TestVector> files = ReadVectors("pkcs12.txt");
    return files;
}

const TestVector& StoreFile(std::string_view name)
{
    const auto found = std::ranges::find_if(StoreFiles(), [&](const TestVector& file) { return file.text("Name") == name; });
    EXPECT_NE(found, StoreFiles().end()) << name;
    return *found;
}

CCryptoPKCS12::PasswordSource Secret(const std::string& text)
{
    return [text](element& password) {
        password = element(text.data(), static_cast<std::uint32_t>(text.size()));
        return true;
    };
}

std::uint32_t CountKind(const CCryptoPKCS12& file, PKCS12Bag::Kind kind)
{
    return static_cast<std::uint32_t>(std::ranges::count(file.bags(), kind, &PKCS12Bag::kind));
}

const PKCS12Bag* KeyOf(const CCryptoPKCS12& file)
{
    const auto found = std::ranges::find(file.bags(), PKCS12Bag::Kind::key, &PKCS12Bag::kind);
    return found != file.bags().end() && found->key != nullptr ? &*found : nullptr;
}

// Parts of files made here.

Bytes ContentInfo(std::string_view type, const Bytes& content)
{
    return Tlv(der::sequence, {OidTlv(type), Tlv(der::Context(0), content)});
}

Bytes DataInfo(const Bytes& octets)
{
    return ContentInfo("1.2.840.113549.1.7.1", Tlv(der::octetString, octets));
}

Bytes PlainFile(const Bytes& bags, std::uint8_t version = 3)
{
    return Tlv(der::sequence,
               {Tlv(der::integer, Bytes{version}), DataInfo(Tlv(der::sequence, DataInfo(Tlv(der::sequence, bags))))});
}

Bytes StoreBag(std::string_view type, const Bytes& value, const Bytes& attributes = {})
{
    return Tlv(der::sequence, {OidTlv("1.2.840.113549.1.12.10.1." + std::string(type)), Tlv(der::Context(0), value),
                               attributes.empty() ? Bytes() : Tlv(der::set, attributes)});
}

Bytes StoreAttribute(std::string_view type, const Bytes& value)
{
    return Tlv(der::sequence, {OidTlv(type), Tlv(der::set, value)});
}

Bytes SecretBagOf(std::uint8_t octet)
{
    return StoreBag("5", Tlv(der::sequence, {OidTlv("1.2.3"), Tlv(der::Context(0), Tlv(der::octetString, Bytes{octet}))}));
}

Bytes StoreCertificate(const Bytes& certificate, const Bytes& attributes = {})
{
    return StoreBag(
        "3", Tlv(der::sequence, {OidTlv("1.2.840.113549.1.9.22.1"), Tlv(der::Context(0), Tlv(der::octetString, certificate))}),
        attributes);
}

Bytes KeyId(const Bytes& octets)
{
    return StoreAttribute("1.2.840.113549.1.9.21", Tlv(der::octetString, octets));
}

PKCS12Outcome OutcomeOf(const Bytes& file, const std::string& password = "secret")
{
    CCryptoPKCS12 store;
    const bool isLoaded = store.Load(file, Secret(password));
    EXPECT_EQ(isLoaded, store.outcome() == PKCS12Outcome::opened);
    EXPECT_TRUE(isLoaded || store.bags().empty());
    return store.outcome();
}

} // namespace

TEST(PKCS12, ReadsWhatOthersWrite)
{
    std::set<Bytes> keys;
    for (const TestVector& vector : StoreFiles()) {
        const std::string name = vector.text("Name");
        SCOPED_TRACE(name);
        if (name.starts_with("refused"))
            continue;
        CCryptoPKCS12 store;
        ASSERT_TRUE(store.Load(vector.bytes("File"), Secret(vector.text("Password"))));
        EXPECT_EQ(store.hasMac(), name.find("no MAC") == std::string::npos);
        EXPECT_GE(CountKind(store, PKCS12Bag::Kind::certificate), 1U);
        EXPECT_EQ(CountKind(store, PKCS12Bag::Kind::secret), name.find("with a secret") == std::string::npos ? 0U : 1U);
        const PKCS12Bag* const key = KeyOf(store);
        ASSERT_NE(key, nullptr);
        keys.insert(BytesOf(key->key->privateKeyInfo()));
        const PKCS12Bag* const certificate = store.certificateOf(*key);
        ASSERT_NE(certificate, nullptr);
        EXPECT_EQ(certificate->certificate->publicKey()->publicKeyInfo(), key->key->publicKeyInfo());
        if (name.starts_with("openssl"))
            EXPECT_EQ(key->friendlyName, CCryptoString("Käyttäjän avain"));
        else
            EXPECT_EQ(key->friendlyName, CCryptoString("signer"));
        EXPECT_FALSE(key->localKeyId.isEmpty());
    }
    EXPECT_EQ(keys.size(), 1U) << "all hold the same key";
}

TEST(PKCS12, RefusesWrongPasswordsWithOneText)
{
    for (const char* name : {"openssl", "openssl, old schemes", "openssl, no MAC", "pk12util", "certtool", "keytool",
                             "openssl, key without encryption", "PBMAC1: sha256 sha256 32"}) {
        SCOPED_TRACE(name);
        const Bytes file = StoreFile(name).bytes("File");
        for (const char* password : {"Secret", "", "secret ", "\xFF"}) {
            EXPECT_EQ(OutcomeOf(file, password), PKCS12Outcome::wrongPassword);
            EXPECT_EQ(LastFailure()->text, "The password is wrong, or the file is damaged");
        }
    }
    for (const char* name : {"refused: short key", "refused: no length of the key"})
        EXPECT_EQ(OutcomeOf(StoreFile(name).bytes("File")), PKCS12Outcome::unsupported) << name;
}

TEST(PKCS12, ShowsWithoutPasswordWhatIsNotEncrypted)
{
    CCryptoPKCS12 store;
    ASSERT_EQ(store.Read(StoreFile("openssl").bytes("File")), PKCS12Outcome::locked);
    EXPECT_TRUE(store.hasMac());
    EXPECT_EQ(store.mac()->hash(), algorithm::sha256);
    EXPECT_EQ(store.mac()->iterations(), 2000U);
    ASSERT_EQ(store.safes().size(), 2U);
    EXPECT_FALSE(store.safes()[0].isOpen);
    ASSERT_TRUE(store.safes()[0].encryption);
    EXPECT_EQ(store.safes()[0].encryption->cipher, algorithm::aes256Cbc);
    ASSERT_EQ(store.bags().size(), 1U);
    EXPECT_EQ(store.bags()[0].key, nullptr);
    ASSERT_TRUE(store.bags()[0].encryption);

    // A wrong password leaves what was read.
    EXPECT_EQ(store.Open("wrong"), PKCS12Outcome::wrongPassword);
    EXPECT_EQ(store.bags().size(), 1U);
    EXPECT_EQ(store.Open("secret"), PKCS12Outcome::opened);
    EXPECT_EQ(store.bags().size(), 3U);

    std::uint32_t asked = 0;
    const auto refuse = [&](element&) {
        ++asked;
        return false;
    };
    EXPECT_FALSE(store.Load(StoreFile("openssl").bytes("File"), refuse));
    EXPECT_EQ(store.outcome(), PKCS12Outcome::noPassword);
    EXPECT_EQ(asked, 1U);
    EXPECT_TRUE(store.Load(PlainFile(SecretBagOf(1)), refuse));
    EXPECT_EQ(asked, 1U) << "nobody is asked for a password without use";
}

TEST(PKCS12, NeverOpensDamagedFiles)
{
    for (const char* name : {"openssl", "PBMAC1: sha256 sha256 32"}) {
        const Bytes good = StoreFile(name).bytes("File");
        for (std::size_t length = 0; length < good.size(); length += 13)
            EXPECT_NE(OutcomeOf(Bytes(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(length))), PKCS12Outcome::opened);
        CCryptoPKCS12 store;
        for (std::size_t index = 0; index < good.size(); ++index) {
            if (index % 11 != 0 && index < good.size() - 130)
                continue;
            Bytes changed = good;
            changed[index] ^= 0x04;
            // The salt and the iterations beside the parameters of PBMAC1 are not used.
            const bool isUnused = name != std::string_view("openssl") && index + 11 >= good.size();
            const bool isRead = store.Read(changed) == PKCS12Outcome::locked;
            // A changed number of iterations may be a large one.
            if (isRead && store.hasMac() && store.mac()->iterations() < 20'000) {
                EXPECT_EQ(store.Open("secret") == PKCS12Outcome::opened, isUnused) << name << ' ' << index;
            }
        }
    }
}

TEST(PKCS12, WritesWhatItReads)
{
    const TestIssuer root = {.name = TestName("CN=Root"), .key = TestKey(1)};
    const CertificatePtr issuer = LoadCertificate(TestCertificate(root).authority().build(root));
    const CertificatePtr signer = LoadCertificate(TestCertificate("CN=Signer", TestKey(2)).build(root));
    SCryptoPKCS12Options plain;
    plain.encryption.iterations = plain.macIterations = 10;
    plain.friendlyName = "Käyttäjä \xF0\x9F\x94\x91";
    std::vector<SCryptoPKCS12Options> ways(4, plain);
    ways[1].mac = SCryptoPKCS12Options::Mac::pbmac1;
    ways[2].mac = SCryptoPKCS12Options::Mac::none;
    ways[3].encryption.scheme = algorithm::pkcs12Sha1TripleDes3Key;
    ways[3].macHash = algorithm::sha1;
    for (const SCryptoPKCS12Options& options : ways) {
        SCOPED_TRACE(&options - ways.data());
        for (const char* const password : {"secret", "", "pässwörd"}) {
            const CertificatePtr certificates[] = {issuer, signer};
            const element file = CCryptoPKCS12::Save(TestKey(2).get(), certificates, password, options);
            CCryptoPKCS12 store;
            ASSERT_TRUE(store.Load(file.bytes(), Secret(password)));
            EXPECT_EQ(store.hasMac(), options.mac != SCryptoPKCS12Options::Mac::none);
            ASSERT_EQ(store.bags().size(), 3U);
            const PKCS12Bag* const key = KeyOf(store);
            ASSERT_NE(key, nullptr);
            EXPECT_EQ(key->friendlyName, options.friendlyName);
            EXPECT_EQ(key->key->privateKeyInfo(), TestKey(2)->privateKeyInfo());
            EXPECT_EQ(key->encryption->scheme, options.encryption.scheme);
            EXPECT_EQ(store.bags()[0].octets, issuer->der());
            EXPECT_TRUE(store.bags()[0].localKeyId.isEmpty());
            EXPECT_EQ(store.certificateOf(*key), &store.bags()[1]);
            EXPECT_EQ(store.bags()[1].localKeyId, key->localKeyId);
            EXPECT_EQ(OutcomeOf(BytesOf(file), "other"), PKCS12Outcome::wrongPassword);
        }
    }
    EXPECT_TRUE(CCryptoPKCS12::Save(nullptr, {}, "secret", plain).isEmpty());
    EXPECT_TRUE(CCryptoPKCS12::Save(TestKey(2)->publicHalf().get(), {}, "secret", plain).isEmpty());
}

TEST(PKCS12, FindsTheCertificateOfAKey)
{
    const TestIssuer root = {.name = TestName("CN=Root"), .key = TestKey(1)};
    const Bytes first = TestCertificate("CN=First", TestKey(2)).serial(1).build(root);
    const Bytes second = TestCertificate("CN=Second", TestKey(2)).serial(2).build(root);
    const Bytes other = TestCertificate("CN=Other", TestKey(3)).serial(3).build(root);
    const Bytes keyOctets = BytesOf(TestKey(2)->privateKeyInfo());
    struct MatchCase {
        const char* name;
        Bytes bags;
        std::ptrdiff_t found; ///< which bag; -1 for none
    };
    const Bytes key = StoreBag("1", keyOctets, KeyId({7}));
    const MatchCase cases[] = {
        {"by the identifier", Joined({key, StoreCertificate(first), StoreCertificate(second, KeyId({7}))}), 2},
        {"by the public key", Joined({key, StoreCertificate(other), StoreCertificate(first)}), 2},
        {"an identifier at another key's certificate", Joined({key, StoreCertificate(other, KeyId({7})), StoreCertificate(first)}),
         2},
        {"none", Joined({key, StoreCertificate(other, KeyId({7}))}), -1},
    };
    for (const MatchCase& match : cases) {
        SCOPED_TRACE(match.name);
        CCryptoPKCS12 store;
        ASSERT_EQ(store.Read(PlainFile(match.bags)), PKCS12Outcome::opened);
        const PKCS12Bag* const found = store.certificateOf(store.bags()[0]);
        EXPECT_EQ(found != nullptr ? found - store.bags().data() : -1, match.found);
    }
}

TEST(PKCS12, ReadsBagsOfEveryKind)
{
    const TestIssuer root = {.name = TestName("CN=Root"), .key = TestKey(1)};
    const Bytes list = TestCrl().entry(7).build(root);
    const Bytes bmp = Tlv(0x1E, Bytes{0x00, 'a', 0xD8, 0x3D, 0xDD, 0x11});
    const Bytes bags = Joined({
        StoreBag("4", Tlv(der::sequence, {OidTlv("1.2.840.113549.1.9.23.1"), Tlv(der::Context(0), Tlv(der::octetString, list))})),
        StoreBag("6", Tlv(der::sequence, Joined({SecretBagOf(1), StoreBag("6", Tlv(der::sequence, SecretBagOf(2)))}))),
        StoreBag("9", Tlv(der::null, Bytes{}), StoreAttribute("1.2.840.113549.1.9.20", bmp)),
        StoreCertificate(Bytes{1, 2, 3}, StoreAttribute("1.2.840.113549.1.9.20", Tlv(der::utf8String, TextBytes("x")))),
    });
    CCryptoPKCS12 store;
    ASSERT_EQ(store.Read(PlainFile(bags)), PKCS12Outcome::opened);
    ASSERT_EQ(store.bags().size(), 5U);
    ASSERT_NE(store.bags()[0].revocationList, nullptr);
    EXPECT_EQ(store.bags()[0].revocationList->entryCount(), 1U);
    EXPECT_EQ(BytesOf(store.bags()[1].octets), (Bytes{4, 1, 1}));
    EXPECT_EQ(BytesOf(store.bags()[2].octets), (Bytes{4, 1, 2}));
    EXPECT_EQ(store.bags()[1].type, Oid::FromDotted("1.2.3"));
    EXPECT_EQ(store.bags()[3].kind, PKCS12Bag::Kind::other);
    EXPECT_EQ(store.bags()[3].friendlyName, CCryptoString("a\xF0\x9F\x94\x91"));
    EXPECT_EQ(store.bags()[4].kind, PKCS12Bag::Kind::certificate);
    EXPECT_EQ(store.bags()[4].certificate, nullptr);
    EXPECT_TRUE(store.bags()[4].friendlyName.isEmpty());
}

struct StoreCase {
    const char* name;
    Bytes file;
    PKCS12Outcome outcome;
};

void PrintTo(const StoreCase& test, std::ostream* stream)
{
    *stream << test.name;
}

class PKCS12Files : public ::testing::TestWithParam<StoreCase> {};

TEST_P(PKCS12Files, AreReadWithinTheirLimits)
{
    EXPECT_EQ(OutcomeOf(GetParam().file), GetParam().outcome);
}

namespace {

Bytes ManyBags(std::size_t count)
{
    const Bytes bag = SecretBagOf(1);
    Bytes bags;
    for (; count != 0; --count)
        bags.insert(bags.end(), bag.begin(), bag.end());
    return bags;
}

/// Each bag takes three levels of the 128.
Bytes NestedBags(std::size_t depth)
{
    Bytes bag = SecretBagOf(1);
    for (; depth != 0; --depth)
        bag = StoreBag("6", Tlv(der::sequence, bag));
    return bag;
}

/// The same element with an indefinite length, its octets in two pieces when it is an OCTET STRING.
Bytes Indefinite(std::uint8_t identifier, const Bytes& content)
{
    const auto middle = content.begin() + static_cast<std::ptrdiff_t>(content.size() / 2);
    const bool isString = identifier == der::octetString;
    const Bytes inside =
        isString
            ? Joined({Tlv(der::octetString, Bytes(content.begin(), middle)), Tlv(der::octetString, Bytes(middle, content.end()))})
            : content;
    return Joined({{static_cast<std::uint8_t>(isString ? 0x24 : identifier), 0x80}, inside, {0, 0}});
}

Bytes BrowserFile()
{
    const Bytes bags = Indefinite(der::sequence, SecretBagOf(1));
    const auto info = [](const Bytes& octets) {
        return Indefinite(der::sequence, Joined({OidTlv("1.2.840.113549.1.7.1"),
                                                 Indefinite(der::Context(0), Indefinite(der::octetString, octets))}));
    };
    return Indefinite(der::sequence, Joined({Tlv(der::integer, Bytes{3}), info(Indefinite(der::sequence, info(bags)))}));
}

/// A MAC, or a key, that asks for this many iterations.
Bytes CostlyFile(std::uint32_t iterations, std::size_t keys)
{
    const Bytes number = {static_cast<std::uint8_t>(iterations >> 24), static_cast<std::uint8_t>(iterations >> 16),
                          static_cast<std::uint8_t>(iterations >> 8), static_cast<std::uint8_t>(iterations)};
    const Bytes how =
        Tlv(der::sequence, {OidTlv("1.2.840.113549.1.12.1.1"),
                            Tlv(der::sequence, {Tlv(der::octetString, TextBytes("saltsalt")), Tlv(der::integer, number)})});
    const Bytes bag = StoreBag("2", Tlv(der::sequence, {how, Tlv(der::octetString, TextBytes("x"))}));
    Bytes bags;
    for (; keys != 0; --keys)
        bags.insert(bags.end(), bag.begin(), bag.end());
    return PlainFile(bags);
}

Bytes FileOfContents(const Bytes& info)
{
    return Tlv(der::sequence, {Tlv(der::integer, Bytes{3}), DataInfo(Tlv(der::sequence, info))});
}

} // namespace

INSTANTIATE_TEST_SUITE_P(
    Limits, PKCS12Files,
    ::testing::Values(
        StoreCase{"no octets", {}, PKCS12Outcome::malformed},
        StoreCase{"10,000 bags", PlainFile(ManyBags(10'000)), PKCS12Outcome::opened},
        StoreCase{"10,001 bags", PlainFile(ManyBags(10'001)), PKCS12Outcome::malformed},
        StoreCase{"bags 40 deep", PlainFile(NestedBags(40)), PKCS12Outcome::opened},
        StoreCase{"bags 43 deep", PlainFile(NestedBags(43)), PKCS12Outcome::malformed},
        StoreCase{"BER in pieces", BrowserFile(), PKCS12Outcome::opened},
        StoreCase{"version 2", PlainFile(SecretBagOf(1), 2), PKCS12Outcome::malformed},
        StoreCase{"octets after the last bag", PlainFile(Joined({SecretBagOf(1), {5}})), PKCS12Outcome::malformed},
        StoreCase{"a bag with more than attributes",
                  PlainFile(StoreBag("5", Joined({Tlv(der::null, Bytes{}), Tlv(der::null, Bytes{})}))), PKCS12Outcome::malformed},
        StoreCase{"50,000,001 iterations", CostlyFile(50'000'001, 1), PKCS12Outcome::unsupported},
        StoreCase{"two keys of 30,000,000 iterations", CostlyFile(30'000'000, 2), PKCS12Outcome::unsupported},
        StoreCase{"a key that is none", PlainFile(StoreBag("1", Tlv(der::null, Bytes{}))), PKCS12Outcome::malformed},
        StoreCase{
            "signed contents",
            Tlv(der::sequence, {Tlv(der::integer, Bytes{3}), ContentInfo("1.2.840.113549.1.7.2", Tlv(der::sequence, Bytes{}))}),
            PKCS12Outcome::unsupported},
        StoreCase{"contents for a public key", FileOfContents(ContentInfo("1.2.840.113549.1.7.3", Tlv(der::sequence, Bytes{}))),
                  PKCS12Outcome::opened}));

} // namespace ccrypto
