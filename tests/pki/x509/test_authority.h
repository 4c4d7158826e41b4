#pragma once

#include "pki/keys/key_pair.h"
#include "tests/pki/test_der.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

// Certificates and revocation lists for tests, made of DER written here: whatever a test asks for is written, sense or not.
//
//     const TestIssuer root = {.name = TestName("C=FI,CN=Root"), .key = TestKey(1)};
//     const Bytes rootDer = TestCertificate(root).authority().build(root);
//     const Bytes leafDer = TestCertificate("CN=Leaf", TestKey(2)).serial(7).extension(TestKeyUsage(0x80)).build(root);
//     const Bytes listDer = TestCrl().entry(7).build(root);

namespace ccrypto {

using TestKeyPtr = std::shared_ptr<ICryptoKeyPair>;

/// A private key on prime256v1, for the same number always the same. Kept, so that asking again costs nothing.
[[nodiscard]] TestKeyPtr TestKey(std::uint32_t number);
/// \param bits 1024 or 2048.
[[nodiscard]] TestKeyPtr TestRsaKey(std::uint32_t bits = 2048);
/// Of DSA, with 1024 bits. Without its private half.
[[nodiscard]] TestKeyPtr TestDsaKey();
[[nodiscard]] TestKeyPtr TestEd25519Key();
/// The octets of the subjectPublicKey BIT STRING, and their SHA-1, which key identifiers are made of.
[[nodiscard]] Bytes TestKeyBits(const ICryptoKeyPair& key);
[[nodiscard]] Bytes TestKeyIdentifier(const ICryptoKeyPair& key);

/// A name of relative names in the order of their octets, each of one value: "C=FI,O=Example,CN=Root"; also S, L, OU, DC and E.
/// Values hold no comma. C is a PrintableString, DC and E are IA5Strings, others UTF8Strings.
[[nodiscard]] Bytes TestName(std::string_view text);
/// A UTCTime of "20260101000000Z" for years 1950 to 2049, else a GeneralizedTime.
[[nodiscard]] Bytes TestTime(std::string_view generalized);

/// Who signs.
struct TestIssuer {
    Bytes name;
    TestKeyPtr key;
    algorithm::Id hash = algorithm::sha256; ///< MD5 and SHA-1, too
};

/// The AlgorithmIdentifier of a signature with the issuer's key and hash.
[[nodiscard]] Bytes TestAlgorithm(const TestIssuer& issuer);
/// SEQUENCE of `octets`, the algorithm and the signature over them. \param algorithm beside the signature; empty for the issuer's.
[[nodiscard]] Bytes TestSigned(const Bytes& octets, const TestIssuer& issuer, const Bytes& algorithm = {});

// Extensions.
[[nodiscard]] Bytes TestExtension(std::string_view oid, const Bytes& content, bool critical = false);
[[nodiscard]] Bytes TestBasicConstraints(bool isCa, std::optional<std::uint32_t> pathLength = {}, bool critical = true);
/// \param bits the first octet of the BIT STRING: 0x80 digitalSignature, 0x40 nonRepudiation, 0x20 keyEncipherment, 0x04
/// keyCertSign, 0x02 cRLSign, …
[[nodiscard]] Bytes TestKeyUsage(std::uint8_t bits, bool critical = true);
[[nodiscard]] Bytes TestExtendedKeyUsage(std::initializer_list<std::string_view> oids, bool critical = false);
[[nodiscard]] Bytes TestSubjectKeyIdentifier(const ICryptoKeyPair& key);
[[nodiscard]] Bytes TestAuthorityKeyIdentifier(const ICryptoKeyPair& issuerKey);
/// \param names each a GeneralName, as TestDns() and the others make them.
[[nodiscard]] Bytes TestAlternativeNames(std::initializer_list<Bytes> names, bool critical = false);
[[nodiscard]] Bytes TestNameConstraints(std::initializer_list<Bytes> permitted, std::initializer_list<Bytes> excluded,
                                        bool critical = true);
[[nodiscard]] Bytes TestPolicies(std::initializer_list<std::string_view> oids, bool critical = false);
[[nodiscard]] Bytes TestPolicyMappings(std::initializer_list<std::pair<std::string_view, std::string_view>> mappings,
                                       bool critical = true);
[[nodiscard]] Bytes TestPolicyConstraints(std::optional<std::uint32_t> requireExplicit,
                                          std::optional<std::uint32_t> inhibitMapping);
[[nodiscard]] Bytes TestInhibitAnyPolicy(std::uint32_t skip);
/// Of one distribution point with one URI.
[[nodiscard]] Bytes TestDistributionPoint(std::string_view uri);
/// The content is IssuingDistributionPoint without its SEQUENCE.
[[nodiscard]] Bytes TestIssuingDistributionPoint(const Bytes& fields);
[[nodiscard]] Bytes TestOcspLocation(std::string_view uri);

// GeneralNames.
[[nodiscard]] Bytes TestEmail(std::string_view address);
[[nodiscard]] Bytes TestDns(std::string_view name);
[[nodiscard]] Bytes TestUri(std::string_view uri);
[[nodiscard]] Bytes TestIp(const Bytes& address);
[[nodiscard]] Bytes TestDirectoryName(std::string_view name);

/// A certificate in the making. Without further words: version 3, serial number 1, valid from 2020 to 2049.
class TestCertificate {
public:
    TestCertificate(std::string_view subject, const TestKeyPtr& key);
    /// Of an issuer itself.
    explicit TestCertificate(const TestIssuer& issuer);

