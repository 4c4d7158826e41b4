#include "asn1/der/pem.h"
#include "pki/validation/path_validation.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

using namespace ccrypto;

namespace {

/// The certificates and lists of tests/data/pki/pkits.pem by the names of their files, and all of them together.
class InteroperabilitySuite {
public:
    InteroperabilitySuite()
    {
        std::ifstream file(std::string(VECTOR_DIR) + "/pkits.pem", std::ios::binary);
        std::stringstream text;
        text << file.rdbuf();
        std::string line;
        std::string name;
        std::string block;
        while (std::getline(text, line)) {
            if (!line.starts_with("-----BEGIN") && block.empty()) {
                name = line;
                continue;
            }
            block += line + "\n";
            if (line.starts_with("-----END")) {
                add(name, block);
                block.clear();
            }
        }
    }

    PathVerdict validate(const std::string& name, const ValidationOptions& options) const
    {
        const auto found = certificates_.find(name);
        return found != certificates_.end() ? ValidateCertificate(found->second, pool_, sources_, options) : PathVerdict();
    }
    std::size_t size() const { return certificates_.size() + sources_.crls.size(); }

private:
    void add(const std::string& name, const std::string& block)
    {
        std::vector<DataBlock> blocks;
        if (!ReadPem(block, blocks) || blocks.size() != 1)
            return;
        if (blocks[0].label == "X509 CRL") {
            const auto list = std::make_shared<CCrypto_X509_CRL>();
            if (list->LoadCRL(blocks[0].bytes))
                sources_.crls.push_back(list);
            return;
        }
        const CertificatePtr certificate = LoadCertificate(blocks[0].bytes.bytes());
        if (certificate == nullptr)
            return;
        certificates_[name] = certificate;
        static_cast<void>(pool_.add(certificate, name == "TrustAnchorRootCertificate"));
    }

