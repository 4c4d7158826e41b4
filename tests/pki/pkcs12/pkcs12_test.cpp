#include "core/diagnostics/failure.h"
#include "tests/crypto/base/sequence_random.h"
#include "tests/crypto/base/test_bytes.h"
#include "tests/pki/pkcs12/store_files.h"
#include "tests/pki/x509/test_authority.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
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
    ways[3].macIterations = 1;
    ways[4].mac = SCryptoPKCS12Options::Mac::pbmac1;
    ways[4].macHash = algorithm::sha1;
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
            EXPECT_FALSE(file.view().ends_with(OctetText(NumberTlv(1)))) << "one iteration";
            const std::string sha1 = OctetText(OidTlv("1.2.840.113549.2.7"));
            EXPECT_EQ(file.view().find(sha1), file.view().rfind(sha1)) << "of the MAC alone";
            EXPECT_EQ(file.view().find(sha1) != std::string_view::npos, &options == &ways[4]);
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
    // Two salts and vectors, and the salt of the MAC.
    for (const std::size_t length : {0, 16, 32, 48, 64, 80}) {
        SCryptoPKCS12Options options;
        options.encryption.iterations = options.macIterations = 1;
        ToldBytes random(Bytes(length, 7));
        const element file = CCryptoPKCS12::Save(TestKey(1).get(), std::array{certificate}, "secret", options, random);
        EXPECT_EQ(file.isEmpty(), length < 80) << length;
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

} // namespace ccrypto
