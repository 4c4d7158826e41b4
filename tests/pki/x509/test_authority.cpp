#include "tests/pki/x509/test_authority.h"

#include "asn1/der/der_cursor.h"
#include "crypto/ec/ec.h"
#include "crypto/hash/hash.h"
#include "pki/keys/ec_key_pair.h"
#include "pki/keys/eddsa_key_pair.h"
#include "tests/pki/keys/test_keys.h"

#include <bit>
#include <map>
#include <stdexcept>
#include <string>

namespace ccrypto {

namespace {

Bytes DigestOf(algorithm::Id hash, const Bytes& bytes)
{
    return BytesOf(ICryptoHash::Create(hash)->digestOf(std::span<const std::uint8_t>(bytes)));
}

Bytes SeedOf(std::uint32_t number)
{
    return DigestOf(algorithm::sha256, TextBytes("test key " + std::to_string(number)));
}

struct AttributeRow {
    std::string_view name;
    const char* oid;
    std::uint8_t identifier = der::utf8String;
};

constexpr std::uint8_t ia5String = 0x16;

constexpr AttributeRow attributeRows[] = {
    {"C", "2.5.4.6", der::printableString},
    {"S", "2.5.4.8"},
    {"L", "2.5.4.7"},
    {"O", "2.5.4.10"},
    {"OU", "2.5.4.11"},
    {"CN", "2.5.4.3"},
    {"DC", "0.9.2342.19200300.100.1.25", ia5String},
    {"E", "1.2.840.113549.1.9.1", ia5String},
};

const AttributeRow& AttributeNamed(std::string_view name)
{
    for (const AttributeRow& row : attributeRows)
        if (row.name == name)
            return row;
    throw std::invalid_argument("no attribute of a test name: " + std::string(name));
}

struct AlgorithmOfTest {
    algorithm::Id hash;
    const char* rsa;
    const char* ecdsa;
};

constexpr AlgorithmOfTest testAlgorithms[] = {
    {algorithm::md5, "1.2.840.113549.1.1.4", ""},
    {algorithm::sha1, "1.2.840.113549.1.1.5", "1.2.840.10045.4.1"},
    {algorithm::sha224, "1.2.840.113549.1.1.14", "1.2.840.10045.4.3.1"},
    {algorithm::sha256, "1.2.840.113549.1.1.11", "1.2.840.10045.4.3.2"},
    {algorithm::sha384, "1.2.840.113549.1.1.12", "1.2.840.10045.4.3.3"},
    {algorithm::sha512, "1.2.840.113549.1.1.13", "1.2.840.10045.4.3.4"},
};

Bytes Bits(const Bytes& bytes)
{
    return Tlv(der::bitString, Joined({{0}, bytes}));
}

Bytes OidList(std::initializer_list<std::string_view> oids)
{
    Bytes list;
    for (const std::string_view oid : oids)
        list = Joined({list, OidTlv(oid)});
    return list;
}

Bytes Subtrees(std::uint8_t number, std::initializer_list<Bytes> bases)
{
    Bytes list;
    for (const Bytes& base : bases)
        list = Joined({list, Tlv(der::sequence, base)});
    return list.empty() ? list : Tlv(der::Context(number), list);
}

Bytes OptionalNumber(std::uint8_t number, std::optional<std::uint32_t> value)
{
    return value ? NumberTlv(*value, der::Context(number, false)) : Bytes();
}

Bytes Concatenated(const std::vector<Bytes>& parts)
{
    Bytes all;
    for (const Bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

} // namespace

TestKeyPtr TestKey(std::uint32_t number)
{
    static std::map<std::uint32_t, TestKeyPtr> keys;
    TestKeyPtr& key = keys[number];
    if (key == nullptr)
        key = std::make_shared<CCryptoECKeyPair>(CCryptoEC::FromPrivate(algorithm::prime256v1, SeedOf(number)));
    return key;
}

TestKeyPtr TestRsaKey(std::uint32_t bits)
{
    static std::map<std::uint32_t, TestKeyPtr> keys;
    TestKeyPtr& key = keys[bits];
    if (key == nullptr)
        for (const TestVector& vector : ReadVectors("key_files.txt"))
            if (vector.number("Kind") == algorithm::rsaEncryption && vector.number("Size") == bits)
                key = Load(vector.bytes("PrivateKeyInfo"));
    return key;
}

TestKeyPtr TestDsaKey()
{
    static const TestKeyPtr key = [] {
        for (const TestVector& vector : ReadVectors("signatures.txt"))
            if (TestKeyPtr found = Load(vector.bytes("PublicKeyInfo")); found->algorithmId() == algorithm::dsa)
                return found;
        return TestKeyPtr();
    }();
    return key;
}

TestKeyPtr TestEd25519Key()
{
    static const TestKeyPtr key = std::make_shared<CCryptoEddsaKeyPair>(EddsaKey::FromSeed(algorithm::ed25519, SeedOf(25519)));
    return key;
}

Bytes TestKeyBits(const ICryptoKeyPair& key)
{
    const element info = key.publicKeyInfo();
    DerCursor fields(OnlyValue(info.bytes(), der::sequence).value());
    (void)fields.read();
    const std::span<const std::uint8_t> bits = fields.read(der::bitString).value.subspan(1);
    return {bits.begin(), bits.end()};
}

Bytes TestKeyIdentifier(const ICryptoKeyPair& key)
{
    return DigestOf(algorithm::sha1, TestKeyBits(key));
}

Bytes TestName(std::string_view text)
{
    Bytes names;
    while (!text.empty()) {
        const std::string_view part = text.substr(0, text.find(','));
        text.remove_prefix(std::min(text.size(), part.size() + 1));
        const AttributeRow& row = AttributeNamed(part.substr(0, part.find('=')));
        const Bytes value = Tlv(row.identifier, TextBytes(part.substr(row.name.size() + 1)));
        names = Joined({names, Tlv(der::set, Tlv(der::sequence, {OidTlv(row.oid), value}))});
    }
    return Tlv(der::sequence, names);
}

Bytes TestTime(std::string_view generalized)
{
    const std::string_view year = generalized.substr(0, 4);
    const bool isShort = year >= "1950" && year <= "2049";
    return isShort ? Tlv(der::utcTime, TextBytes(generalized.substr(2))) : Tlv(der::generalizedTime, TextBytes(generalized));
}

Bytes TestAlgorithm(const TestIssuer& issuer)
{
    const algorithm::Id kind = issuer.key->algorithmId();
    if (kind == algorithm::ed25519)
        return Tlv(der::sequence, OidTlv("1.3.101.112"));
    const bool isRsa = kind == algorithm::rsaEncryption;
    for (const AlgorithmOfTest& row : testAlgorithms)
        if (row.hash == issuer.hash)
            return Tlv(der::sequence, {OidTlv(isRsa ? row.rsa : row.ecdsa), isRsa ? Bytes{der::null, 0} : Bytes()});
    throw std::invalid_argument("no hash of a test issuer");
}

Bytes TestSigned(const Bytes& octets, const TestIssuer& issuer, const Bytes& algorithm)
{
    ICryptoSigner& signer = *issuer.key->signer();
    const element signature =
        signer.signsMessages() ? signer.sign(algorithm::none, octets) : signer.sign(issuer.hash, DigestOf(issuer.hash, octets));
    return Tlv(der::sequence, {octets, algorithm.empty() ? TestAlgorithm(issuer) : algorithm, Bits(BytesOf(signature))});
}

Bytes TestExtension(std::string_view oid, const Bytes& content, bool critical)
{
    const Bytes flag = critical ? Tlv(der::boolean, {0xFF}) : Bytes();
    return Tlv(der::sequence, {OidTlv(oid), flag, Tlv(der::octetString, content)});
}

Bytes TestBasicConstraints(bool isCa, std::optional<std::uint32_t> pathLength, bool critical)
{
    return TestExtension(
        "2.5.29.19",
        Tlv(der::sequence, {isCa ? Tlv(der::boolean, {0xFF}) : Bytes(), pathLength ? NumberTlv(*pathLength) : Bytes()}), critical);
}

Bytes TestKeyUsage(std::uint8_t bits, bool critical)
{
    const auto unused = static_cast<std::uint8_t>(bits == 0 ? 0 : std::countr_zero(bits));
    return TestExtension("2.5.29.15", Tlv(der::bitString, bits == 0 ? Bytes{0} : Bytes{unused, bits}), critical);
}

Bytes TestExtendedKeyUsage(std::initializer_list<std::string_view> oids, bool critical)
{
    return TestExtension("2.5.29.37", Tlv(der::sequence, OidList(oids)), critical);
}

Bytes TestSubjectKeyIdentifier(const ICryptoKeyPair& key)
{
    return TestExtension("2.5.29.14", Tlv(der::octetString, TestKeyIdentifier(key)));
}

Bytes TestAuthorityKeyIdentifier(const ICryptoKeyPair& issuerKey)
{
    return TestExtension("2.5.29.35", Tlv(der::sequence, Tlv(der::Context(0, false), TestKeyIdentifier(issuerKey))));
}

Bytes TestAlternativeNames(std::initializer_list<Bytes> names, bool critical)
{
    return TestExtension("2.5.29.17", Tlv(der::sequence, names), critical);
}

Bytes TestNameConstraints(std::initializer_list<Bytes> permitted, std::initializer_list<Bytes> excluded, bool critical)
{
    return TestExtension("2.5.29.30", Tlv(der::sequence, {Subtrees(0, permitted), Subtrees(1, excluded)}), critical);
}

Bytes TestPolicies(std::initializer_list<std::string_view> oids, bool critical)
{
    Bytes policies;
    for (const std::string_view oid : oids)
        policies = Joined({policies, Tlv(der::sequence, OidTlv(oid))});
    return TestExtension("2.5.29.32", Tlv(der::sequence, policies), critical);
}

Bytes TestPolicyMappings(std::initializer_list<std::pair<std::string_view, std::string_view>> mappings, bool critical)
{
    Bytes list;
    for (const auto& [issuer, subject] : mappings)
        list = Joined({list, Tlv(der::sequence, {OidTlv(issuer), OidTlv(subject)})});
    return TestExtension("2.5.29.33", Tlv(der::sequence, list), critical);
}

Bytes TestPolicyConstraints(std::optional<std::uint32_t> requireExplicit, std::optional<std::uint32_t> inhibitMapping)
{
    return TestExtension("2.5.29.36", Tlv(der::sequence, {OptionalNumber(0, requireExplicit), OptionalNumber(1, inhibitMapping)}),
                         true);
}

Bytes TestInhibitAnyPolicy(std::uint32_t skip)
{
    return TestExtension("2.5.29.54", NumberTlv(skip), true);
}

Bytes TestDistributionPoint(std::string_view uri)
{
    const Bytes name = Tlv(der::Context(0), Tlv(der::Context(0), TestUri(uri)));
    return TestExtension("2.5.29.31", Tlv(der::sequence, Tlv(der::sequence, name)));
}

Bytes TestIssuingDistributionPoint(const Bytes& fields)
{
    return TestExtension("2.5.29.28", Tlv(der::sequence, fields), true);
}

Bytes TestOcspLocation(std::string_view uri)
{
    const Bytes description = Tlv(der::sequence, {OidTlv("1.3.6.1.5.5.7.48.1"), TestUri(uri)});
    return TestExtension("1.3.6.1.5.5.7.1.1", Tlv(der::sequence, description));
}

Bytes TestEmail(std::string_view address)
{
    return Tlv(der::Context(1, false), TextBytes(address));
}

Bytes TestDns(std::string_view name)
{
    return Tlv(der::Context(2, false), TextBytes(name));
}

Bytes TestUri(std::string_view uri)
{
    return Tlv(der::Context(6, false), TextBytes(uri));
}

Bytes TestIp(const Bytes& address)
{
    return Tlv(der::Context(7, false), address);
}

Bytes TestDirectoryName(std::string_view name)
{
    return Tlv(der::Context(4), TestName(name));
}

TestCertificate::TestCertificate(std::string_view subject, const TestKeyPtr& key)
    : TestCertificate(TestIssuer{.name = TestName(subject), .key = key})
{
}

TestCertificate::TestCertificate(const TestIssuer& issuer)
    : subject_(issuer.name), publicKeyInfo_(BytesOf(issuer.key->publicKeyInfo())),
      keyIdentifier_(TestSubjectKeyIdentifier(*issuer.key))
{
    serial(1).validity("20200101000000Z", "20491231235959Z");
}

TestCertificate& TestCertificate::version(std::uint32_t number)
{
    version_ = number;
    return *this;
}

TestCertificate& TestCertificate::serial(std::uint64_t number)
{
    serial_ = NumberTlv(number);
    return *this;
}

TestCertificate& TestCertificate::serialOctets(const Bytes& octets)
{
    serial_ = Tlv(der::integer, octets);
    return *this;
}

TestCertificate& TestCertificate::validity(std::string_view from, std::string_view to)
{
    return validityDer(Joined({TestTime(from), TestTime(to)}));
}

TestCertificate& TestCertificate::validityDer(const Bytes& times)
{
    validity_ = times;
    return *this;
}

TestCertificate& TestCertificate::subjectDer(const Bytes& name)
{
    subject_ = name;
    return *this;
}

TestCertificate& TestCertificate::publicKeyInfo(const Bytes& der)
{
    publicKeyInfo_ = der;
    return *this;
}

TestCertificate& TestCertificate::extension(const Bytes& der)
{
    extensions_.push_back(der);
    return *this;
}

TestCertificate& TestCertificate::extensionsDer(const Bytes& der)
{
    extensionsDer_ = der;
    return *this;
}

TestCertificate& TestCertificate::authority(std::optional<std::uint32_t> pathLength)
{
    return extension(TestBasicConstraints(true, pathLength)).extension(TestKeyUsage(0x06)).extension(keyIdentifier_);
}

TestCertificate& TestCertificate::innerAlgorithm(const Bytes& der)
{
    innerAlgorithm_ = der;
    return *this;
}

TestCertificate& TestCertificate::outerAlgorithm(const Bytes& der)
{
    outerAlgorithm_ = der;
    return *this;
}

Bytes TestCertificate::tbs(const TestIssuer& issuer) const
{
    const std::uint32_t field = version_ >= 0x100 ? version_ - 0x100 : version_ - 1;
    Bytes extensions;
    if (extensionsDer_)
        extensions = *extensionsDer_;
    else if (!extensions_.empty() && version_ != 1)
        extensions = Tlv(der::Context(3), Tlv(der::sequence, Concatenated(extensions_)));
    return Tlv(der::sequence, {version_ == 1 ? Bytes() : Tlv(der::Context(0), NumberTlv(field)), serial_,
                               innerAlgorithm_.empty() ? TestAlgorithm(issuer) : innerAlgorithm_, issuer.name,
                               Tlv(der::sequence, validity_), subject_, publicKeyInfo_, extensions});
}

Bytes TestCertificate::build(const TestIssuer& issuer) const
{
    return TestSigned(tbs(issuer), issuer, outerAlgorithm_);
}

TestCrl::TestCrl() : thisUpdate_(TestTime("20260101000000Z")), nextUpdate_(TestTime("20491231235959Z")) {}

TestCrl& TestCrl::version(std::uint32_t number)
{
    version_ = number;
    return *this;
}

TestCrl& TestCrl::thisUpdate(std::string_view time)
{
    thisUpdate_ = TestTime(time);
    return *this;
}

TestCrl& TestCrl::nextUpdate(std::string_view time)
{
    nextUpdate_ = time.empty() ? Bytes() : TestTime(time);
    return *this;
}

TestCrl& TestCrl::number(std::uint64_t number)
{
    number_ = number;
    return *this;
}

TestCrl& TestCrl::withoutNumber()
{
    number_.reset();
    return *this;
}

TestCrl& TestCrl::entry(std::uint64_t serial, std::optional<std::uint32_t> reason, std::string_view date,
                        const std::vector<Bytes>& extensions)
{
    std::vector<Bytes> all = extensions;
    if (reason)
        all.insert(all.begin(), TestExtension("2.5.29.21", NumberTlv(*reason, der::enumerated)));
    return entryDer(
        Tlv(der::sequence, {NumberTlv(serial), TestTime(date), all.empty() ? Bytes() : Tlv(der::sequence, Concatenated(all))}));
}

TestCrl& TestCrl::entryDer(const Bytes& der)
{
    entries_.insert(entries_.end(), der.begin(), der.end());
    return *this;
}

TestCrl& TestCrl::extension(const Bytes& der)
{
    extensions_.push_back(der);
    return *this;
}

TestCrl& TestCrl::delta(std::uint64_t base)
{
    return extension(TestExtension("2.5.29.27", NumberTlv(base), true));
}

Bytes TestCrl::tbs(const TestIssuer& issuer) const
{
    Bytes extensions = number_ ? TestExtension("2.5.29.20", NumberTlv(*number_)) : Bytes();
    extensions = Joined({extensions, Concatenated(extensions_)});
    const bool hasExtensions = version_ != 1 && !extensions.empty();
    return Tlv(der::sequence, {version_ == 1 ? Bytes() : NumberTlv(version_ - 1), TestAlgorithm(issuer), issuer.name, thisUpdate_,
                               nextUpdate_, entries_.empty() ? Bytes() : Tlv(der::sequence, entries_),
                               hasExtensions ? Tlv(der::Context(0), Tlv(der::sequence, extensions)) : Bytes()});
}

Bytes TestCrl::build(const TestIssuer& issuer) const
{
    return TestSigned(tbs(issuer), issuer);
}

} // namespace ccrypto
