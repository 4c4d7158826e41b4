#include "pki/x509/certificate_request.h"

#include "asn1/der/der_cursor.h"
#include "asn1/der/der_parser.h"
#include "asn1/template/template_cache.h"
#include "core/diagnostics/auto_logger.h"
#include "pki/keys/key_encoding.h"
#include "pki/x509/der_tags.h"
#include "pki/x509/field_reading.h"

#include <optional>
#include <utility>

using namespace ccrypto;

namespace {

// Attributes are always there (RFC 2986, 4.1), but some writers leave out an empty set.
constexpr const char* requestTemplate =
    "SEQUENCE {SEQUENCE {INTEGER { VERSION },SEQUENCE[CONSTRUCTED] { SUBJECT },PUBLIC_KEY,"
    "CONTEXT_SPECIFIC[0,CONSTRUCTED](OPTIONAL) { ATTRIBUTES }} SIGNATURE_ALGORITHM, BIT_STRING { SIGNATURE } }";
constexpr const char* builtInfoTemplate = "SEQUENCE {INTEGER = 0,SEQUENCE[CONSTRUCTED] { SUBJECT },PUBLIC_KEY,"
                                          "CONTEXT_SPECIFIC[0,CONSTRUCTED] { ATTRIBUTES }}";
constexpr const char* builtRequestTemplate = "SEQUENCE {INFO,SIGNATURE_ALGORITHM,BIT_STRING { SIGNATURE } }";
constexpr const char* attributeTemplateOfRequest = "SEQUENCE{ OBJECT_IDENTIFIER = oid, SET[CONSTRUCTED] { values } }";
constexpr const char* extensionRequestTemplate =
    "SEQUENCE{OBJECT_IDENTIFIER = \"1.2.840.113549.1.9.14\",SET{SEQUENCE[CONSTRUCTED] { EXTENSIONS }}}";

const Oid& ExtensionRequest()
{
    static const Oid oid = Oid::FromDotted("1.2.840.113549.1.9.14");
    return oid;
}

bool FillDecoded(CCryptoParser& parser, const char* name, const element& octets)
{
    const ElementNodePtr tree = octets.isEmpty() ? nullptr : CCryptoDERParser().Decode(octets.bytes());
    return tree != nullptr && parser.fill_tree(name, tree.get());
}

CCryptoParser FreshTemplate(const char* text)
{
    const elementNode* const items = ParsedTemplate(text);
    return CCryptoParser(items != nullptr ? items->clone(true) : nullptr);
}

/// CertificationRequestInfo (RFC 2986, 4.1); empty when a part cannot be written.
element BuildInfo(const ICryptoKeyPair& key, const CCrypto_X509_ValueList& subject, const CCrypto_X509_ValueList& extensions)
{
    CCryptoParser parser = FreshTemplate(builtInfoTemplate);
    const ElementNodePtr name = subject.BuildItems(true);
    if ((name == nullptr && !subject.isEmpty()) || !parser.fill_tree("SUBJECT", name.get()) ||
        !FillDecoded(parser, "PUBLIC_KEY", key.publicKeyInfo()))
        return {};
    if (!extensions.isEmpty()) {
        CCryptoParser attribute = FreshTemplate(extensionRequestTemplate);
        const ElementNodePtr values = extensions.BuildItems(false);
        if (values == nullptr || !attribute.fill_tree("EXTENSIONS", values.get()) ||
            !parser.fill_tree("ATTRIBUTES", attribute.root()))
            return {};
    }
    return parser.ToDer();
}

} // namespace

void CCryptoCertificateRequest::clear()
{
    subject_.clear();
    publicKeyInfo_ = {};
    publicKeyBits_ = {};
    publicKey_.reset();
    attributes_.clear();
    clearBase();
}

bool CCryptoCertificateRequest::LoadRequest(const element& der)
{
    CCryptoAutoLogger logger("CCryptoCertificateRequest::LoadRequest");
    element octets(der.data(), der.length()); // which may be a part of what is cleared
    clear();
    if (!decode(logger, std::move(octets)) || !readFields(logger)) {
        clear();
        return false;
    }
    failure_ = LoadFailure::none;
    return logger.setResult(true);
}

