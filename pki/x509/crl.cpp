#include "pki/x509/crl.h"

#include "asn1/der/der_cursor.h"
#include "asn1/template/template_cache.h"
#include "asn1/template/template_match.h"
#include "core/diagnostics/auto_logger.h"
#include "pki/x509/certificate_templates.h"
#include "pki/x509/der_tags.h"
#include "pki/x509/template_filling.h"
#include "pki/x509/x509_time.h"

#include <algorithm>
#include <utility>

using namespace ccrypto;

namespace {

/// For lists without a version or without extensions. In both templates VALID_FROM_TAG and VALID_TO_TAG become the type of a time
/// before a list is matched: as names they take any element, and where nextUpdate is absent the second would take the revoked
/// certificates.
constexpr const char* plainCrlTemplate =
    "SEQUENCE {SEQUENCE {INTEGER(OPTIONAL) { VERSION },SIGNATURE_ALGORITHM,SEQUENCE [CONSTRUCTED] { ISSUER },"
    "VALID_FROM_TAG { VALID_FROM },VALID_TO_TAG ( OPTIONAL ) { VALID_TO },SEQUENCE[CONSTRUCTED](OPTIONAL) { REVOKED }"
    "CONTEXT_SPECIFIC [ 0, CONSTRUCTED ](OPTIONAL) { SEQUENCE[CONSTRUCTED] { EXTENSIONS } }} SIGNATURE_ALGORITHM_2, "
    "BIT_STRING { SIGNATURE } }";

/// Where the parts of a list are in its octets.
struct ListParts {
    std::span<const std::uint8_t> signedOctets;
    std::span<const std::uint8_t> beforeEntries; ///< fields, up to nextUpdate
    DerItem thisUpdate;
    DerItem nextUpdate;                         ///< none when it is absent
    DerItem revoked;                            ///< none when it is absent
    std::span<const std::uint8_t> afterEntries; ///< fields
    DerItem outerAlgorithm;
    DerItem signature;
};

DerItem ReadTime(DerCursor& fields)
{
    return fields.nextIs(der_tag::utcTime) ? fields.read() : fields.read(der_tag::generalizedTime);
}

/// Looks only as closely as it takes to find the revoked certificates. \return none for octets in which that is not possible.
std::optional<ListParts> SplitList(std::span<const std::uint8_t> octets)
{
    const auto list = OnlyValue(octets, der_tag::sequence);
    if (!list)
        return std::nullopt;
    ListParts parts;
    DerCursor outer(*list);
    const DerItem signedPart = outer.read(der_tag::sequence);
    parts.signedOctets = signedPart.octets;
    parts.outerAlgorithm = outer.read(der_tag::sequence);
    parts.signature = outer.read(der_tag::bitString);
    if (!signedPart || !parts.outerAlgorithm || !parts.signature || !outer.atEnd())
        return std::nullopt;

    DerCursor fields(signedPart.value);
    if (fields.nextIs(der_tag::integer) && !fields.read())
        return std::nullopt;
    const bool hasNames = fields.read(der_tag::sequence) && fields.read(der_tag::sequence);
    parts.thisUpdate = ReadTime(fields);
    parts.nextUpdate = ReadTime(fields);
    if (!hasNames || !parts.thisUpdate)
        return std::nullopt;
    parts.beforeEntries = signedPart.value.first(signedPart.value.size() - fields.rest().size());
    if (fields.nextIs(der_tag::sequence)) {
        parts.revoked = fields.read();
        if (!parts.revoked)
            return std::nullopt;
    }
    parts.afterEntries = fields.rest();
    return parts;
}

/// The list without its revoked certificates, which are too many for a tree.
element FrameOf(const ListParts& parts)
{
    const auto append = [](element& target, std::span<const std::uint8_t> octets) {
        target.append(octets.data(), static_cast<std::uint32_t>(octets.size()));
    };
    element fields;
    append(fields, parts.beforeEntries);
    append(fields, parts.afterEntries);
    element items = SequenceOfItems(fields);
    append(items, parts.outerAlgorithm.octets);
    append(items, parts.signature.octets);
    return SequenceOfItems(items);
}

/// Puts the type of the time in place of the name, which stays optional. An absent time is any.
void FillTimeTag(CCryptoParser& parser, const char* name, const DerItem& time)
{
    const bool isGeneralized = time && time.identifier == der_tag::generalizedTime;
    parser.index_node(name)->token() = element(isGeneralized ? ElementType::generalizedType : ElementType::utcTime);
}

/// \return whether the tree is what the template says, and no more.
bool MatchList(const char* templateText, const elementNode* frame, const ListParts& parts, CCryptoParser& filled,
               CCryptoTemplateMatch& match)
{
    const elementNode* const items = ParsedTemplate(templateText);
    if (items == nullptr)
        return false;
    filled.setRoot(items->clone(true));
    FillTimeTag(filled, "VALID_FROM_TAG", parts.thisUpdate);
    FillTimeTag(filled, "VALID_TO_TAG", parts.nextUpdate);
    return match.Match(filled.root(), frame) && match.following() == nullptr && match.surplus() == nullptr &&
           match.find("REVOKED") == nullptr;
}

const elementNode* BoundTo(const CCryptoTemplateMatch& match, const char* name)
{
    const TemplateBinding* const binding = match.find(name);
    return binding != nullptr ? binding->node : nullptr;
}

} // namespace

