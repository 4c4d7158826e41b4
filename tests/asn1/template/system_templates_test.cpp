#include "asn1/der/der_parser.h"
#include "asn1/template/template_cache.h"
#include "asn1/template/template_match.h"
#include "core/text/hex.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

using namespace ccrypto;

// The templates of the system's own structures on what another program made of the same standards (tests/data/asn1/make-fixtures).

namespace {

constexpr const char* certificate3Template =
    "SEQUENCE {SEQUENCE {CONTEXT_SPECIFIC[0] { INTEGER { VERSION } },INTEGER { SERIAL_NUMBER },SIGNATURE_ALGORITHM,"
    "SEQUENCE[CONSTRUCTED] { ISSUER },SEQUENCE { VALID_FROM_TAG { VALID_FROM }, VALID_TO_TAG { VALID_TO } },"
    "SEQUENCE[CONSTRUCTED] { SUBJECT },PUBLIC_KEY,CONTEXT_SPECIFIC[3,CONSTRUCTED] { SEQUENCE[CONSTRUCTED] { EXTENSIONS } }} "
    "SIGNATURE_ALGORITHM_2, BIT_STRING { SIGNATURE } }";
constexpr const char* certificate1Template =
    "SEQUENCE {SEQUENCE {INTEGER { SERIAL_NUMBER },SIGNATURE_ALGORITHM,SEQUENCE[CONSTRUCTED] { ISSUER },"
    "SEQUENCE { VALID_FROM_TAG { VALID_FROM }, VALID_TO_TAG { VALID_TO } },SEQUENCE[CONSTRUCTED] { SUBJECT },PUBLIC_KEY,"
    "CONTEXT_SPECIFIC[3,CONSTRUCTED]{ SEQUENCE[CONSTRUCTED] { EXTENSIONS } }} SIGNATURE_ALGORITHM_2, BIT_STRING { SIGNATURE } }";
constexpr const char* revocationListTemplate =
    "SEQUENCE {SEQUENCE {INTEGER { VERSION },SIGNATURE_ALGORITHM,SEQUENCE [CONSTRUCTED] { ISSUER },VALID_FROM_TAG { VALID_FROM },"
    "VALID_TO_TAG ( OPTIONAL ) { VALID_TO },SEQUENCE[CONSTRUCTED](OPTIONAL) { REVOKED }CONTEXT_SPECIFIC [ 0, CONSTRUCTED ] "
    "{ SEQUENCE[CONSTRUCTED] { EXTENSIONS } }} SIGNATURE_ALGORITHM_2, BIT_STRING { SIGNATURE } }";
constexpr const char* extensionTemplate = "SEQUENCE{ OBJECT_IDENTIFIER = oid, BOOLEAN(OPTIONAL) = mandatory, value }";

constexpr const char* certIdTemplate =
    "SEQUENCE[CONSTRUCTED] { hashAlgorithm,OCTET_STRING=issuerNameHash,OCTET_STRING=issuerKeyHash,"
    "INTEGER=serialNumber }";
constexpr const char* requestTemplate = "SEQUENCE[CONSTRUCTED] { CertID, CONTEXT_SPECIFIC(OPTIONAL)[0] { Extensions } }";
constexpr const char* tbsRequestTemplate =
    "SEQUENCE[CONSTRUCTED]{ CONTEXT_SPECIFIC(OPTIONAL)[0] { version },CONTEXT_SPECIFIC(OPTIONAL)[1,CONSTRUCTED] { requestorName },"
    "SEQUENCE[CONSTRUCTED] { requestList },CONTEXT_SPECIFIC(OPTIONAL)[2,CONSTRUCTED]{Extensions}}";
constexpr const char* ocspRequestTemplate = "SEQUENCE[CONSTRUCTED]{TBSRequest, Signature(OPTIONAL) }";
constexpr const char* certStatusTemplate =
    "CONTEXT_SPECIFIC(OPTIONAL)[0]{NULL},CONTEXT_SPECIFIC(OPTIONAL)[1,CONSTRUCTED]{SEQUENCE[CONSTRUCTED,EXCLUDE]{revocationTime,"
    "CONTEXT_SPECIFIC[0,CONSTRUCTED]{ENUMERATED=revocationReason}}},CONTEXT_SPECIFIC(OPTIONAL)[2,CONSTRUCTED]{unknownInfo}";
constexpr const char* singleResponseTemplate =
    "SEQUENCE[CONSTRUCTED]{certID,certStatus,thisUpdate,CONTEXT_SPECIFIC(OPTIONAL)[0,CONSTRUCTED]{nextUpdate},"
    "CONTEXT_SPECIFIC(OPTIONAL)[1,CONSTRUCTED]{singleExtensions}}";
constexpr const char* responseDataTemplate =
    "SEQUENCE {CONTEXT_SPECIFIC(OPTIONAL)[0] { version },CONTEXT_SPECIFIC(OPTIONAL)[1,CONSTRUCTED] { responderName },"
    "CONTEXT_SPECIFIC(OPTIONAL)[2,CONSTRUCTED] { OCTET_STRING { responderKeyHash } },producedAt,SEQUENCE[CONSTRUCTED] { responses }"
    "CONTEXT_SPECIFIC(OPTIONAL)[1,CONSTRUCTED] { Extensions },}";
constexpr const char* basicResponseTemplate = "SEQUENCE[CONSTRUCTED] {tbsResponseData,signatureAlgorithm,signature,"
                                              "CONTEXT_SPECIFIC(OPTIONAL)[0,CONSTRUCTED] { SEQUENCE[CONSTRUCTED]{ certs } }}";
constexpr const char* responseBytesTemplate = "SEQUENCE{OBJECT_IDENTIFIER{responseType},OCTET_STRING{response}}";
constexpr const char* ocspResponseTemplate =
    "SEQUENCE[CONSTRUCTED]{ENUMERATED{responseStatus},CONTEXT_SPECIFIC(OPTIONAL)[0,CONSTRUCTED]{responseBytes} }";

constexpr const char* contentInfoTemplate =
    "SEQUENCE { OBJECT_IDENTIFIER=contentOID, CONTEXT_SPECIFIC(OPTIONAL)[0,EXPLICIT]=content }";
constexpr const char* signedDataTemplate =
    "SEQUENCE {INTEGER = version,SET[CONSTRUCTED]{ digestAlgorithms },contentInfo,CONTEXT_SPECIFIC[0,CONSTRUCTED](OPTIONAL) "
    "{ certificates },CONTEXT_SPECIFIC[1,CONSTRUCTED](OPTIONAL) { crls },SET[CONSTRUCTED] { signerInfos } }";
constexpr const char* signerInfoTemplate =
    "SEQUENCE {INTEGER = version;signerIdentifier,digestAlgorithm,CONTEXT_SPECIFIC[0, CONSTRUCTED](OPTIONAL)"
    "{authenticatedAttributes}signatureAlgorithm,OCTET_STRING { signature }CONTEXT_SPECIFIC[1, CONSTRUCTED](OPTIONAL)"
    "{unAuthenticatedAttributes}}";
constexpr const char* attributeTemplate = "SEQUENCE { OBJECT_IDENTIFIER=attrType, attrValues }";
constexpr const char* issuerAndSerialNumberTemplate = "SEQUENCE { SEQUENCE[CONSTRUCTED] { issuer }, INTEGER = serialNumber }";

/// A template, and the name in it whose part the next template is for.
struct TemplateStep {
    const char* text;
    const char* name = "";
};

struct FixtureCase {
    const char* file;
    std::vector<TemplateStep> steps;
    const char* bound; ///< by the last template; or "! " and why it does not match
};

/// What a name stands for: the type of the first element and how many there are, or a value, which is shown when it is short or an
/// object identifier, and otherwise its length.
std::string ShownPart(const TemplateBinding& binding)
{
    constexpr std::uint32_t maxShown = 4;
    const elementNode* const node = binding.node;
    if (node == nullptr)
        return "";
    if (!IsAsn1Type(node->type())) {
        const bool isDotted = node->type() == ElementType::text && node->token().view().find('.') != std::string_view::npos;
        if (isDotted)
            return std::string(node->token().view());
        return node->token().length() <= maxShown ? std::string(HexText(node->token().bytes()).view())
                                                  : "(" + std::to_string(node->token().length()) + ")";
    }
    std::string shown = TokenText(node->type());
    std::uint32_t count = 1;
    for (const elementNode* next = node->next(); binding.withSiblings && next != nullptr; next = next->next())
        ++count;
    return count > 1 ? shown + "*" + std::to_string(count) : shown;
}

std::string MatchedPart(const FixtureCase& each)
{
    const std::filesystem::path folder = TEST_DATA_DIR "/../../data/asn1";
    std::ifstream file(folder.lexically_normal() / each.file, std::ios::binary);
    const std::string der{std::istreambuf_iterator<char>(file), {}};
    EXPECT_FALSE(der.empty()) << each.file;
    const ElementNodePtr tree =
        CCryptoDERParser({.insideOctetStrings = true}).Decode({reinterpret_cast<const std::uint8_t*>(der.data()), der.size()});
    const elementNode* part = tree.get();
    std::vector<std::unique_ptr<CCryptoTemplateMatch>> matches;
    for (const TemplateStep& step : each.steps) {
        CCryptoTemplateMatch& match = *matches.emplace_back(std::make_unique<CCryptoTemplateMatch>());
        if (!match.Match(ParsedTemplate(step.text), part))
            return "! " + std::string(match.failedStep().view());
        EXPECT_EQ(match.surplus(), nullptr) << step.text;
        if (*step.name == '\0')
            break;
        const TemplateBinding* const binding = match.find(step.name);
        if (binding == nullptr || binding->node == nullptr)
            return std::string("! no ") + step.name;
        part = binding->node;
    }
    std::string bound;
    for (const TemplateBinding& binding : matches.back()->bindings())
        bound += (bound.empty() ? "" : " ") + std::string(binding.name) + "=" + ShownPart(binding);
    return bound;
}

void ExpectFixtures(const std::vector<FixtureCase>& cases)
{
    for (const FixtureCase& each : cases) {
        SCOPED_TRACE(each.file);
        EXPECT_EQ(MatchedPart(each), each.bound);
    }
}

TEST(SystemTemplates, ReadCertificatesAndRevocationLists)
{
    ExpectFixtures({
        {"certificate_leaf.der",
         {{certificate3Template}},
         "VERSION=02 SERIAL_NUMBER=00c8 SIGNATURE_ALGORITHM=SEQUENCE ISSUER=SET*3 VALID_FROM_TAG=UTCTime VALID_FROM=(13) "
         "VALID_TO_TAG=UTCTime VALID_TO=(13) SUBJECT=SET*4 PUBLIC_KEY=SEQUENCE EXTENSIONS=SEQUENCE*6 "
         "SIGNATURE_ALGORITHM_2=SEQUENCE SIGNATURE=(71)"},
        {"certificate_ca.der",
         {{certificate3Template}},
         "VERSION=02 SERIAL_NUMBER=(20) SIGNATURE_ALGORITHM=SEQUENCE ISSUER=SET*3 VALID_FROM_TAG=UTCTime VALID_FROM=(13) "
         "VALID_TO_TAG=UTCTime VALID_TO=(13) SUBJECT=SET*3 PUBLIC_KEY=SEQUENCE EXTENSIONS=SEQUENCE*3 "
         "SIGNATURE_ALGORITHM_2=SEQUENCE SIGNATURE=(71)"},
        {"certificate_future.der",
         {{certificate3Template}},
         "VERSION=02 SERIAL_NUMBER=00cc SIGNATURE_ALGORITHM=SEQUENCE ISSUER=SET*3 VALID_FROM_TAG=UTCTime VALID_FROM=(13) "
         "VALID_TO_TAG=GeneralizedType VALID_TO=(15) SUBJECT=SET*4 PUBLIC_KEY=SEQUENCE EXTENSIONS=SEQUENCE*6 "
         "SIGNATURE_ALGORITHM_2=SEQUENCE SIGNATURE=(72)"},
        {"certificate_leaf.der", {{certificate3Template, "EXTENSIONS"}, {extensionTemplate}}, "oid=2.5.29.19 value=OCTET_STRING"},
        {"certificate_ca.der", {{certificate3Template, "EXTENSIONS"}, {extensionTemplate}}, "oid=2.5.29.14 value=OCTET_STRING"},
        {"certificate_leaf.der", {{certificate1Template}}, "! INTEGER: the data holds CONTEXT_SPECIFIC[0]"},
        {"certificate_version1.der", {{certificate3Template}}, "! CONTEXT_SPECIFIC[0]: the data holds INTEGER"},
        // The template of version 1 asks for extensions, which that version does not have.
        {"certificate_version1.der", {{certificate1Template}}, "! CONTEXT_SPECIFIC[3]: no data is left"},
        {"crl.der",
         {{revocationListTemplate}},
         "VERSION=01 SIGNATURE_ALGORITHM=SEQUENCE ISSUER=SET*3 VALID_FROM_TAG=UTCTime VALID_FROM=(13) VALID_TO_TAG=UTCTime "
         "VALID_TO=(13) REVOKED=SEQUENCE*2 EXTENSIONS=SEQUENCE*2 SIGNATURE_ALGORITHM_2=SEQUENCE SIGNATURE=(71)"},
    });
}

TEST(SystemTemplates, ReadRequestsAndResponsesAboutCertificates)
{
    const std::vector<TemplateStep> data = {
        {ocspResponseTemplate, "responseBytes"}, {responseBytesTemplate, "response"}, {basicResponseTemplate, "tbsResponseData"}};
    const auto withSteps = [&data](std::initializer_list<TemplateStep> more) {
        std::vector<TemplateStep> steps = data;
        steps.insert(steps.end(), more);
        return steps;
    };
    ExpectFixtures({
        {"ocsp_leaf.der", {{ocspResponseTemplate}}, "responseStatus=00 responseBytes=SEQUENCE"},
        {"ocsp_leaf.der",
         {{ocspResponseTemplate, "responseBytes"}, {responseBytesTemplate}},
         "responseType=1.3.6.1.5.5.7.48.1.1 response=SEQUENCE"},
        {"ocsp_leaf.der",
         {{ocspResponseTemplate, "responseBytes"}, {responseBytesTemplate, "response"}, {basicResponseTemplate}},
         "tbsResponseData=SEQUENCE signatureAlgorithm=SEQUENCE signature=BIT_STRING certs=SEQUENCE"},
        {"ocsp_leaf.der", withSteps({{responseDataTemplate}}),
         "responderName=SEQUENCE producedAt=GeneralizedType responses=SEQUENCE Extensions=SEQUENCE"},
        {"ocsp_unknown.der", withSteps({{responseDataTemplate}}),
         "responderKeyHash=(20) producedAt=GeneralizedType responses=SEQUENCE"},
        {"ocsp_leaf.der", withSteps({{responseDataTemplate, "responses"}, {singleResponseTemplate}}),
         "certID=SEQUENCE certStatus=CONTEXT_SPECIFIC thisUpdate=GeneralizedType nextUpdate=GeneralizedType"},
        {"ocsp_leaf.der", withSteps({{responseDataTemplate, "responses"}, {singleResponseTemplate, "certID"}, {certIdTemplate}}),
         "hashAlgorithm=SEQUENCE issuerNameHash=(20) issuerKeyHash=(20) serialNumber=00c8"},
        {"ocsp_leaf.der",
         withSteps({{responseDataTemplate, "responses"}, {singleResponseTemplate, "certStatus"}, {certStatusTemplate}}), ""},
        {"ocsp_compromised.der",
         withSteps({{responseDataTemplate, "responses"}, {singleResponseTemplate, "certStatus"}, {certStatusTemplate}}),
         "revocationTime=GeneralizedType revocationReason=01"},
        // Without a reason, which the template asks for.
        {"ocsp_revoked.der",
         withSteps({{responseDataTemplate, "responses"}, {singleResponseTemplate, "certStatus"}, {certStatusTemplate}}),
         "! CONTEXT_SPECIFIC[0]: no data is left"},
        {"ocsp_unknown.der",
         withSteps({{responseDataTemplate, "responses"}, {singleResponseTemplate, "certStatus"}, {certStatusTemplate}}),
         "unknownInfo="},
        {"ocsp_request.der", {{ocspRequestTemplate}}, "TBSRequest=SEQUENCE Signature=CONTEXT_SPECIFIC"},
        {"ocsp_request.der",
         {{ocspRequestTemplate, "TBSRequest"}, {tbsRequestTemplate}},
         "requestorName=CONTEXT_SPECIFIC requestList=SEQUENCE Extensions=SEQUENCE"},
        {"ocsp_request.der",
         {{ocspRequestTemplate, "TBSRequest"}, {tbsRequestTemplate, "requestList"}, {requestTemplate}},
         "CertID=SEQUENCE"},
    });
}

TEST(SystemTemplates, ReadSignedMessages)
{
    const TemplateStep content = {contentInfoTemplate, "content"};
    const TemplateStep signer = {signedDataTemplate, "signerInfos"};
    ExpectFixtures({
        {"cms_detached.der", {{contentInfoTemplate}}, "contentOID=1.2.840.113549.1.7.2 content=SEQUENCE"},
        {"cms_detached.der",
         {content, {signedDataTemplate}},
         "version=01 digestAlgorithms=SEQUENCE contentInfo=SEQUENCE certificates=SEQUENCE*2 signerInfos=SEQUENCE"},
        {"cms_detached.der",
         {content, {signedDataTemplate, "contentInfo"}, {contentInfoTemplate}},
         "contentOID=1.2.840.113549.1.7.1"},
        {"cms_attached.der",
         {content, {signedDataTemplate, "contentInfo"}, {contentInfoTemplate}},
         "contentOID=1.2.840.113549.1.7.1 content=OCTET_STRING"},
        {"cms_indefinite.der",
         {content, {signedDataTemplate, "contentInfo"}, {contentInfoTemplate}},
         "contentOID=1.2.840.113549.1.7.1 content=OCTET_STRING"},
        {"cms_detached.der",
         {content, signer, {signerInfoTemplate}},
         "version=01 signerIdentifier=SEQUENCE digestAlgorithm=SEQUENCE authenticatedAttributes=SEQUENCE*4 "
         "signatureAlgorithm=SEQUENCE signature=SEQUENCE"},
        {"cms_attached.der",
         {content, signer, {signerInfoTemplate}},
         "version=03 signerIdentifier=CONTEXT_SPECIFIC digestAlgorithm=SEQUENCE authenticatedAttributes=SEQUENCE*3 "
         "signatureAlgorithm=SEQUENCE signature=SEQUENCE"},
        {"cms_indefinite.der",
         {content, signer, {signerInfoTemplate}},
         "version=01 signerIdentifier=SEQUENCE digestAlgorithm=SEQUENCE signatureAlgorithm=SEQUENCE signature=SEQUENCE"},
        {"cms_detached.der",
         {content, signer, {signerInfoTemplate, "signerIdentifier"}, {issuerAndSerialNumberTemplate}},
         "issuer=SET*3 serialNumber=00c8"},
        {"cms_detached.der",
         {content, signer, {signerInfoTemplate, "authenticatedAttributes"}, {attributeTemplate}},
         "attrType=1.2.840.113549.1.9.3 attrValues=SET"},
    });
}

} // namespace
