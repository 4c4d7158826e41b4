#include "core/text/hex.h"
#include "pki/cms/document.h"
#include "pki/x509/crl.h"
#include "pki/x509/name.h"
#include "pki/x509/x509_time.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/pki/names.h"
#include "tools/cryptotool/pki/object_report.h"
#include "tools/cryptotool/pki/ocsp_input.h"
#include "tools/cryptotool/pki/report_output.h"

namespace ccrypto {

namespace {

constexpr std::string_view cmsShowDetails =
    R"(Prints what the CMS message in FILE holds: of signed data its content, certificates, lists, signers and their attributes; of other
types the type. Nothing is verified: see "cryptotool cms verify".
)";
constexpr Option cmsShowOptions[] = {jsonOption, outputOption};

std::vector<std::string> AttributeNames(const CCryptoPKCS7Attributes* attributes)
{
    std::vector<std::string> names;
    for (std::uint32_t index = 0; attributes != nullptr && index < attributes->size(); ++index)
        names.push_back(ShortNameOf(attributes->attribute(index).type()));
    return names;
}

void DescribeSignerInfo(const CCryptoPKCS7SignerInfo& signer, Report& report)
{
    report.addNumber("version", signer.version);
    if (signer.signer.isByKey()) {
        report.add("keyIdentifier", HexText(signer.signer.keyIdentifier.bytes()).view());
    } else {
        report.add("issuer", NameText(signer.signer.issuer.bytes()).view());
        report.add("serialNumber", SerialText(signer.signer.serialNumber.bytes()));
    }
    report.add("digestAlgorithm", AlgorithmText(signer.digestAlgorithm));
    report.add("signatureAlgorithm", AlgorithmText(signer.signatureAlgorithm));
    const CCryptoPKCS7Attribute* const time =
        signer.signedAttributes != nullptr ? signer.signedAttributes->find(cms::signingTime) : nullptr;
    report.addTime("signingTime", time != nullptr ? ReadX509Time(time->onlyValue()) : CCryptoDateTime());
    report.addTexts("signedAttributes", AttributeNames(signer.signedAttributes.get()));
    report.addTexts("unsignedAttributes", AttributeNames(signer.unsignedAttributes.get()));
}

void DescribeSignedData(const CCryptoPKCS7SignedDataObject& data, Report& report)
{
    report.addNumber("version", data.version);
    report.add("contentType", ShortNameOf(data.contentType));
    if (data.hasContent)
        report.addNumber("contentLength", data.content.length());
    else
        report.addNothing("contentLength");
    std::vector<std::string> names;
    for (const element& der : data.certificates) {
        const CertificatePtr certificate = LoadCertificate(der.bytes());
        names.push_back(certificate != nullptr ? std::string(NameText(certificate->subject()).view()) : "(does not load)");
    }
    report.addTexts("certificates", names);
    report.addNumber("revocationLists", data.crls.size());
    report.addNumber("ocspResponses", data.ocspResponses.size());
    Report& signers = report.addList("signers");
    for (std::size_t index = 0; index < data.signerInfos.size(); ++index)
        DescribeSignerInfo(*data.signerInfos[index], signers.addItem("signer " + std::to_string(index)));
}

int ShowMessage(Invocation& invocation)
{
    const std::string file = invocation.arguments().operand(0);
    element message;
    if (const int exit = ReadMessage(invocation, file, message); exit != exitDone)
        return exit;
    StartReason();
    CCryptoPKCS7Document document;
    if (!document.Parse(message.bytes()))
        return invocation.refuse(file, LastReason("it is not a CMS message"));
    Report report;
    report.add("type", ShortNameOf(document.contentInfo()->contentOid()));
    if (document.signedData() != nullptr)
        DescribeSignedData(*document.signedData(), report);
    return WriteReport(invocation, report);
}

} // namespace

const Command cmsShowCommand = {"cms",          "show",     "prints what a message holds", "FILE", 1, 1, cmsShowDetails,
                                cmsShowOptions, ShowMessage};

} // namespace ccrypto