bool CCryptoCertificateRequest::readFields(CCryptoAutoLogger& logger)
{
    CCryptoTemplateMatch match;
    if (!match.Match(ParsedTemplate(requestTemplate), tree_.get()))
        return logger.fail(false, "Not a certification request: %s", match.failedStep().c_str());
    if (match.surplus() != nullptr || match.following() != nullptr)
        return logger.fail(false, "Data follows the last field");
    const element* const version = MinimalInteger(match.find("VERSION")->node);
    if (version == nullptr || version->exactInt() != 0)
        return logger.fail(false, "The version of the request is not 1");
    version_ = 1;

    if (isDer_) {
        const auto request = OnlyValue(der_.bytes(), der_tag::sequence);
        signedOctets_ = request ? DerCursor(*request).read(der_tag::sequence).octets : std::span<const std::uint8_t>();
    }
    const TemplateBinding& subject = *match.find("SUBJECT");
    const element subjectOctets = OctetsOfList(subject);
    if (!subject_.Refer(subject.node, subjectOctets.bytes(), true))
        return logger.fail(false, "Invalid subject");
    const elementNode* const algorithm = match.find("SIGNATURE_ALGORITHM")->node;
    if (!signatureAlgorithm_.Parse(algorithm) || !outerSignatureAlgorithm_.Parse(algorithm))
        return logger.fail(false, "Invalid signature algorithm");
    const elementNode* const value = match.find("SIGNATURE")->node;
    std::optional<element> signature = SignatureOctets(value != nullptr ? value->parent() : nullptr);
    if (!signature)
        return logger.fail(false, "Invalid signature");
    signature_ = std::move(*signature);
    const TemplateBinding* const attributes = match.find("ATTRIBUTES");
    return (attributes == nullptr || readAttributes(logger, attributes->node)) && readKey(logger, match.find("PUBLIC_KEY")->node);
}

bool CCryptoCertificateRequest::readKey(CCryptoAutoLogger& logger, const elementNode* node)
{
    const element* const bits = PublicKeyBits(*node);
    if (bits == nullptr)
        return logger.fail(false, "Key loading failed");
    publicKeyBits_ = Octets(*bits);
    publicKeyInfo_ = CCryptoParser::ToDer(node->clone().get());
    publicKey_ = LoadPublicKeyInfo(publicKeyInfo_);
    if (publicKey_ != nullptr)
        return true;
    failure_ = LoadFailure::unsupportedKey;
    return logger.fail(false, "Key loading failed");
}

bool CCryptoCertificateRequest::readAttributes(CCryptoAutoLogger& logger, const elementNode* first)
{
    bool hasExtensions = false;
    for (const elementNode* node = first; node != nullptr; node = node->next()) {
        CCryptoTemplateMatch match;
        if (!match.Match(ParsedTemplate(attributeTemplateOfRequest), node) || match.surplus() != nullptr ||
            match.find("values")->node == nullptr)
            return logger.fail(false, "Invalid attribute");
        if (attributes_.size() >= CCrypto_X509_ValueList::maxValues)
            return logger.fail(false, "There are more than %u values", CCrypto_X509_ValueList::maxValues);
        attributes_.push_back(Oid::OfNode(node->content()));
        if (!IsIdentifierContent(attributes_.back().octets()))
            return logger.fail(false, "Invalid attribute");
        if (!(attributes_.back() == ExtensionRequest()))
            continue;
        if (std::exchange(hasExtensions, true) || !readExtensions(match.find("values")->node))
            return logger.fail(false, "Invalid extensions");
    }
    return true;
}

/// \param set the one Extensions that the attribute has.
bool CCryptoCertificateRequest::readExtensions(const elementNode* set)
{
    if (set->next() != nullptr || set->type() != ElementType::sequence || set->content() == nullptr)
        return false;
    const element octets = CCryptoParser::ToDer(set);
    return extensions_.Refer(set->content(), octets.bytes(), false);
}

SignatureResult CCryptoCertificateRequest::verifySignature() const
{
    CCryptoAutoLogger logger("CCryptoCertificateRequest::verifySignature");
    if (publicKey_ == nullptr)
        return logger.fail(SignatureResult::bad, "Public key not found");
    const SignatureResult result = CCrypto_X509_Base::verifySignature(*publicKey_);
    logger.setResult(result == SignatureResult::good);
    return result;
}

element CCryptoCertificateRequest::BuildRequest(ICryptoKeyPair& key, algorithm::Id hash, const CCrypto_X509_ValueList& subject,
                                                const CCrypto_X509_ValueList& extensions)
{
    CCryptoAutoLogger logger("CCryptoCertificateRequest::BuildRequest");
    const element info = BuildInfo(key, subject, extensions);
    if (info.isEmpty())
        return logger.fail(element(), "A value cannot be written");
    const element signature = SignOctets(key, hash, info.bytes());
    if (signature.isEmpty())
        return logger.fail(element());
    element bits;
    bits.append(std::uint8_t{0});
    bits.append(signature.view());
    CCryptoParser parser = FreshTemplate(builtRequestTemplate);
    if (!FillDecoded(parser, "INFO", info) || !FillDecoded(parser, "SIGNATURE_ALGORITHM", SignatureAlgorithmFor(key, hash)) ||
        !parser.fill("SIGNATURE", bits))
        return logger.fail(element(), "A value cannot be written");
    logger.setResult(true);
    return parser.ToDer();
}
