#include "asn1/types/algorithm_identifier.h"

#include "asn1/types/algorithm_table.h"
#include "core/diagnostics/auto_logger.h"

using namespace ccrypto;

namespace {

constexpr const char* algorithmIdentifierTemplate = "SEQUENCE { OBJECT_IDENTIFIER = algorithmOID, parameters(OPTIONAL) }";
constexpr const char* bareOidTemplate = "OBJECT_IDENTIFIER[EXCLUDE]=oid";

/// A message at the end of an operation holds about a thousand bytes.
constexpr std::uint32_t maxShownOid = 900;

CCryptoString ShownOid(const CCryptoString& oid)
{
    return oid.length() <= maxShownOid ? oid : CCryptoString(oid.view().substr(0, maxShownOid)) + "...";
}

} // namespace

CCryptoAlgorithmIdentifier::CCryptoAlgorithmIdentifier() : CCryptoASN1Object(algorithmIdentifierTemplate) {}

CCryptoAlgorithmIdentifier::CCryptoAlgorithmIdentifier(const elementNode* node) : CCryptoAlgorithmIdentifier()
{
    construct(node);
}

CCryptoAlgorithmIdentifier::CCryptoAlgorithmIdentifier(algorithm::Id id, bool nullParameters) : CCryptoAlgorithmIdentifier()
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
    if (isBound("parameters")) {
        setParameters(find("parameters"));
        nullParameters_ = true;
    }
    if (isSupported())
        return logger.setResult(true);
    unsupportedOid_ = oid;
    const CCryptoString shown = ShownOid(oid);
    return logger.warn(true, "Unsupported OID: %s", shown.c_str());
}

CCryptoString CCryptoAlgorithmIdentifier::oid() const
{
    return isSupported() ? CCryptoString(OidOfAlgorithm(id_)) : unsupportedOid_;
}

void CCryptoAlgorithmIdentifier::ClearFields()
{
    id_ = algorithm::none;
    unsupportedOid_ = {};
    nullParameters_ = false;
    parameters_.reset();
}

bool CCryptoAlgorithmIdentifier::BuildNode()
{
    CCryptoAutoLogger logger("CCryptoAlgorithmIdentifier::BuildNode");

    if (id_ == algorithm::none)
        return unsupportedOid_.isEmpty() ? logger.fail(false, "There is no algorithm")
                                         : logger.fail(false, "Algorithm %s is not supported", ShownOid(unsupportedOid_).c_str());
    const bool hasOid = *OidOfAlgorithm(id_) != '\0';
    const bool isNull = nullParameters_ && parameters_ == nullptr;
    const bool filled = builder().fill("algorithmOID", element(OidOfAlgorithm(id_))) &&
                        (isNull ? builder().fill_word("parameters", "NULL") : builder().fill_tree("parameters", parameters_.get()));
    return hasOid ? logger.setResult(filled) : logger.warn(filled, "Algorithm %u has no OID", id_);
}

element CCryptoAlgorithmIdentifier::GetDerEncodedOID() const
{
    CCryptoAutoLogger logger("CCryptoAlgorithmIdentifier::GetDerEncodedOID");

    if (*OidOfAlgorithm(id_) == '\0')
        return logger.fail(element(), "Algorithm %u has no OID", id_);
    CCryptoParser parser;
    const bool filled = parser.Load_ASCII_Memory(bareOidTemplate) && parser.fill("oid", element(OidOfAlgorithm(id_)));
    return logger.setResult(filled) ? parser.ToDer() : element();
}
