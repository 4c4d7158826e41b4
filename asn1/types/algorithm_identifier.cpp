#include "asn1/types/algorithm_identifier.h"

#include "asn1/types/algorithm_table.h"
#include "core/diagnostics/auto_logger.h"

namespace {

constexpr const char* algorithmIdentifierTemplate = "SEQUENCE { OBJECT_IDENTIFIER = algorithmOID, parameters(OPTIONAL) }";
constexpr const char* bareOidTemplate = "OBJECT_IDENTIFIER[EXCLUDE]=oid";

/// A message at the end of an operation has room for about a thousand bytes.
constexpr std::uint32_t longestShownOid = 900;

} // namespace

CCryptoAlgorithmIdentifier::CCryptoAlgorithmIdentifier() : CCryptoASN1Object(algorithmIdentifierTemplate) {}

CCryptoAlgorithmIdentifier::CCryptoAlgorithmIdentifier(const elementNode* node) : CCryptoAlgorithmIdentifier()
{
    construct(node);
}

CCryptoAlgorithmIdentifier::CCryptoAlgorithmIdentifier(std::uint32_t id, bool nullParameters) : CCryptoAlgorithmIdentifier()
{
    id_ = id;
    nullParameters_ = nullParameters;
}

void CCryptoAlgorithmIdentifier::setParameters(const elementNode* parameters)
{
    parameters_ = parameters != nullptr ? parameters->clone() : nullptr;
}

bool CCryptoAlgorithmIdentifier::ParseNode()
{
    CCryptoAutoLogger logger("CCryptoAlgorithmIdentifier::ParseNode");
    const CCryptoString oid = findText("algorithmOID");
    id_ = AlgorithmOfOid(oid.view());
    if (id_ == algorithm::none) {
        const bool isCut = oid.length() > longestShownOid;
        const CCryptoString shown(oid.view().substr(0, longestShownOid));
        return logger.fail(false, "Unsupported OID: %s%s", shown.c_str(), isCut ? "..." : "");
    }
    if (isBound("parameters")) {
        setParameters(find("parameters"));
        nullParameters_ = true;
    }
    return logger.setResult(true);
}

void CCryptoAlgorithmIdentifier::ClearFields()
{
    id_ = algorithm::none;
    nullParameters_ = false;
    parameters_.reset();
}

bool CCryptoAlgorithmIdentifier::BuildNode()
{
    CCryptoAutoLogger logger("CCryptoAlgorithmIdentifier::BuildNode", ccrypto::LoggerMode::quiet);
    if (id_ == algorithm::none)
        return logger.fail(false, "There is no algorithm");
    if (*OidOfAlgorithm(id_) == '\0')
        logger.warn(false, "Algorithm %u has no OID", id_);
    else
        logger.setResult(true);
    if (!builder().fill("algorithmOID", element(OidOfAlgorithm(id_))))
        return false;
    if (!nullParameters_ || parameters_ != nullptr)
        return builder().fill_tree("parameters", parameters_.get());
    return builder().fill_word("parameters", "NULL");
}

element CCryptoAlgorithmIdentifier::GetDerEncodedOID() const
{
    CCryptoAutoLogger logger("CCryptoAlgorithmIdentifier::GetDerEncodedOID", ccrypto::LoggerMode::quiet);
    if (*OidOfAlgorithm(id_) == '\0')
        return logger.fail(element(), "Algorithm %u has no OID", id_);
    CCryptoParser parser;
    const bool filled = parser.Load_ASCII_Memory(bareOidTemplate) && parser.fill("oid", element(OidOfAlgorithm(id_)));
    return logger.setResult(filled) ? parser.ToDer() : element();
}
