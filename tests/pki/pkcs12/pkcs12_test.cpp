#include "core/diagnostics/failure.h"
#include "pki/cms/encrypted_data.h"
#include "pki/pkcs12/pkcs12.h"
#include "tests/crypto/base/test_bytes.h"
#include "tests/pki/test_der.h"
#include "tests/pki/x509/test_authority.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
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

std::string OctetText(const Bytes& octets)
{
    return {octets.begin(), octets.end()};
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

/// A key that asks for this many iterations.
Bytes CostlyKey(std::uint32_t iterations, const Bytes& attributes = {})
{
    const Bytes number = {static_cast<std::uint8_t>(iterations >> 24), static_cast<std::uint8_t>(iterations >> 16),
                          static_cast<std::uint8_t>(iterations >> 8), static_cast<std::uint8_t>(iterations)};
    const Bytes how =
        Tlv(der::sequence, {OidTlv("1.2.840.113549.1.12.1.1"),
                            Tlv(der::sequence, {Tlv(der::octetString, TextBytes("saltsalt")), Tlv(der::integer, number)})});
    return StoreBag("2", Tlv(der::sequence, {how, Tlv(der::octetString, TextBytes("x"))}), attributes);
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
                             "openssl, key without encryption", "openssl, nothing encrypted", "PBMAC1: sha256 sha256 32"}) {
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
    ASSERT_EQ(store.Read(StoreFile("openssl, no MAC").bytes("File")), PKCS12Outcome::locked);
    const std::size_t outline = store.bags().size();
    EXPECT_EQ(store.Open("wrong"), PKCS12Outcome::wrongPassword);
    EXPECT_EQ(store.bags().size(), outline);
    ASSERT_EQ(store.Read(StoreFile("refused: short key").bytes("File")), PKCS12Outcome::locked);
    EXPECT_EQ(store.Open("secret"), PKCS12Outcome::unsupported);

    std::uint32_t asked = 0;
    const auto refuse = [&](element&) {
        ++asked;
        return false;
    };
    EXPECT_FALSE(store.Load(StoreFile("openssl").bytes("File"), refuse));
    EXPECT_EQ(store.outcome(), PKCS12Outcome::noPassword);
    EXPECT_EQ(asked, 1U);
    EXPECT_TRUE(store.Load(PlainFile(SecretBagOf(1)), refuse));
    EXPECT_FALSE(store.Load(StoreFile("refused: short key").bytes("File"), refuse));
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
    const CertificatePtr renewed = LoadCertificate(TestCertificate("CN=Signer", TestKey(2)).serial(2).build(root));
    SCryptoPKCS12Options plain;
    plain.encryption.iterations = plain.macIterations = 10;
    plain.friendlyName = "Käyttäjä \xF0\x9F\x94\x91";
    std::vector<SCryptoPKCS12Options> ways(5, plain);
    ways[1].mac = SCryptoPKCS12Options::Mac::pbmac1;
    ways[2].mac = SCryptoPKCS12Options::Mac::none;
    ways[3].encryption.scheme = algorithm::pkcs12Sha1TripleDes3Key;
    ways[3].macHash = algorithm::sha1;
    // Defaults, which are left out: one iteration, and HMAC with SHA-1 in PBKDF2.
    ways[4].mac = SCryptoPKCS12Options::Mac::pbmac1;
    ways[4].macHash = algorithm::sha1;
    ways[4].macIterations = 1;
    for (const SCryptoPKCS12Options& options : ways) {
        SCOPED_TRACE(&options - ways.data());
        for (const char* const password : {"secret", "", "pässwörd"}) {
            const CertificatePtr certificates[] = {issuer, signer, renewed};
            const element file = CCryptoPKCS12::Save(TestKey(2).get(), certificates, password, options);
            CCryptoPKCS12 store;
            ASSERT_TRUE(store.Load(file.bytes(), Secret(password)));
            EXPECT_EQ(store.hasMac(), options.mac != SCryptoPKCS12Options::Mac::none);
            ASSERT_EQ(store.bags().size(), 4U);
            const PKCS12Bag* const key = KeyOf(store);
            ASSERT_NE(key, nullptr);
            EXPECT_EQ(key->friendlyName, options.friendlyName);
            EXPECT_EQ(key->key->privateKeyInfo(), TestKey(2)->privateKeyInfo());
            EXPECT_EQ(key->encryption->scheme, options.encryption.scheme);
            EXPECT_EQ(store.bags()[0].octets, issuer->der());
            EXPECT_EQ(store.bags()[0].safe, 0U);
            EXPECT_EQ(key->safe, 1U);
            EXPECT_TRUE(store.bags()[0].localKeyId.isEmpty());
            EXPECT_EQ(store.certificateOf(*key), &store.bags()[1]);
            EXPECT_EQ(store.bags()[1].localKeyId, key->localKeyId);
            EXPECT_FALSE(key->localKeyId.isEmpty());
            EXPECT_TRUE(store.bags()[2].localKeyId.isEmpty());
            // As DER orders a SET: the shorter one first.
            EXPECT_LT(file.view().rfind(OctetText(OidTlv("1.2.840.113549.1.9.21"))),
                      file.view().rfind(OctetText(OidTlv("1.2.840.113549.1.9.20"))));
            EXPECT_EQ(OutcomeOf(BytesOf(file), "other"), PKCS12Outcome::wrongPassword);
        }
    }
    // Certificates alone, and nothing but their encryption to tell a password by.
    const element alone = CCryptoPKCS12::Save(nullptr, std::array{issuer}, "secret", ways[2]);
    EXPECT_EQ(OutcomeOf(BytesOf(alone)), PKCS12Outcome::opened);
    EXPECT_EQ(OutcomeOf(BytesOf(alone), "other"), PKCS12Outcome::wrongPassword);
}

