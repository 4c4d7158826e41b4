#include "asn1/algorithm_identifier.h"

#include "core/auto_logger.h"

namespace {

constexpr const char* algorithmIdentifierTemplate = "SEQUENCE { OBJECT_IDENTIFIER = algorithmOID, parameters(OPTIONAL) }";
constexpr const char* bareOidTemplate = "OBJECT_IDENTIFIER[EXCLUDE]=oid";

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
    nullParameters_ = false;
    parameters_.reset();
    if (id_ == algorithm::none)
        return logger.setRetValue(3, false, "Unsupported OID: %s", oid.c_str());
    if (isBound("parameters")) {
        setParameters(find("parameters"));
        nullParameters_ = true;
    }
    return logger.setResult(true);
}

bool CCryptoAlgorithmIdentifier::BuildNode()
{
    if (id_ == algorithm::none)
        return false;
    if (!builder().fill("algorithmOID", element(OidOfAlgorithm(id_))))
        return false;
    if (!nullParameters_ || parameters_ != nullptr)
        return builder().fill_tree("parameters", parameters_.get());
    return builder().fill_word("parameters", "NULL");
}

element CCryptoAlgorithmIdentifier::GetDerEncodedOID() const
{
    CCryptoParser parser;
    if (id_ == algorithm::none || !parser.Load_ASCII_Memory(bareOidTemplate) || !parser.fill("oid", element(OidOfAlgorithm(id_))))
        return {};
    return parser.ToDer();
}
