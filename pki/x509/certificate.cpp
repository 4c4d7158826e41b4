#include "pki/x509/certificate.h"

#include "asn1/der/der_cursor.h"
#include "asn1/der/der_parser.h"
#include "asn1/template/template_cache.h"
#include "pki/keys/key_encoding.h"
#include "pki/x509/certificate_templates.h"
#include "pki/x509/der_tags.h"
#include "pki/x509/field_reading.h"
#include "pki/x509/x509_time.h"

#include <optional>
#include <utility>

using namespace ccrypto;

namespace {

// The templates that are tried first demand extensions, which version 1 does not have and version 3 may leave out, and know no
// unique identifiers (RFC 5280, 4.1.2.8). A key that is missing is found out here, too: what is in its place is bound.
constexpr const char* openVersion3Template =
    "SEQUENCE {SEQUENCE {CONTEXT_SPECIFIC[0] { INTEGER { VERSION } },INTEGER { SERIAL_NUMBER },SIGNATURE_ALGORITHM,"
    "SEQUENCE[CONSTRUCTED] { ISSUER },SEQUENCE { VALID_FROM_TAG { VALID_FROM }, VALID_TO_TAG { VALID_TO } },"
    "SEQUENCE[CONSTRUCTED] { SUBJECT },PUBLIC_KEY(OPTIONAL),CONTEXT_SPECIFIC[1,IMPLICIT](OPTIONAL) { ISSUER_IDENTIFIER },"
    "CONTEXT_SPECIFIC[2,IMPLICIT](OPTIONAL) { SUBJECT_IDENTIFIER },"
    "CONTEXT_SPECIFIC[3,CONSTRUCTED](OPTIONAL) { SEQUENCE[CONSTRUCTED] { EXTENSIONS } }} "
    "SIGNATURE_ALGORITHM_2, BIT_STRING { SIGNATURE } }";
constexpr const char* openVersion1Template =
    "SEQUENCE {SEQUENCE {INTEGER { SERIAL_NUMBER },SIGNATURE_ALGORITHM,SEQUENCE[CONSTRUCTED] { ISSUER },"
    "SEQUENCE { VALID_FROM_TAG { VALID_FROM }, VALID_TO_TAG { VALID_TO } },SEQUENCE[CONSTRUCTED] { SUBJECT },"
    "PUBLIC_KEY(OPTIONAL)} SIGNATURE_ALGORITHM_2, BIT_STRING { SIGNATURE } }";

/// The tag of version 3 in front of the number, which a certificate of version 1 does not have: the path then leads nowhere.
constexpr const char* versionPath = "{{{=";

constexpr std::uint8_t versionTag = der_tag::Constructed(0);
constexpr std::uint8_t extensionsTag = der_tag::Constructed(3);
constexpr std::int32_t maxVersion = 1'000'000;

std::int32_t VersionOf(elementNode* root)
{
    const element* const number = CCryptoParser::find_path_element(root, versionPath);
    if (number == nullptr)
        return 1;
    const std::int32_t version = IsMinimalInteger(number->bytes()) ? number->exactInt().value_or(maxVersion) : maxVersion;
    return version < 0 || version >= maxVersion ? 0 : version + 1;
}

/// The octets of the parts that are kept as they were read.
struct CertificateOctets {
    std::span<const std::uint8_t> signedPart, issuer, subject, publicKey, extensions;
    bool areIdentifiersBits = true; ///< the unique ones, which are BIT STRINGs under a tag of their own
};

/// Walks octets that the template was found in. \return false for octets that are not DER after all.
bool FindOctets(std::span<const std::uint8_t> der, CertificateOctets& octets)
{
    const auto certificate = OnlyValue(der, der_tag::sequence);
    if (!certificate)
        return false;
    const DerItem signedPart = DerCursor(*certificate).read(der_tag::sequence);
    DerCursor fields(signedPart.value);
    if (fields.nextIs(versionTag) && !fields.read())
        return false;
    const bool isStart = fields.read(der_tag::integer) && fields.read(der_tag::sequence);
    const DerItem issuer = fields.read(der_tag::sequence);
    const DerItem validity = fields.read(der_tag::sequence);
    const DerItem subject = fields.read(der_tag::sequence);
    const DerItem publicKey = fields.read(der_tag::sequence);
    bool areIdentifiersBits = true;
    while (!fields.atEnd() && !fields.nextIs(extensionsTag)) {
        const DerItem identifier = fields.read();
        if (!identifier)
            return false;
        areIdentifiersBits &= !identifier.value.empty() && identifier.value[0] < (identifier.value.size() > 1 ? 8 : 1);
    }
    const DerItem extensions = fields.read(extensionsTag);
    octets = {signedPart.octets, issuer.octets, subject.octets, publicKey.octets, extensions.value, areIdentifiersBits};
    return isStart && issuer && validity && subject;
}

/// The moment as a UTC time; invalid beyond the years that the calendar has.
CCryptoDateTime MovedBy(const CCryptoDateTime& time, std::int64_t seconds)
{
    constexpr std::int64_t millisecondsPerSecond = 1000;
    constexpr std::int64_t maxSeconds = 400'000'000'000; ///< more than 9999 years
    const std::optional<std::int64_t> milliseconds = time.toMilliseconds();
    if (!milliseconds || seconds > maxSeconds || seconds < -maxSeconds)
        return {};
    std::int64_t whole = *milliseconds / millisecondsPerSecond;
    std::int64_t rest = *milliseconds % millisecondsPerSecond;
    if (rest < 0) {
        rest += millisecondsPerSecond;
        --whole;
    }
    platform::CalendarTime fields;
    if (!platform::UnixSecondsToUtc(whole + seconds, fields))
        return {};
    fields.millisecond = static_cast<std::int32_t>(rest);
    return CCryptoDateTime(fields, true);
}

CCryptoString ShownTime(const CCryptoDateTime& time)
{
    return time.format("yyyy-MM-dd HH:mm:ssZ");
}

} // namespace