TEST(PKCS12, WritesNothingThatItCannotRead)
{
    const TestIssuer root = {.name = TestName("CN=Root"), .key = TestKey(1)};
    const CertificatePtr certificate = LoadCertificate(TestCertificate(root).authority().build(root));
    const struct {
        const char* name;
        TestKeyPtr key;
        std::vector<CertificatePtr> certificates;
        void (*change)(SCryptoPKCS12Options& options) = [](SCryptoPKCS12Options&) {};
    } cases[] = {
        {"nothing", nullptr, {}},
        {"a public key", TestKey(1)->publicHalf(), {}},
        {"no certificate", nullptr, {nullptr}},
        {"10,000 certificates", TestKey(1), std::vector(10'000, certificate)},
        {"three keys of 20,000,000 iterations",
         TestKey(1),
         {certificate},
         [](SCryptoPKCS12Options& options) { options.encryption.iterations = options.macIterations = 20'000'000; }},
        {"a MAC of another hash", TestKey(1), {}, [](SCryptoPKCS12Options& options) { options.macHash = algorithm::sha3_256; }},
        {"a name that is not text", TestKey(1), {}, [](SCryptoPKCS12Options& options) { options.friendlyName = "\xFF"; }},
    };
    for (const auto& each : cases) {
        SCryptoPKCS12Options options;
        options.encryption.iterations = options.macIterations = 1;
        each.change(options);
        EXPECT_TRUE(CCryptoPKCS12::Save(each.key.get(), each.certificates, "secret", options).isEmpty()) << each.name;
    }
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
        {"by the public key", Joined({key, StoreCertificate(other), StoreCertificate(first), StoreCertificate(second)}), 2},
        {"of a key that is encrypted",
         Joined({CostlyKey(1, KeyId({7})), StoreCertificate(first), StoreCertificate(other, KeyId({7}))}), 2},
        {"of an encrypted key without an identifier", Joined({CostlyKey(1), StoreCertificate(first)}), -1},
        {"an identifier at another key's certificate", Joined({key, StoreCertificate(other, KeyId({7})), StoreCertificate(first)}),
         2},
        {"none", Joined({key, StoreCertificate(other, KeyId({7}))}), -1},
    };
    for (const MatchCase& match : cases) {
        SCOPED_TRACE(match.name);
        CCryptoPKCS12 store;
        static_cast<void>(store.Read(PlainFile(match.bags)));
        ASSERT_FALSE(store.bags().empty());
        const PKCS12Bag* const found = store.certificateOf(store.bags()[0]);
        EXPECT_EQ(found != nullptr ? found - store.bags().data() : -1, match.found);
    }

    // A look-up is no search: as many as there are certificates take less than reading them.
    Bytes bags = key;
    for (std::uint32_t count = 300; count != 0; --count)
        bags = Joined({bags, StoreCertificate(other)});
    CCryptoPKCS12 store;
    const auto start = std::chrono::steady_clock::now();
    ASSERT_EQ(store.Read(PlainFile(bags)), PKCS12Outcome::opened);
    const auto isRead = std::chrono::steady_clock::now();
    for (std::uint32_t count = 300; count != 0; --count)
        EXPECT_EQ(store.certificateOf(store.bags()[0]), nullptr);
    EXPECT_LT(std::chrono::steady_clock::now() - isRead, isRead - start);
}

TEST(PKCS12, ReadsBagsOfEveryKind)
{
    const TestIssuer root = {.name = TestName("CN=Root"), .key = TestKey(1)};
    const Bytes list = TestCrl().entry(7).build(root);
    const Bytes name = StoreAttribute("1.2.840.113549.1.9.20", Tlv(0x1E, Bytes{0x00, 'a', 0xD8, 0x3D, 0xDD, 0x11}));
    const Bytes otherName = StoreAttribute("1.2.840.113549.1.9.20", Tlv(0x1E, Bytes{0, 'b'}));
    const Bytes noId = StoreAttribute("1.2.840.113549.1.9.21", Tlv(der::utf8String, TextBytes("xy")));
    const auto listBag = [](std::string_view type, const Bytes& octets) {
        return StoreBag("4", Tlv(der::sequence, {OidTlv(type), Tlv(der::Context(0), Tlv(der::octetString, octets))}));
    };
    const Bytes bags = Joined({
        listBag("1.2.840.113549.1.9.23.1", list),
        StoreBag("6", Tlv(der::sequence, Joined({SecretBagOf(1), StoreBag("6", Tlv(der::sequence, SecretBagOf(2)))}))),
        StoreBag("9", Tlv(der::null, Bytes{}), Joined({name, otherName, noId, KeyId({7}), KeyId({8})})),
        StoreCertificate(Bytes{1, 2, 3}, StoreAttribute("1.2.840.113549.1.9.20", Tlv(der::utf8String, TextBytes("xy")))),
        listBag("1.2.840.113549.1.9.23.1", {1, 2, 3}),
        listBag("1.2.840.113549.1.9.23.2", list),
    });
    CCryptoPKCS12 store;
    ASSERT_EQ(store.Read(PlainFile(bags)), PKCS12Outcome::opened);
    ASSERT_EQ(store.bags().size(), 7U);
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
    EXPECT_EQ(BytesOf(store.bags()[3].localKeyId), Bytes{7});
    EXPECT_EQ(store.bags()[5].kind, PKCS12Bag::Kind::revocationList);
    EXPECT_EQ(store.bags()[5].revocationList, nullptr);
    EXPECT_EQ(store.bags()[6].kind, PKCS12Bag::Kind::other);

    // What is read next takes the place of it, or leaves nothing.
    EXPECT_EQ(store.Read(PlainFile(SecretBagOf(1))), PKCS12Outcome::opened);
    EXPECT_EQ(store.bags().size(), 1U);
    EXPECT_EQ(store.safes().size(), 1U);
    EXPECT_EQ(store.Read(PlainFile(Joined({SecretBagOf(1), {5}}))), PKCS12Outcome::malformed);
    EXPECT_TRUE(store.bags().empty() && store.safes().empty());
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

/// Contents that are encrypted with the password "secret".
Bytes EncryptedInfo(const Bytes& contents, const char* type = "1.2.840.113549.1.7.1")
{
    CCryptoPKCS7encryptedDataObject data;
    EXPECT_TRUE(data.Encrypt({.iterations = 1}, "secret", contents));
    EXPECT_TRUE(data.encryptedContentInfo.SetContentOID(Oid::FromDotted(type)));
    return ContentInfo("1.2.840.113549.1.7.6", BytesOf(data.BuildDer()));
}

Bytes Repeated(const Bytes& octets, std::size_t count)
{
    Bytes all;
    for (; count != 0; --count)
        all.insert(all.end(), octets.begin(), octets.end());
    return all;
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
        StoreCase{"10,000 bags", PlainFile(Repeated(SecretBagOf(1), 10'000)), PKCS12Outcome::opened},
        StoreCase{"10,001 bags", PlainFile(Repeated(SecretBagOf(1), 10'001)), PKCS12Outcome::malformed},
        StoreCase{"bags 40 deep", PlainFile(NestedBags(40)), PKCS12Outcome::opened},
        StoreCase{"bags 43 deep", PlainFile(NestedBags(43)), PKCS12Outcome::malformed},
        StoreCase{"BER in pieces", BrowserFile(), PKCS12Outcome::opened},
        StoreCase{"version 2", PlainFile(SecretBagOf(1), 2), PKCS12Outcome::malformed},
        StoreCase{"octets after the last bag", PlainFile(Joined({SecretBagOf(1), {5}})), PKCS12Outcome::malformed},
        StoreCase{"a bag with more than attributes",
                  PlainFile(StoreBag("5", Joined({Tlv(der::null, Bytes{}), Tlv(der::null, Bytes{})}))), PKCS12Outcome::malformed},
        StoreCase{"50,000,001 iterations", PlainFile(CostlyKey(50'000'001)), PKCS12Outcome::unsupported},
        StoreCase{"two keys of 30,000,000 iterations", PlainFile(Repeated(CostlyKey(30'000'000), 2)), PKCS12Outcome::unsupported},
        StoreCase{"a key that is none", PlainFile(StoreBag("1", Tlv(der::sequence, NumberTlv(0)))), PKCS12Outcome::malformed},
        StoreCase{
            "signed contents",
            Tlv(der::sequence, {Tlv(der::integer, Bytes{3}), ContentInfo("1.2.840.113549.1.7.2", Tlv(der::sequence, Bytes{}))}),
            PKCS12Outcome::unsupported},
        StoreCase{"a costly key where it is encrypted", FileOfContents(EncryptedInfo(Tlv(der::sequence, CostlyKey(50'000'000)))),
                  PKCS12Outcome::unsupported},
        StoreCase{"encrypted contents", FileOfContents(EncryptedInfo(Tlv(der::sequence, SecretBagOf(1)))), PKCS12Outcome::opened},
        StoreCase{"encrypted contents that are no bags", FileOfContents(EncryptedInfo(Tlv(der::sequence, Tlv(der::null, Bytes{})))),
                  PKCS12Outcome::wrongPassword},
        StoreCase{"encrypted contents of another type",
                  FileOfContents(EncryptedInfo(Tlv(der::sequence, SecretBagOf(1)), "1.2.840.113549.1.7.2")),
                  PKCS12Outcome::malformed},
        StoreCase{"10,000 contents", FileOfContents(Repeated(DataInfo(Tlv(der::sequence, Bytes{})), 10'000)),
                  PKCS12Outcome::opened},
        StoreCase{"10,001 contents", FileOfContents(Repeated(DataInfo(Tlv(der::sequence, Bytes{})), 10'001)),
                  PKCS12Outcome::malformed},
        StoreCase{"contents that are no octets",
                  FileOfContents(ContentInfo("1.2.840.113549.1.7.1", Tlv(der::sequence, Tlv(der::sequence, SecretBagOf(1))))),
                  PKCS12Outcome::malformed},
        StoreCase{"a file that is no octets",
                  Tlv(der::sequence, {Tlv(der::integer, Bytes{3}),
                                      ContentInfo("1.2.840.113549.1.7.1",
                                                  Tlv(der::sequence, Tlv(der::sequence, DataInfo(Tlv(der::sequence, Bytes{})))))}),
                  PKCS12Outcome::malformed},
        StoreCase{
            "two elements as contents",
            FileOfContents(ContentInfo("1.2.840.113549.1.7.1", Repeated(Tlv(der::octetString, Tlv(der::sequence, Bytes{})), 2))),
            PKCS12Outcome::malformed},
        StoreCase{"5,001 bags in each of two contents",
                  FileOfContents(Repeated(DataInfo(Tlv(der::sequence, Repeated(SecretBagOf(1), 5'001))), 2)),
                  PKCS12Outcome::malformed},
        StoreCase{"10,001 bags of no bags", PlainFile(Repeated(StoreBag("6", Tlv(der::sequence, Bytes{})), 10'001)),
                  PKCS12Outcome::malformed},
        StoreCase{"bags that are none", PlainFile(StoreBag("6", Tlv(der::null, Bytes{}))), PKCS12Outcome::malformed},
        StoreCase{"a secret of two values",
                  PlainFile(StoreBag("5", Tlv(der::sequence, {OidTlv("1.2.3"), Tlv(der::Context(0), Repeated(NumberTlv(1), 2))}))),
                  PKCS12Outcome::malformed},
        StoreCase{"a secret with more than its value",
                  PlainFile(StoreBag("5", Tlv(der::sequence, {OidTlv("1.2.3"), Tlv(der::Context(0), NumberTlv(1)), NumberTlv(1)}))),
                  PKCS12Outcome::malformed},
        StoreCase{"an element after the attributes",
                  PlainFile(Tlv(der::sequence,
                                {OidTlv("1.2.3"), Tlv(der::Context(0), NumberTlv(1)), Tlv(der::set, Bytes{}), NumberTlv(1)})),
                  PKCS12Outcome::malformed},
        StoreCase{"an attribute with more than values",
                  PlainFile(StoreBag("9", NumberTlv(1),
                                     Tlv(der::sequence, {OidTlv("1.2.3"), Tlv(der::set, NumberTlv(1)), NumberTlv(1)}))),
                  PKCS12Outcome::malformed},
        StoreCase{"contents for a public key", FileOfContents(ContentInfo("1.2.840.113549.1.7.3", Tlv(der::sequence, Bytes{}))),
                  PKCS12Outcome::opened}));

namespace {

struct MacCase {
    const char* name;
    Bytes algorithm;
    Bytes iterations; ///< INTEGER of the MAC, or none
    std::size_t digest = 32;
    PKCS12Outcome outcome = PKCS12Outcome::unsupported;
    Bytes after = {}; ///< the MAC
};

Bytes AlgorithmOf(std::string_view oid, const Bytes& parameters = {})
{
    return Tlv(der::sequence, {OidTlv(oid), parameters});
}

constexpr std::string_view sha256Oid = "2.16.840.1.101.3.4.2.1";
constexpr std::string_view hmacSha256Oid = "1.2.840.113549.2.9";

Bytes Pbmac1(const Bytes& iterations, std::string_view prf = hmacSha256Oid, std::string_view mac = hmacSha256Oid,
             const Bytes& parameters = {})
{
    const Bytes derivation =
        Tlv(der::sequence, {Tlv(der::octetString, TextBytes("saltsalt")), iterations, NumberTlv(32), AlgorithmOf(prf, parameters)});
    return AlgorithmOf("1.2.840.113549.1.5.14",
                       Tlv(der::sequence, {AlgorithmOf("1.2.840.113549.1.5.12", derivation), AlgorithmOf(mac, parameters)}));
}

} // namespace

TEST(PKCS12, ChecksTheNumbersOfAMac)
{
    const Bytes one = NumberTlv(1);
    const Bytes null = Tlv(der::null, Bytes{});
    const MacCase cases[] = {
        {"HMAC", AlgorithmOf(sha256Oid, null), one, 32, PKCS12Outcome::wrongPassword},
        {"without NULL and iterations", AlgorithmOf(sha256Oid), {}, 32, PKCS12Outcome::wrongPassword},
        {"PBMAC1", Pbmac1(one), one, 32, PKCS12Outcome::wrongPassword},
        {"an element after it", AlgorithmOf(sha256Oid), one, 32, PKCS12Outcome::malformed, one},
        {"a short digest", AlgorithmOf(sha256Oid), one, 31},
        {"a hash with parameters", AlgorithmOf(sha256Oid, one), one},
        {"no iterations", AlgorithmOf(sha256Oid), NumberTlv(0)},
        {"a negative number of iterations", AlgorithmOf(sha256Oid), Tlv(der::integer, Bytes{0xFF})},
        {"a number of iterations of 5 octets", AlgorithmOf(sha256Oid), Tlv(der::integer, Bytes{1, 0, 0, 0, 1})},
        {"50,000,001 iterations", AlgorithmOf(sha256Oid), NumberTlv(50'000'001)},
        {"40,000,000 iterations beside a costly key", AlgorithmOf(sha256Oid), NumberTlv(40'000'000)},
        {"MD5", AlgorithmOf("1.2.840.113549.2.5"), one, 16},
        {"PBMAC1, no iterations", Pbmac1(NumberTlv(0)), one},
        {"PBMAC1, a hash in place of the prf", Pbmac1(one, sha256Oid), one},
        {"PBMAC1, a hash in place of the HMAC", Pbmac1(one, hmacSha256Oid, sha256Oid), one},
        {"PBMAC1, HMACs with parameters", Pbmac1(one, hmacSha256Oid, hmacSha256Oid, one), one},
    };
    const Bytes contents = DataInfo(Tlv(der::sequence, DataInfo(Tlv(der::sequence, CostlyKey(20'000'000)))));
    for (const MacCase& test : cases) {
        const Bytes mac = Tlv(der::sequence, {Tlv(der::sequence, {test.algorithm, Tlv(der::octetString, Bytes(test.digest))}),
                                              Tlv(der::octetString, TextBytes("saltsalt")), test.iterations});
        EXPECT_EQ(OutcomeOf(Tlv(der::sequence, {Tlv(der::integer, Bytes{3}), contents, mac, test.after})), test.outcome)
            << test.name;
    }
}

} // namespace ccrypto