    std::map<std::string, CertificatePtr> certificates_;
    CertificatePool pool_;
    StatusSources sources_;
};

const InteroperabilitySuite& Suite()
{
    static const InteroperabilitySuite suite;
    return suite;
}

ValidationOptions SuiteOptions()
{
    ValidationOptions options;
    options.at = CCryptoDateTime(CCryptoString("20200101120000Z"));
    options.status = ValidationOptions::Status::chain;
    options.allowWeak = true; // its DSA certificates are signed over SHA-1
    return options;
}

std::string ReasonOf(const PathVerdict& verdict)
{
    return verdict.verdict == Verdict::valid ? "valid" : std::string(ReasonWord(verdict.reason));
}

TEST(InteroperabilitySuite, IsRead)
{
    EXPECT_EQ(Suite().size(), 578U);
}

struct SuiteCase {
    const char* name; ///< without "EE" at its end
    const char* expected;
};

// Those whose section asks for no settings of its own.
constexpr SuiteCase suiteCases[] = {
    {"InvalidBadCRLIssuerNameTest5", "status-unknown"},
    {"InvalidBadCRLSignatureTest4", "status-unknown"},
    {"InvalidBasicSelfIssuedCRLSigningKeyTest7", "revoked"},
    {"InvalidBasicSelfIssuedCRLSigningKeyTest8", "not-a-ca"},
    {"InvalidBasicSelfIssuedNewWithOldTest5", "revoked"},
    {"InvalidBasicSelfIssuedOldWithNewTest2", "revoked"},
    {"InvalidCASignatureTest2", "bad-signature"},
    {"InvalidCAnotAfterDateTest5", "expired"},
    {"InvalidCAnotBeforeDateTest1", "not-yet-valid"},
    {"InvalidDNSnameConstraintsTest31", "name-constraints"},
    {"InvalidDNSnameConstraintsTest33", "name-constraints"},
    {"InvalidDNSnameConstraintsTest38", "name-constraints"},
    {"InvalidDNandRFC822nameConstraintsTest28", "name-constraints"},
    {"InvalidDNandRFC822nameConstraintsTest29", "name-constraints"},
    {"InvalidDNnameConstraintsTest10", "name-constraints"},
    {"InvalidDNnameConstraintsTest12", "name-constraints"},
    {"InvalidDNnameConstraintsTest13", "name-constraints"},
    {"InvalidDNnameConstraintsTest15", "name-constraints"},
    {"InvalidDNnameConstraintsTest16", "name-constraints"},
    {"InvalidDNnameConstraintsTest17", "name-constraints"},
    {"InvalidDNnameConstraintsTest20", "name-constraints"},
    {"InvalidDNnameConstraintsTest2", "name-constraints"},
    {"InvalidDNnameConstraintsTest3", "name-constraints"},
    {"InvalidDNnameConstraintsTest7", "name-constraints"},
    {"InvalidDNnameConstraintsTest8", "name-constraints"},
    {"InvalidDNnameConstraintsTest9", "name-constraints"},
    {"InvalidDSASignatureTest6", "bad-signature"},
    {"InvalidEESignatureTest3", "bad-signature"},
    {"InvalidEEnotAfterDateTest6", "expired"},
    {"InvalidEEnotBeforeDateTest2", "not-yet-valid"},
    {"InvalidIDPwithindirectCRLTest23", "revoked"},
    {"InvalidIDPwithindirectCRLTest26", "status-unknown"},
    {"InvalidLongSerialNumberTest18", "revoked"},
    {"InvalidMappingFromanyPolicyTest7", "policy"},
    {"InvalidMappingToanyPolicyTest8", "policy"},
    {"InvalidMissingCRLTest1", "status-unknown"},
    {"InvalidMissingbasicConstraintsTest1", "not-a-ca"},
    {"InvalidNameChainingOrderTest2", "no-path"},
    {"InvalidNameChainingTest1", "no-path"},
    {"InvalidNegativeSerialNumberTest15", "revoked"},
    {"InvalidOldCRLnextUpdateTest11", "status-stale"},
    {"InvalidPolicyMappingTest10", "policy"},
    {"InvalidPolicyMappingTest2", "policy"},
    {"InvalidPolicyMappingTest4", "policy"},
    {"InvalidRFC822nameConstraintsTest22", "name-constraints"},
    {"InvalidRFC822nameConstraintsTest24", "name-constraints"},
    {"InvalidRFC822nameConstraintsTest26", "name-constraints"},
    {"InvalidRevokedCATest2", "revoked"},
    {"InvalidRevokedEETest3", "revoked"},
    {"InvalidSelfIssuedinhibitAnyPolicyTest10", "policy"},
    {"InvalidSelfIssuedinhibitAnyPolicyTest8", "policy"},
    {"InvalidSelfIssuedinhibitPolicyMappingTest10", "policy"},
    {"InvalidSelfIssuedinhibitPolicyMappingTest11", "policy"},
    {"InvalidSelfIssuedinhibitPolicyMappingTest8", "policy"},
    {"InvalidSelfIssuedinhibitPolicyMappingTest9", "policy"},
    {"InvalidSelfIssuedpathLenConstraintTest16", "path-length"},
    {"InvalidSelfIssuedrequireExplicitPolicyTest7", "policy"},
    {"InvalidSelfIssuedrequireExplicitPolicyTest8", "policy"},
    {"InvalidSeparateCertificateandCRLKeysTest20", "revoked"},
    {"InvalidSeparateCertificateandCRLKeysTest21", "status-unknown"},
    {"InvalidURInameConstraintsTest35", "name-constraints"},
    {"InvalidURInameConstraintsTest37", "name-constraints"},
    {"InvalidUnknownCRLEntryExtensionTest8", "status-unknown"},
    {"InvalidUnknownCRLExtensionTest10", "status-unknown"},
    {"InvalidUnknownCRLExtensionTest9", "status-unknown"},
    {"InvalidUnknownCriticalCertificateExtensionTest2", "critical-extension"},
    {"InvalidWrongCRLTest6", "status-unknown"},
    {"InvalidcAFalseTest2", "not-a-ca"},
    {"InvalidcAFalseTest3", "not-a-ca"},
    {"InvalidcRLIssuerTest27", "status-unknown"},
    {"InvalidcRLIssuerTest31", "revoked"},
    {"InvalidcRLIssuerTest32", "revoked"},
    {"InvalidcRLIssuerTest34", "revoked"},
    {"InvalidcRLIssuerTest35", "status-unknown"},
    {"InvaliddeltaCRLIndicatorNoBaseTest1", "status-unknown"},
    {"InvaliddeltaCRLTest10", "status-stale"},
    {"InvaliddeltaCRLTest3", "revoked"},
    {"InvaliddeltaCRLTest4", "revoked"},
    {"InvaliddeltaCRLTest6", "revoked"},
    {"InvaliddeltaCRLTest9", "revoked"},
    {"InvaliddistributionPointTest2", "revoked"},
    {"InvaliddistributionPointTest3", "status-unknown"},
    {"InvaliddistributionPointTest6", "revoked"},
    {"InvaliddistributionPointTest8", "status-unknown"},
    {"InvaliddistributionPointTest9", "status-unknown"},
    {"InvalidinhibitAnyPolicyTest1", "policy"},
    {"InvalidinhibitAnyPolicyTest4", "policy"},
    {"InvalidinhibitAnyPolicyTest5", "policy"},
    {"InvalidinhibitAnyPolicyTest6", "policy"},
    {"InvalidinhibitPolicyMappingTest1", "policy"},
    {"InvalidinhibitPolicyMappingTest3", "policy"},
    {"InvalidinhibitPolicyMappingTest5", "policy"},
    {"InvalidinhibitPolicyMappingTest6", "policy"},
    {"InvalidkeyUsageCriticalcRLSignFalseTest4", "status-unknown"},
    {"InvalidkeyUsageCriticalkeyCertSignFalseTest1", "key-usage"},
    {"InvalidkeyUsageNotCriticalcRLSignFalseTest5", "status-unknown"},
    {"InvalidkeyUsageNotCriticalkeyCertSignFalseTest2", "key-usage"},
    {"InvalidonlyContainsAttributeCertsTest14", "status-unknown"},
    {"InvalidonlyContainsCACertsTest12", "status-unknown"},
    {"InvalidonlyContainsUserCertsTest11", "status-unknown"},
    {"InvalidonlySomeReasonsTest15", "revoked"},
    {"InvalidonlySomeReasonsTest16", "revoked"},
    {"InvalidonlySomeReasonsTest17", "status-unknown"},
    {"InvalidonlySomeReasonsTest20", "revoked"},
    {"InvalidonlySomeReasonsTest21", "revoked"},
    {"InvalidpathLenConstraintTest10", "path-length"},
    {"InvalidpathLenConstraintTest11", "path-length"},
    {"InvalidpathLenConstraintTest12", "path-length"},
    {"InvalidpathLenConstraintTest5", "path-length"},
    {"InvalidpathLenConstraintTest6", "path-length"},
    {"InvalidpathLenConstraintTest9", "path-length"},
    {"Invalidpre2000CRLnextUpdateTest12", "status-stale"},
    {"Invalidpre2000UTCEEnotAfterDateTest7", "expired"},
    {"InvalidrequireExplicitPolicyTest3", "policy"},
    {"InvalidrequireExplicitPolicyTest5", "policy"},
    {"ValidBasicSelfIssuedCRLSigningKeyTest6", "valid"},
    {"ValidBasicSelfIssuedNewWithOldTest3", "valid"},
    {"ValidBasicSelfIssuedNewWithOldTest4", "valid"},
    {"ValidBasicSelfIssuedOldWithNewTest1", "valid"},
    {"ValidCertificatePathTest1", "valid"},
    {"ValidDNSnameConstraintsTest30", "valid"},
    {"ValidDNSnameConstraintsTest32", "valid"},
    {"ValidDNandRFC822nameConstraintsTest27", "valid"},
    {"ValidDNnameConstraintsTest11", "valid"},
    {"ValidDNnameConstraintsTest14", "valid"},
    {"ValidDNnameConstraintsTest18", "valid"},
    {"ValidDNnameConstraintsTest19", "valid"},
    {"ValidDNnameConstraintsTest1", "valid"},
    {"ValidDNnameConstraintsTest4", "valid"},
    {"ValidDNnameConstraintsTest5", "valid"},
    {"ValidDNnameConstraintsTest6", "valid"},
    {"ValidDSAParameterInheritanceTest5", "valid"},
    {"ValidDSASignaturesTest4", "valid"},
    {"ValidGeneralizedTimeCRLnextUpdateTest13", "valid"},
    {"ValidGeneralizedTimenotAfterDateTest8", "valid"},
    {"ValidGeneralizedTimenotBeforeDateTest4", "valid"},
    {"ValidIDPwithindirectCRLTest22", "valid"},
    {"ValidIDPwithindirectCRLTest24", "valid"},
    {"ValidIDPwithindirectCRLTest25", "valid"},
    {"ValidLongSerialNumberTest16", "valid"},
    {"ValidLongSerialNumberTest17", "valid"},
    {"ValidNameChainingCapitalizationTest5", "valid"},
    {"ValidNameChainingWhitespaceTest3", "valid"},
    {"ValidNameChainingWhitespaceTest4", "valid"},
    {"ValidNameUIDsTest6", "valid"},
    {"ValidNegativeSerialNumberTest14", "valid"},
    {"ValidNoissuingDistributionPointTest10", "valid"},
    {"ValidPolicyMappingTest11", "valid"},
    {"ValidPolicyMappingTest12", "valid"},
    {"ValidPolicyMappingTest13", "valid"},
    {"ValidPolicyMappingTest14", "valid"},
    {"ValidPolicyMappingTest9", "valid"},
    {"ValidRFC3280MandatoryAttributeTypesTest7", "valid"},
    {"ValidRFC3280OptionalAttributeTypesTest8", "valid"},
    {"ValidRFC822nameConstraintsTest21", "valid"},
    {"ValidRFC822nameConstraintsTest23", "valid"},
    {"ValidRFC822nameConstraintsTest25", "valid"},
    {"ValidRolloverfromPrintableStringtoUTF8StringTest10", "valid"},
    {"ValidSelfIssuedinhibitAnyPolicyTest7", "valid"},
    {"ValidSelfIssuedinhibitAnyPolicyTest9", "valid"},
    {"ValidSelfIssuedinhibitPolicyMappingTest7", "valid"},
    {"ValidSelfIssuedpathLenConstraintTest15", "valid"},
    {"ValidSelfIssuedpathLenConstraintTest17", "valid"},
    {"ValidSelfIssuedrequireExplicitPolicyTest6", "valid"},
    {"ValidSeparateCertificateandCRLKeysTest19", "valid"},
    {"ValidTwoCRLsTest7", "valid"},
    {"ValidURInameConstraintsTest34", "valid"},
    {"ValidURInameConstraintsTest36", "valid"},
    {"ValidUTF8StringCaseInsensitiveMatchTest11", "valid"},
    {"ValidUTF8StringEncodedNamesTest9", "valid"},
    {"ValidUnknownNotCriticalCertificateExtensionTest1", "valid"},
    {"ValidbasicConstraintsNotCriticalTest4", "valid"},
    {"ValidcRLIssuerTest28", "valid"},
    {"ValidcRLIssuerTest29", "valid"},
    {"ValidcRLIssuerTest30", "valid"},
    {"ValidcRLIssuerTest33", "valid"},
    {"ValiddeltaCRLTest2", "valid"},
    {"ValiddeltaCRLTest5", "valid"},
    {"ValiddeltaCRLTest7", "valid"},
    {"ValiddeltaCRLTest8", "valid"},
    {"ValiddistributionPointTest1", "valid"},
    {"ValiddistributionPointTest4", "valid"},
    {"ValiddistributionPointTest5", "valid"},
    {"ValiddistributionPointTest7", "valid"},
    {"ValidinhibitAnyPolicyTest2", "valid"},
    {"ValidinhibitPolicyMappingTest2", "valid"},
    {"ValidinhibitPolicyMappingTest4", "valid"},
    {"ValidkeyUsageNotCriticalTest3", "valid"},
    {"ValidonlyContainsCACertsTest13", "valid"},
    {"ValidonlySomeReasonsTest18", "valid"},
    {"ValidonlySomeReasonsTest19", "valid"},
    {"ValidpathLenConstraintTest13", "valid"},
    {"ValidpathLenConstraintTest14", "valid"},
    {"ValidpathLenConstraintTest7", "valid"},
    {"ValidpathLenConstraintTest8", "valid"},
    {"Validpre2000UTCnotBeforeDateTest3", "valid"},
    {"ValidrequireExplicitPolicyTest1", "valid"},
    {"ValidrequireExplicitPolicyTest2", "valid"},
    {"ValidrequireExplicitPolicyTest4", "valid"},
};

TEST(InteroperabilitySuite, HasTheVerdictsThatItsSectionsName)
{
    for (const SuiteCase& each : suiteCases) {
        const PathVerdict verdict = Suite().validate(std::string(each.name) + "EE", SuiteOptions());
        EXPECT_EQ(ReasonOf(verdict), each.expected) << each.name << ": " << verdict.detail.c_str() << ", " << verdict.certificate;
    }
}

// Policies of the suite, by the last digit of their names.
Oid SuitePolicy(char number)
{
    return Oid::FromDotted(std::string("2.16.840.1.101.3.2.1.48.") + number);
}

struct PolicyCase {
    const char* name;
    std::string_view policies; ///< digits; empty for any
    std::string_view flags;    ///< e: explicit policy, m: inhibit mapping, a: inhibit any policy
    bool isValid;
};

// The settings of sections 4.8 to 4.12.
constexpr PolicyCase policyCases[] = {
    {"ValidCertificatePathTest1", "", "e", true},
    {"ValidCertificatePathTest1", "1", "e", true},
    {"ValidCertificatePathTest1", "2", "e", false},
    {"ValidCertificatePathTest1", "12", "e", true},
    {"AllCertificatesNoPoliciesTest2", "", "", true},
    {"AllCertificatesNoPoliciesTest2", "", "e", false},
    {"DifferentPoliciesTest3", "", "", true},
    {"DifferentPoliciesTest3", "", "e", false},
    {"DifferentPoliciesTest3", "12", "e", false},
    {"DifferentPoliciesTest4", "", "", false},
    {"DifferentPoliciesTest5", "", "", false},
    {"OverlappingPoliciesTest6", "", "", true},
    {"OverlappingPoliciesTest6", "1", "", true},
    {"OverlappingPoliciesTest6", "2", "", false},
    {"DifferentPoliciesTest7", "", "", false},
    {"DifferentPoliciesTest8", "", "", false},
    {"DifferentPoliciesTest9", "", "", false},
    {"AllCertificatesSamePoliciesTest10", "", "", true},
    {"AllCertificatesSamePoliciesTest10", "1", "", true},
    {"AllCertificatesSamePoliciesTest10", "2", "", true},
    {"AllCertificatesanyPolicyTest11", "", "", true},
    {"AllCertificatesanyPolicyTest11", "1", "", true},
    {"DifferentPoliciesTest12", "", "", false},
    {"AllCertificatesSamePoliciesTest13", "1", "", true},
    {"AllCertificatesSamePoliciesTest13", "2", "", true},
    {"AllCertificatesSamePoliciesTest13", "3", "", true},
    {"AnyPolicyTest14", "1", "", true},
    {"AnyPolicyTest14", "2", "", false},
    {"UserNoticeQualifierTest15", "", "", true},
    {"UserNoticeQualifierTest16", "", "", true},
    {"UserNoticeQualifierTest17", "", "", true},
    {"UserNoticeQualifierTest18", "1", "", true},
    {"UserNoticeQualifierTest18", "2", "", true},
    {"UserNoticeQualifierTest19", "", "", true},
    {"CPSPointerQualifierTest20", "", "", true},
    {"ValidPolicyMappingTest1", "1", "", true},
    {"ValidPolicyMappingTest1", "2", "", false},
    {"ValidPolicyMappingTest1", "", "m", false},
    {"InvalidPolicyMappingTest2", "", "m", false},
    {"ValidPolicyMappingTest3", "1", "", false},
    {"ValidPolicyMappingTest3", "2", "", true},
    {"ValidPolicyMappingTest5", "1", "", true},
    {"ValidPolicyMappingTest5", "6", "", false},
    {"ValidPolicyMappingTest6", "1", "", true},
    {"ValidPolicyMappingTest6", "6", "", false},
    {"ValidPolicyMappingTest12", "1", "", true},
    {"ValidPolicyMappingTest12", "2", "", true},
    {"inhibitAnyPolicyTest3", "", "", true},
    {"inhibitAnyPolicyTest3", "", "a", false},
};

TEST(InteroperabilitySuite, KeepsToThePoliciesAskedFor)
{
    for (const PolicyCase& each : policyCases) {
        ValidationOptions options = SuiteOptions();
        for (const char number : each.policies)
            options.policies.push_back(SuitePolicy(number));
        options.explicitPolicy = each.flags.find('e') != std::string_view::npos;
        options.inhibitMapping = each.flags.find('m') != std::string_view::npos;
        options.inhibitAnyPolicy = each.flags.find('a') != std::string_view::npos;
        const PathVerdict verdict = Suite().validate(std::string(each.name) + "EE", options);
        EXPECT_EQ(ReasonOf(verdict), each.isValid ? "valid" : "policy") << each.name << " " << each.policies << " " << each.flags;
    }
}

} // namespace