    /// 1 leaves version and extensions out; 0x100 + n writes n into the field, whatever it means.
    TestCertificate& version(std::uint32_t number);
    TestCertificate& serial(std::uint64_t number);
    TestCertificate& serialOctets(const Bytes& octets);
    /// As TestTime() takes them.
    TestCertificate& validity(std::string_view from, std::string_view to);
    /// The two times as DER.
    TestCertificate& validityDer(const Bytes& times);
    TestCertificate& subjectDer(const Bytes& name);
    TestCertificate& publicKeyInfo(const Bytes& der);
    /// As TestExtension() and the others make it. Those of the same OID stand side by side.
    TestCertificate& extension(const Bytes& der);
    /// In place of the whole of [3]; empty leaves it out.
    TestCertificate& extensionsDer(const Bytes& der);
    /// Basic constraints of an authority, keyCertSign with cRLSign, and the subject key identifier.
    TestCertificate& authority(std::optional<std::uint32_t> pathLength = {});
    /// In place of the algorithm in what is signed.
    TestCertificate& innerAlgorithm(const Bytes& der);
    TestCertificate& outerAlgorithm(const Bytes& der);

    [[nodiscard]] Bytes tbs(const TestIssuer& issuer) const;
    [[nodiscard]] Bytes build(const TestIssuer& issuer) const;

private:
    std::uint32_t version_ = 3;
    Bytes serial_;
    Bytes validity_;
    Bytes subject_;
    Bytes publicKeyInfo_;
    Bytes keyIdentifier_;
    std::vector<Bytes> extensions_;
    std::optional<Bytes> extensionsDer_;
    Bytes innerAlgorithm_;
    Bytes outerAlgorithm_;
};

/// A revocation list in the making. Without further words: version 2, this update 2026-01-01, next update 2049, CRL number 1.
class TestCrl {
public:
    TestCrl();

    /// 1 leaves version and extensions out.
    TestCrl& version(std::uint32_t number);
    TestCrl& thisUpdate(std::string_view time);
    /// Empty leaves it out.
    TestCrl& nextUpdate(std::string_view time);
    TestCrl& number(std::uint64_t number);
    TestCrl& withoutNumber();
    /// \param reason CRLReason. \param extensions further ones of the entry.
    TestCrl& entry(std::uint64_t serial, std::optional<std::uint32_t> reason = {}, std::string_view date = "20260101000000Z",
                   const std::vector<Bytes>& extensions = {});
    TestCrl& entryDer(const Bytes& der);
    TestCrl& extension(const Bytes& der);
    /// A delta of the list with this number.
    TestCrl& delta(std::uint64_t base);

    [[nodiscard]] Bytes tbs(const TestIssuer& issuer) const;
    [[nodiscard]] Bytes build(const TestIssuer& issuer) const;

private:
    std::uint32_t version_ = 2;
    Bytes thisUpdate_;
    Bytes nextUpdate_;
    std::optional<std::uint64_t> number_ = 1;
    Bytes entries_;
    std::vector<Bytes> extensions_;
};

} // namespace ccrypto