void CCrypto_X509_Certificate::clear()
{
    serialNumber_ = {};
    validFrom_ = {};
    validTo_ = {};
    subject_.clear();
    publicKeyInfo_ = {};
    publicKeyBits_ = {};
    publicKey_.reset();
    clearBase();
}

bool CCrypto_X509_Certificate::LoadCertificate(const element& der)
{
    CCryptoAutoLogger logger("CCrypto_X509_Certificate::LoadCertificate");
    element octets(der.data(), der.length()); // which may be a part of what is cleared
    clear();
    if (!decode(logger, std::move(octets)) || !readFields(logger)) {
        clear();
        return false;
    }
    failure_ = LoadFailure::none;
    return logger.setResult(true);
}

bool CCrypto_X509_Certificate::readFields(CCryptoAutoLogger& logger)
{
    const std::int32_t version = VersionOf(tree_.get());
    if (version != 1 && version != 3)
        return logger.fail(false, "Invalid version: %i", version);
    version_ = static_cast<std::uint32_t>(version);

    const elementNode* const quoted = ParsedTemplate(version == 3 ? version3CertificateTemplate : version1CertificateTemplate);
    const elementNode* const open = ParsedTemplate(version == 3 ? openVersion3Template : openVersion1Template);
    CCryptoTemplateMatch match;
    if (!match.Match(quoted, tree_.get()) && !match.Match(open, tree_.get()))
        return logger.fail(false, "Not a certificate: %s", match.failedStep().c_str());
    if (match.surplus() != nullptr || match.following() != nullptr)
        return logger.fail(false, "Data follows the last field");

    const element* const serialNumber = MinimalInteger(match.find("SERIAL_NUMBER")->node);
    if (serialNumber == nullptr)
        return logger.fail(false, "Invalid serial number");
    if (serialNumber->length() > maxSerialNumber)
        return logger.fail(false, "The serial number is longer than %u bytes", maxSerialNumber);
    serialNumber_ = Octets(*serialNumber);

    if (!signatureAlgorithm_.Parse(match.find("SIGNATURE_ALGORITHM")->node))
        return logger.fail(false, "Invalid signature algorithm");
    validTo_ = ReadX509Time(match.find("VALID_TO_TAG")->node);
    validFrom_ = ReadX509Time(match.find("VALID_FROM_TAG")->node);
    if (!validFrom_.isValid() || !validTo_.isValid())
        return logger.fail(false, "Invalid time");
    if (!readNames(logger, match))
        return false;
    if (!outerSignatureAlgorithm_.Parse(match.find("SIGNATURE_ALGORITHM_2")->node))
        return logger.fail(false, "Invalid signature algorithm");
    const elementNode* const value = match.find("SIGNATURE")->node;
    std::optional<element> signature = SignatureOctets(value != nullptr ? value->parent() : nullptr);
    if (!signature)
        return logger.fail(false, "Invalid signature");
    signature_ = std::move(*signature);

    const TemplateBinding* const key = match.find("PUBLIC_KEY");
    return readKey(logger, key != nullptr ? key->node : nullptr);
}

