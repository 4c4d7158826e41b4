#include "pki/ocsp/cert_status.h"

#include "asn1/template/template_cache.h"
#include "asn1/template/template_match.h"
#include "asn1/tree/node_parts.h"
#include "core/diagnostics/auto_logger.h"

using namespace ccrypto;

namespace {

/// The choice as three optional alternatives. It reads good, and revoked with a reason. It does not write them: its NULL is a
/// constant, so A0 02 05 00 would be in every status, and that is not the implicit NULL of the standard, 80 00, which others
/// demand.
constexpr const char* certStatusTemplate =
    "CONTEXT_SPECIFIC(OPTIONAL)[0]{NULL},CONTEXT_SPECIFIC(OPTIONAL)[1,CONSTRUCTED]{SEQUENCE[CONSTRUCTED,EXCLUDE]{revocationTime,"
    "CONTEXT_SPECIFIC[0,CONSTRUCTED]{ENUMERATED=revocationReason}}},CONTEXT_SPECIFIC(OPTIONAL)[2,CONSTRUCTED]{unknownInfo}";
/// What that does not read: a revocation without a reason, which is optional in the standard, and unknown as an implicit NULL,
/// 82 00.
constexpr const char* otherCertStatusTemplate =
    "CONTEXT_SPECIFIC(OPTIONAL)[1,CONSTRUCTED]{revocationTime},CONTEXT_SPECIFIC(OPTIONAL)[2]{unknownInfo(OPTIONAL)}";

// What is written, one for each alternative.
constexpr const char* goodTemplate = "CONTEXT_SPECIFIC[0,PRIMITIVE]";
constexpr const char* revokedTemplate =
    "CONTEXT_SPECIFIC[1,CONSTRUCTED]{revocationTime,CONTEXT_SPECIFIC(OPTIONAL)[0,CONSTRUCTED]{ENUMERATED=revocationReason}}";
constexpr const char* unknownTemplate = "CONTEXT_SPECIFIC[2,PRIMITIVE]";

/// The element itself is the whole data, so that every alternative reaches ParseNode.
constexpr const char* anyElementTemplate = "certStatus";

enum Tag : std::uint32_t { goodTag = 0, revokedTag = 1, unknownTag = 2 };

/// The largest ENUMERATED of one octet. Numbers without a name are read: whatever the reason is, the certificate is revoked.
constexpr std::uint8_t maxReason = 0x7F;

/// Whether a tag holds nothing, as an implicit NULL, or a NULL of its own.
bool HoldsNull(const elementNode& tagged)
{
    const elementNode* const value = tagged.value();
    if (value == nullptr)
        return !HasBracket(tagged, ElementType::constructed);
    return value->type() == ElementType::asn1Null && value->next() == nullptr && value->value() == nullptr;
}

} // namespace

namespace CCryptoOCSP {

CCertStatus::CCertStatus() : CStructure(anyElementTemplate) {}

CCertStatus::CCertStatus(const elementNode* node) : CCertStatus()
{
    construct(node);
}

void CCertStatus::ClearFields()
{
    kind = Kind::none;
    revocationTime = {};
    revocationReason.reset();
}

bool CCertStatus::ParseNode()
{
    CCryptoAutoLogger logger("CCryptoOCSP::CCertStatus::ParseNode");
    CCryptoTemplateMatch match;
    const bool matches =
        match.Match(ParsedTemplate(certStatusTemplate), data()) || match.Match(ParsedTemplate(otherCertStatusTemplate), data());
    if (!matches || match.surplus() != nullptr)
        return logger.fail(false, "The status is not one of good, revoked and unknown");
    switch (BracketNumber(*data())->toWord32()) {
    case goodTag:
        kind = Kind::good;
        return HoldsNull(*data()) ? logger.setResult(true) : logger.fail(false, "Good is not NULL");
    case revokedTag:
        kind = Kind::revoked;
        return readRevoked(match) ? logger.setResult(true)
                                  : logger.fail(false, "The time or reason of the revocation is malformed");
    default:
        kind = Kind::unknown;
        return HoldsNull(*data()) ? logger.setResult(true) : logger.fail(false, "Unknown is not NULL");
    }
}

bool CCertStatus::readRevoked(const CCryptoTemplateMatch& match)
{
    const elementNode* const time = match.find("revocationTime")->node;
    revocationTime = internal::ReadOcspTime(time);
    const TemplateBinding* const reason = match.find("revocationReason");
    if (reason == nullptr)
        return revocationTime.isValid() && time->next() == nullptr;
    if (reason->node == nullptr || reason->node->token().length() != 1 || reason->node->token()[0] > maxReason)
        return false;
    revocationReason = static_cast<RevocationReason>(reason->node->token()[0]);
    return revocationTime.isValid();
}

bool CCertStatus::setTemplate(const char* text)
{
    const elementNode* const items = ParsedTemplate(text);
    builder().setRoot(items != nullptr ? items->clone(true) : nullptr);
    return items != nullptr;
}

bool CCertStatus::SetTemplateValues()
{
    CCryptoAutoLogger logger("CCryptoOCSP::CCertStatus::SetTemplateValues");
    if (kind != Kind::revoked && (revocationTime.isValid() || revocationReason.has_value()))
        return logger.fail(false, "More than one alternative is given");
    switch (kind) {
    case Kind::good:
        return logger.setResult(setTemplate(goodTemplate));
    case Kind::unknown:
        return logger.setResult(setTemplate(unknownTemplate));
    case Kind::revoked:
        break;
    default:
        return logger.fail(false, "No alternative is given");
    }
    if (revocationReason && static_cast<std::uint8_t>(*revocationReason) > maxReason)
        return logger.fail(false, "The reason of the revocation cannot be written");
    if (!setTemplate(revokedTemplate) || !fillTime("revocationTime", revocationTime))
        return logger.fail(false, "The time of the revocation cannot be written");
    return logger.setResult(!revocationReason.has_value() ||
                            builder().fill("revocationReason", element(static_cast<std::uint32_t>(*revocationReason))));
}

} // namespace CCryptoOCSP