void CCrypto_X509_CRL::clear()
{
    clearBase();
    thisUpdate_ = CCryptoDateTime();
    nextUpdate_ = CCryptoDateTime();
    entries_.clear();
    rewritten_ = {};
}

bool CCrypto_X509_CRL::LoadCRL(element der)
{
    CCryptoAutoLogger logger("CCrypto_X509_CRL::LoadCRL");
    clear();
    failure_ = LoadFailure::malformed;
    if (der.isEmpty())
        return logger.fail(false, "value is empty");
    der_ = std::move(der);
    isDer_ = readDer(der_.bytes());
    if (!isDer_ && !readOtherThanDer()) {
        clear();
        return logger.setResult(false);
    }
    failure_ = LoadFailure::none;
    return logger.setResult(true);
}

/// Reads a list that is DER, but for what is inside its extensions, to the last octet.
bool CCrypto_X509_CRL::readDer(std::span<const std::uint8_t> octets)
{
    CCryptoAutoLogger logger("CCrypto_X509_CRL::readDer");
    const std::optional<ListParts> parts = SplitList(octets);
    if (!parts)
        return logger.fail(false, "Not the structure of a list");
    CCryptoParser frame;
    if (!frame.Load_DER_Memory(FrameOf(*parts)) || !frame.isDer())
        return logger.fail(false, "Not DER");
    CCryptoParser filled;
    CCryptoTemplateMatch match;
    if (!MatchList(revocationListTemplate, frame.root(), *parts, filled, match) &&
        !MatchList(plainCrlTemplate, frame.root(), *parts, filled, match))
        return logger.fail(false, "Not the structure of a list");
    if (!readFields(match))
        return logger.setResult(false);

    thisUpdate_ = ReadX509Time(parts->thisUpdate);
    nextUpdate_ = parts->nextUpdate ? ReadX509Time(parts->nextUpdate) : CCryptoDateTime();
    if (!thisUpdate_.isValid() || (parts->nextUpdate && !nextUpdate_.isValid()))
        return logger.fail(false, "A time of the list is malformed");
    // With unused bits it is kept empty, as that of a certificate: no key verifies it, but the list can be shown.
    const std::span<const std::uint8_t> bits = parts->signature.value;
    if (bits.size() < 2 || bits.front() > 7)
        return logger.fail(false, "Invalid signature");
    signature_ = bits.front() == 0 ? OctetsOfSpan(bits.subspan(1)) : element();
    signedOctets_ = parts->signedOctets;
    return logger.setResult(entries_.Read(parts->revoked.value, maxEntries));
}

bool CCrypto_X509_CRL::readFields(const CCryptoTemplateMatch& match)
{
    CCryptoAutoLogger logger("CCrypto_X509_CRL::readFields");
    const elementNode* const version = BoundTo(match, "VERSION");
    const bool isOneOctet = version != nullptr && version->token().length() == 1 && version->token()[0] < 0x80;
    version_ = version == nullptr ? 1 : isOneOctet ? version->token()[0] + 1u : 0;
    if (version != nullptr && version_ != 2)
        return logger.fail(false, "Invalid version: %i", static_cast<int>(version_));
    const TemplateBinding* const extensions = match.find("EXTENSIONS");
    if (extensions != nullptr && extensions->node == nullptr)
        return logger.fail(false, "Invalid extensions");
    const bool isRead = signatureAlgorithm_.Parse(BoundTo(match, "SIGNATURE_ALGORITHM")) &&
                        issuer_.Parse(BoundTo(match, "ISSUER"), true) && extensions_.Parse(BoundTo(match, "EXTENSIONS"), false) &&
                        outerSignatureAlgorithm_.Parse(BoundTo(match, "SIGNATURE_ALGORITHM_2"));
    return logger.setResult(isRead);
}

/// Lists that are not DER can be shown, but not verified: what was signed is not what is understood.
bool CCrypto_X509_CRL::readOtherThanDer()
{
    CCryptoAutoLogger logger("CCrypto_X509_CRL::readOtherThanDer");
    if (der_.length() > maxNotDer)
        return logger.fail(false, "Not a list in DER, and longer than the %u bytes that are read in another form", maxNotDer);
    CCryptoParser tree;
    if (!tree.Load_DER_Memory(der_))
        return logger.fail(false, "Loading failed!");
    // The reason is the one that reading it as DER gave.
    if (tree.isDer())
        return logger.setResult(false);
    rewritten_ = tree.ToDer();
    const bool isRead = readDer(rewritten_.bytes());
    signedOctets_ = {};
    return logger.setResult(isRead);
}