bool CCrypto_X509_Certificate::readNames(CCryptoAutoLogger& logger, const CCryptoTemplateMatch& match)
{
    const TemplateBinding& issuer = *match.find("ISSUER");
    const TemplateBinding& subject = *match.find("SUBJECT");
    const TemplateBinding* const extensions = match.find("EXTENSIONS");
    const TemplateBinding* const key = match.find("PUBLIC_KEY");

    CertificateOctets octets;
    element issuerOctets, subjectOctets, extensionsOctets;
    if (isDer_ && !FindOctets(der_.bytes(), octets))
        return logger.fail(false, "Loading failed!");
    if (isDer_) {
        signedOctets_ = octets.signedPart;
        publicKeyInfo_ = element(octets.publicKey.data(), static_cast<std::uint32_t>(octets.publicKey.size()));
    } else {
        // The octets have another form than the one that all that follows is about.
        publicKeyInfo_ = key != nullptr ? CCryptoParser::ToDer(key->node->clone().get()) : element();
        issuerOctets = OctetsOfList(issuer);
        subjectOctets = OctetsOfList(subject);
        extensionsOctets = extensions != nullptr ? OctetsOfList(*extensions) : element();
        octets.issuer = issuerOctets.bytes();
        octets.subject = subjectOctets.bytes();
        octets.extensions = extensionsOctets.bytes();
    }
    if (!octets.areIdentifiersBits)
        return logger.fail(false, "Invalid unique identifier");
    if (!issuer_.Refer(issuer.node, octets.issuer, true))
        return logger.fail(false, "Invalid issuer");
    if (!subject_.Refer(subject.node, octets.subject, true))
        return logger.fail(false, "Invalid subject");
    // Without a value there is no list (RFC 5280, 4.1).
    if (extensions != nullptr && (extensions->node == nullptr || !extensions_.Refer(extensions->node, octets.extensions, false)))
        return logger.fail(false, "Invalid extensions");
    return true;
}

bool CCrypto_X509_Certificate::readKey(CCryptoAutoLogger& logger, const elementNode* node)
{
    if (node == nullptr || node->type() != ElementType::sequence)
        return logger.fail(false, "Public key not found");
    const element* const bits = PublicKeyBits(*node);
    if (bits == nullptr)
        return logger.fail(false, "Key loading failed");
    publicKeyBits_ = Octets(*bits);
    publicKey_ = LoadPublicKeyInfo(publicKeyInfo_);
    if (publicKey_ != nullptr)
        return true;
    failure_ = LoadFailure::unsupportedKey;
    return logger.fail(false, "Key loading failed");
}

