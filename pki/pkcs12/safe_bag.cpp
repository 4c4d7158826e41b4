#include "pki/pkcs12/safe_bag.h"

#include "asn1/der/der_cursor.h"
#include "core/diagnostics/auto_logger.h"
#include "pki/cms/ber_gathering.h"
#include "pki/keys/key_encoding.h"
#include "pki/keys/key_objects.h"

#include <string>

namespace ccrypto {

namespace pkcs12 {

const Oid keyBag = Oid::FromDotted("1.2.840.113549.1.12.10.1.1");
const Oid shroudedKeyBag = Oid::FromDotted("1.2.840.113549.1.12.10.1.2");
const Oid certificateBag = Oid::FromDotted("1.2.840.113549.1.12.10.1.3");
const Oid revocationListBag = Oid::FromDotted("1.2.840.113549.1.12.10.1.4");
const Oid secretBag = Oid::FromDotted("1.2.840.113549.1.12.10.1.5");
const Oid safeContentsBag = Oid::FromDotted("1.2.840.113549.1.12.10.1.6");
const Oid x509Certificate = Oid::FromDotted("1.2.840.113549.1.9.22.1");
const Oid x509RevocationList = Oid::FromDotted("1.2.840.113549.1.9.23.1");
const Oid friendlyName = Oid::FromDotted("1.2.840.113549.1.9.20");
const Oid localKeyId = Oid::FromDotted("1.2.840.113549.1.9.21");

} // namespace pkcs12

namespace {

constexpr std::uint8_t derInteger = 0x02;
constexpr std::uint8_t derOctetString = 0x04;
constexpr std::uint8_t derOid = 0x06;
constexpr std::uint8_t derBmpString = 0x1E;
constexpr std::uint8_t derSequence = 0x30;
constexpr std::uint8_t derSet = 0x31;
constexpr std::uint8_t derTag0 = 0xA0;

element ElementOf(std::span<const std::uint8_t> octets)
{
    return {octets.data(), static_cast<std::uint32_t>(octets.size())};
}

CCryptoString TextOfBmp(std::span<const std::uint8_t> octets)
{
    std::u16string units;
    for (std::size_t index = 0; index + 1 < octets.size(); index += 2)
        units += static_cast<char16_t>(octets[index] << 8 | octets[index + 1]);
    return CCryptoString::FromUtf16(units.data(), static_cast<std::uint32_t>(units.size()));
}

/// What of a SET of attributes is used. Each first one counts; a value of another type is ignored, since the attributes only help
/// people and matching.
bool ReadBagAttributes(std::span<const std::uint8_t> set, PKCS12Bag& bag)
{
    DerCursor attributes(set);
    while (!attributes.atEnd()) {
        DerCursor fields(attributes.read(derSequence).value);
        const DerItem type = fields.read(derOid);
        const DerItem values = fields.read(derSet);
        if (!type || !values || !fields.atEnd())
            return false;
        const DerItem value = DerCursor(values.value).read();
        if (pkcs12::friendlyName == type.value && value.identifier == derBmpString && bag.friendlyName.isEmpty())
            bag.friendlyName = TextOfBmp(value.value);
        else if (pkcs12::localKeyId == type.value && value.identifier == derOctetString && bag.localKeyId.isEmpty())
            bag.localKeyId = ElementOf(value.value);
    }
    return true;
}

/// CertBag, CRLBag or SecretBag: a type, and a value under a tag.
struct TypedValue {
    Oid type;
    std::span<const std::uint8_t> octets; ///< of the one element; empty when it is not one
};

TypedValue ReadTypedValue(std::span<const std::uint8_t> bag)
{
    const auto sequence = OnlyValue(bag, derSequence);
    if (!sequence)
        return {};
    DerCursor fields(*sequence);
    const DerItem type = fields.read(derOid);
    const DerItem tagged = fields.read(derTag0);
    DerCursor inside(tagged.value);
    const DerItem value = inside.read();
    if (!type || !value || !inside.atEnd() || !fields.atEnd())
        return {};
    return {Oid(type.value), value.octets};
}

bool ReadCertificateOrList(const TypedValue& typed, PKCS12Bag& bag)
{
    const auto value = OnlyValue(typed.octets, derOctetString);
    if (typed.type == pkcs12::x509Certificate && value) {
        bag.kind = PKCS12Bag::Kind::certificate;
        bag.octets = ElementOf(*value);
        bag.certificate = LoadCertificate(*value);
    } else if (typed.type == pkcs12::x509RevocationList && value) {
        bag.kind = PKCS12Bag::Kind::revocationList;
        bag.octets = ElementOf(*value);
        auto list = std::make_shared<CCrypto_X509_CRL>();
        if (list->LoadCRL(bag.octets))
            bag.revocationList = std::move(list);
    } else {
        bag.octets = ElementOf(typed.octets);
    }
    return !typed.octets.empty();
}

} // namespace

bool ReadPKCS12Key(const element& privateKeyInfo, PKCS12Bag& bag)
{
    const auto sequence = OnlyValue(privateKeyInfo.bytes(), derSequence);
    if (!sequence)
        return false;
    DerCursor fields(*sequence);
    if (!fields.read(derInteger) || !fields.read(derSequence) || !fields.read(derOctetString))
        return false;
    bag.key = LoadPrivateKeyInfo(privateKeyInfo);
    return true;
}

bool PKCS12SafeReader::read(std::span<const std::uint8_t> contents, std::uint32_t safe)
{
    CCryptoAutoLogger logger("PKCS12SafeReader::read");
    const element der = GatherBer(contents);
    const auto outermost = OnlyValue(der.bytes(), derSequence);
    if (!outermost)
        return logger.fail(false, "The contents are not a list of bags");
    // Levels that are not at their end; their number is bounded by that of the levels of an encoding.
    std::vector<DerCursor> levels = {DerCursor(*outermost)};
    std::uint32_t visited = 0;
    while (!levels.empty()) {
        if (levels.back().atEnd()) {
            levels.pop_back();
            continue;
        }
        if (++visited > maxBags || bags_.size() >= maxBags)
            return logger.fail(false, "The file has more than 10,000 bags");
        const DerItem bag = levels.back().read(derSequence);
        nested_.clear();
        if (!bag || !readBag(bag.value, safe))
            return logger.fail(false, "A bag cannot be read");
        for (const auto& inner : nested_)
            levels.emplace_back(inner);
    }
    return logger.setResult(true);
}

bool PKCS12SafeReader::readBag(std::span<const std::uint8_t> octets, std::uint32_t safe)
{
    DerCursor fields(octets);
    const DerItem type = fields.read(derOid);
    const DerItem value = fields.read(derTag0);
    if (!type || !value)
        return false;
    PKCS12Bag bag;
    bag.type = Oid(type.value);
    bag.safe = safe;
    if (!fields.atEnd() && !ReadBagAttributes(fields.read(derSet).value, bag))
        return false;
    if (!fields.atEnd())
        return false;
    if (bag.type == pkcs12::safeContentsBag) {
        const auto inner = OnlyValue(value.value, derSequence);
        if (inner)
            nested_.push_back(*inner);
        return inner.has_value();
    }
    if (!readValue(value.value, bag))
        return false;
    bags_.push_back(std::move(bag));
    return true;
}

bool PKCS12SafeReader::readValue(std::span<const std::uint8_t> value, PKCS12Bag& bag)
{
    if (bag.type == pkcs12::keyBag) {
        bag.kind = PKCS12Bag::Kind::key;
        return ReadPKCS12Key(ElementOf(value), bag);
    }
    if (bag.type == pkcs12::shroudedKeyBag) {
        bag.kind = PKCS12Bag::Kind::key;
        return opener_(value, bag) != KeyResult::failed;
    }
    const bool isSecret = bag.type == pkcs12::secretBag;
    if (isSecret || bag.type == pkcs12::certificateBag || bag.type == pkcs12::revocationListBag) {
        const TypedValue typed = ReadTypedValue(value);
        bag.type = typed.type;
        if (!isSecret)
            return ReadCertificateOrList(typed, bag);
        bag.kind = PKCS12Bag::Kind::secret;
        bag.octets = ElementOf(typed.octets);
        return !typed.octets.empty();
    }
    bag.octets = ElementOf(value);
    return true;
}

} // namespace ccrypto
