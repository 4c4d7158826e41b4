#include "tests/pki/validation/test_world.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>

namespace ccrypto {

namespace {

CertificatePtr Loaded(const Bytes& der)
{
    CertificatePtr certificate = LoadCertificate(der);
    if (certificate == nullptr)
        throw std::runtime_error("a certificate of the test does not load");
    return certificate;
}

} // namespace

CCryptoDateTime TestMoment(const char* generalized)
{
    return CCryptoDateTime(CCryptoString(generalized));
}

ValidationOptions TestWorld::DefaultOptions()
{
    ValidationOptions options;
    options.at = TestMoment("20261123120000Z");
    return options;
}

TestIssuer TestWorld::Who(const std::string& name)
{
    static std::map<std::string, std::uint32_t> numbers;
    const std::uint32_t number = numbers.try_emplace(name, static_cast<std::uint32_t>(numbers.size()) + 1).first->second;
    TestIssuer who;
    who.name = TestName("C=FI,O=Test,CN=" + name.substr(0, name.find('/')));
    who.key = TestKey(number);
    return who;
}

Bytes TestWorld::Certificate(const std::string& subject, const std::string& issuer, bool isAuthority,
                             const ChangeCertificate& change)
{
    TestCertificate certificate(Who(subject));
    if (isAuthority)
        certificate.authority();
    if (change)
        change(certificate);
    return certificate.build(Who(issuer));
}

TestWorld& TestWorld::anchor(const std::string& name, const ChangeCertificate& change)
{
    anchors.push_back(Certificate(name, name, true, change));
    return *this;
}

TestWorld& TestWorld::authority(const std::string& name, const std::string& issuer, const ChangeCertificate& change)
{
    others.push_back(Certificate(name, issuer, true, change));
    return *this;
}

TestWorld& TestWorld::plain(const std::string& name, const std::string& issuer, const ChangeCertificate& change)
{
    others.push_back(Certificate(name, issuer, false, change));
    return *this;
}

TestWorld& TestWorld::subject(const std::string& name, const std::string& issuer, const ChangeCertificate& change)
{
    subjectDer = Certificate(name, issuer, false, change);
    return *this;
}

TestWorld& TestWorld::subjectAuthority(const std::string& name, const std::string& issuer, const ChangeCertificate& change)
{
    subjectDer = Certificate(name, issuer, true, change);
    return *this;
}

TestWorld& TestWorld::list(const std::string& issuer, const ChangeList& change)
{
    TestCrl crl;
    if (change)
        change(crl);
    lists.push_back(crl.build(Who(issuer)));
    return *this;
}

CertificatePool TestWorld::pool() const
{
    CertificatePool pool;
    for (const Bytes& der : anchors)
        static_cast<void>(pool.add(Loaded(der), true));
    for (const Bytes& der : others)
        static_cast<void>(pool.add(Loaded(der), false));
    return pool;
}

std::vector<CrlPtr> TestWorld::loadedLists() const
{
    std::vector<CrlPtr> loaded;
    for (const Bytes& der : lists) {
        auto crl = std::make_shared<CCrypto_X509_CRL>();
        if (!crl->LoadCRL(element(der.data(), static_cast<std::uint32_t>(der.size()))))
            throw std::runtime_error("a list of the test does not load");
        loaded.push_back(std::move(crl));
    }
    return loaded;
}

PathVerdict TestWorld::validate() const
{
    StatusSources all = sources;
    all.crls = loadedLists();
    return ValidateCertificate(Loaded(subjectDer), pool(), all, options);
}

std::string Summary(const PathVerdict& verdict)
{
    if (verdict.verdict == Verdict::valid)
        return "VALID";
    const char* mark = verdict.verdict == Verdict::undecided ? " ?" : "";
    return std::string(ReasonWord(verdict.reason)) + " " + std::to_string(verdict.certificate) + mark;
}

std::string WordsToName(std::string_view words)
{
    std::string name(words);
    std::replace_if(
        name.begin(), name.end(), [](char character) { return std::isalnum(static_cast<unsigned char>(character)) == 0; }, '_');
    return name;
}

} // namespace ccrypto