bool CCrypto_X509_Certificate::setVersion(std::uint32_t version)
{
    CCryptoAutoLogger logger("CCrypto_X509_Certificate::setVersion");
    if (version != 1 && version != 3)
        return logger.fail(false, "Invalid version: %u", version);
    changeFields();
    version_ = version;
    return logger.setResult(true);
}

void CCrypto_X509_Certificate::setSerialNumber(const element& magnitude)
{
    changeFields();
    serialNumber_ = IntegerOctets(magnitude);
}

void CCrypto_X509_Certificate::setValidity(const CCryptoDateTime& from, const CCryptoDateTime& to)
{
    changeFields();
    validFrom_ = from;
    validTo_ = to;
}

void CCrypto_X509_Certificate::setIssuer(CCrypto_X509_ValueList issuer)
{
    changeFields();
    issuer_ = std::move(issuer);
}

void CCrypto_X509_Certificate::setSubject(CCrypto_X509_ValueList subject)
{
    changeFields();
    subject_ = std::move(subject);
}

void CCrypto_X509_Certificate::setExtensions(CCrypto_X509_ValueList extensions)
{
    changeFields();
    extensions_ = std::move(extensions);
}

bool CCrypto_X509_Certificate::setPublicKey(std::shared_ptr<ICryptoKeyPair> key)
{
    CCryptoAutoLogger logger("CCrypto_X509_Certificate::setPublicKey");
    if (key == nullptr || !setPublicKeyInfo(key->publicKeyInfo()))
        return logger.fail(false, "Public key not found");
    publicKey_ = std::move(key);
    return logger.setResult(true);
}

bool CCrypto_X509_Certificate::setPublicKeyInfo(const element& info)
{
    CCryptoAutoLogger logger("CCrypto_X509_Certificate::setPublicKeyInfo");
    const ElementNodePtr tree = info.isEmpty() ? nullptr : CCryptoDERParser().Decode(info.bytes());
    const element* const bits = tree != nullptr ? PublicKeyBits(*tree) : nullptr;
    if (bits == nullptr)
        return logger.fail(false, "Public key not found");
    changeFields();
    publicKeyBits_ = Octets(*bits);
    publicKeyInfo_ = Octets(info);
    publicKey_.reset();
    return logger.setResult(true);
}

bool CCrypto_X509_Certificate::setSignatureAlgorithm(const element& identifier)
{
    changeFields();
    return signatureAlgorithm_.ParseDer(identifier) && outerSignatureAlgorithm_.ParseDer(identifier);
}

void CCrypto_X509_Certificate::setSignature(const element& signature)
{
    changeFields();
    signature_ = Octets(signature);
}

void CCrypto_X509_Certificate::changeFields()
{
    // The tree stays: lists that were read refer to it.
    der_ = {};
    signedOctets_ = {};
    isDer_ = false;
}

/// Fills the quoted template, or without extensions the one that can do without.
bool CCrypto_X509_Certificate::fillFields(CCryptoParser& parser) const
{
    const bool hasExtensions = !extensions_.isEmpty();
    const bool isVersion1 = version_ == 1 && !hasExtensions;
    const elementNode* const items = ParsedTemplate(isVersion1      ? openVersion1Template
                                                    : hasExtensions ? version3CertificateTemplate
                                                                    : openVersion3Template);
    parser.setRoot(items != nullptr ? items->clone(true) : nullptr);
    const auto fillOctets = [&parser](const char* name, const element& octets) {
        const ElementNodePtr tree = octets.isEmpty() ? nullptr : CCryptoDERParser().Decode(octets.bytes());
        return tree != nullptr && parser.fill_tree(name, tree.get());
    };
    const auto fillTime = [&parser](const char* tag, const char* name, const CCryptoDateTime& time) {
        const CCryptoString text = X509TimeText(time);
        return !text.isEmpty() && parser.fill_word(tag, X509TimeTypeWord(time)) && parser.fill(name, text.data());
    };
    const auto fillName = [&parser](const char* name, const CCrypto_X509_ValueList& list) {
        const ElementNodePtr values = list.BuildItems(true);
        return (values != nullptr || list.isEmpty()) && parser.fill_tree(name, values.get());
    };
    const ElementNodePtr extensions = extensions_.BuildItems(false);
    const element zero = element(std::uint32_t{0});
    element signature;
    signature.append(std::uint8_t{0});
    signature.append(signature_.view());
    return (isVersion1 || parser.fill("VERSION", element(std::uint32_t{2}))) &&
           parser.fill("SERIAL_NUMBER", serialNumber_.isEmpty() ? zero : serialNumber_) &&
           fillOctets("SIGNATURE_ALGORITHM", signatureAlgorithm_.readOctets()) &&
           fillOctets("SIGNATURE_ALGORITHM_2", outerSignatureAlgorithm_.readOctets()) && fillName("ISSUER", issuer_) &&
           fillTime("VALID_FROM_TAG", "VALID_FROM", validFrom_) && fillTime("VALID_TO_TAG", "VALID_TO", validTo_) &&
           fillName("SUBJECT", subject_) && fillOctets("PUBLIC_KEY", publicKeyInfo_) &&
           (!hasExtensions || (extensions != nullptr && parser.fill_tree("EXTENSIONS", extensions.get()))) &&
           parser.fill("SIGNATURE", signature);
}

element CCrypto_X509_Certificate::GetSignedPart() const
{
    CCryptoAutoLogger logger("CCrypto_X509_Certificate::GetSignedPart");
    if (!signedOctets_.empty()) {
        logger.setResult(true);
        return {signedOctets_.data(), static_cast<std::uint32_t>(signedOctets_.size())};
    }
    CCryptoParser parser;
    if (!fillFields(parser))
        return logger.fail(element(), "A field cannot be written");
    logger.setResult(true);
    return CCryptoParser::ToDer(parser.root()->content()->clone().get());
}

element CCrypto_X509_Certificate::GetCertificate() const
{
    CCryptoAutoLogger logger("CCrypto_X509_Certificate::GetCertificate");
    if (isLoaded()) {
        logger.setResult(true);
        return der_;
    }
    if (signature_.isEmpty())
        return logger.fail(element(), "There is no signature");
    if (serialNumber_.isEmpty())
        logger.WriteLog("CCrypto_X509_Certificate::GetCertificate(); WARNING: CSN is empty?");
    CCryptoParser parser;
    if (!fillFields(parser))
        return logger.fail(element(), "A field cannot be written");
    logger.setResult(true);
    return parser.ToDer();
}

bool CCrypto_X509_Certificate::isValidAt(const CCryptoDateTime& now, std::int64_t toleranceSeconds) const
{
    CCryptoAutoLogger logger("CCrypto_X509_Certificate::isValidAt");
    const CCryptoDateTime moment = MovedBy(now, toleranceSeconds);
    if (!validFrom_.isValid() || !validTo_.isValid() || !moment.isValid())
        return logger.fail(false, "Invalid time");
    if (validFrom_ > moment)
        return logger.fail(false, "Not valid yet: %s > %s", ShownTime(validFrom_).c_str(), ShownTime(moment).c_str());
    if (validTo_ < moment)
        return logger.fail(false, "Expired: %s < %s", ShownTime(validTo_).c_str(), ShownTime(moment).c_str());
    return logger.setResult(true);
}

namespace ccrypto {

CertificatePtr LoadCertificate(std::span<const std::uint8_t> der, LoadFailure* failure)
{
    auto certificate = std::make_shared<CCrypto_X509_Certificate>();
    const bool isTooLong = der.size() > UINT32_MAX;
    const bool isLoaded = !isTooLong && certificate->LoadCertificate(element(der.data(), static_cast<std::uint32_t>(der.size())));
    if (failure != nullptr)
        *failure = isTooLong ? LoadFailure::malformed : certificate->failure();
    return isLoaded ? certificate : nullptr;
}

} // namespace ccrypto
