#include "tools/cryptotool/pki/object_report.h"

#include "core/text/hex.h"
#include "crypto/hash/hash.h"
#include "pki/x509/name.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/pki/extension_text.h"
#include "tools/cryptotool/pki/names.h"
#include "tools/cryptotool/pki/report_output.h"

namespace ccrypto {

namespace {

std::string Digest(algorithm::Id hash, std::span<const std::uint8_t> octets)
{
    return std::string(HexText(ICryptoHash::Create(hash)->digestOf(octets).bytes()).view());
}

std::string TextOf(const CCrypto_X509_ValueList& name)
{
    return std::string(NameText(name).view());
}

/// "certificate 1 of 2"; nothing for the only one.
std::string HeadingOf(const std::string& object, std::size_t index, std::size_t count)
{
    return count > 1 ? object + " " + std::to_string(index + 1) + " of " + std::to_string(count) : std::string();
}

} // namespace

int ShowObjects(Invocation& invocation, ObjectKind kind, std::string_view name, const AddObject& add)
{
    const std::string file = invocation.arguments().operand(0);
    const std::string object = ObjectName(kind);
    std::vector<DataBlock> blocks;
    int exit = ReadObjectsOrRefuse(invocation, file, kind, blocks);
    if (exit != exitDone)
        return exit;
    Report report;
    Report& list = report.addList(name);
    list.withoutName();
    for (std::size_t index = 0; index < blocks.size(); ++index) {
        StartReason();
        if (!add(blocks[index].bytes, list, HeadingOf(object, index, blocks.size())))
            exit = invocation.refuse(file, BlockName(blocks, index) + LastReason(("it is not a " + object).c_str()));
    }
    const int written = list.isEmpty() ? exit : WriteReport(invocation, report);
    return written != exitDone ? written : exit;
}

std::string KeyText(const ICryptoKeyPair& key)
{
    const std::string name = key.name();
    if (key.algorithmId() == algorithm::ecPublicKey)
        return "EC " + name;
    return key.curveId() != algorithm::none ? name : name + " " + std::to_string(key.keySize());
}

std::string AlgorithmText(const CCryptoAlgorithmIdentifier& algorithm)
{
    return ShortNameOf(algorithm.oid().view());
}

std::string Fingerprint(std::span<const std::uint8_t> octets)
{
    return Digest(algorithm::sha256, octets);
}

void DescribeExtensions(const CCrypto_X509_ValueList& extensions, Report& report)
{
    Report& list = report.addList("extensions");
    for (const auto& extension : extensions.values()) {
        const std::string name = ShortNameOf(extension->oid());
        Report& item = list.addItem(name + (extension->isCritical() ? " (critical)" : ""));
        item.add("oid", OidText(extension->oid())).inJsonOnly();
        item.add("name", name).inJsonOnly();
        item.addTruth("critical", extension->isCritical()).inJsonOnly();
        item.addTexts("values", ExtensionLines(*extension)).withoutName();
    }
}

void DescribeCertificate(const CCrypto_X509_Certificate& certificate, Report& report)
{
    report.addNumber("version", certificate.version());
    report.add("serialNumber", SerialText(certificate.serialNumber().bytes()));
    report.add("signatureAlgorithm", AlgorithmText(certificate.signatureAlgorithm()));
    report.add("issuer", TextOf(certificate.issuer()));
    report.addTime("notBefore", certificate.validFrom());
    report.addTime("notAfter", certificate.validTo());
    report.add("subject", TextOf(certificate.subject()));
    report.add("key", KeyText(*certificate.publicKey()));
    if (!certificate.isDer())
        report.addTruth("isDer", false);
    DescribeExtensions(certificate.extensions(), report);
    report.add("sha1", Digest(algorithm::sha1, certificate.der().bytes()));
    report.add("sha256", Fingerprint(certificate.der().bytes()));
    report.add("publicKeySha256", Fingerprint(certificate.publicKeyInfo().bytes()));
}

void DescribeList(const CCrypto_X509_CRL& list, Report& report)
{
    report.addNumber("version", list.version());
    report.add("signatureAlgorithm", AlgorithmText(list.signatureAlgorithm()));
    report.add("issuer", TextOf(list.issuer()));
    report.addTime("thisUpdate", list.thisUpdate());
    report.addTime("nextUpdate", list.nextUpdate());
    if (!list.isDer())
        report.addTruth("isDer", false);
    DescribeExtensions(list.extensions(), report);
    report.addNumber("entries", list.entryCount());
    report.add("sha256", Fingerprint(list.der().bytes()));
}

void DescribeEntry(const RevokedEntry& entry, Report& report)
{
    report.add("serialNumber", SerialText(entry.serialNumber.bytes()));
    report.addTime("revocationDate", entry.revocationDate);
    if (entry.reason)
        report.add("reason", RevocationReasonName(*entry.reason));
    else
        report.addNothing("reason");
    if (entry.invalidityDate.isValid())
        report.addTime("invalidityDate", entry.invalidityDate);
    if (!entry.certificateIssuer.empty()) {
        std::vector<std::string> names;
        for (const GeneralName& name : ReadGeneralNames(entry.certificateIssuer).value_or(GeneralNames()))
            names.push_back(AlternativeNameText(name));
        report.addTexts("certificateIssuer", names);
    }
    if (entry.hasUnknownCritical)
        report.addTruth("unknownCriticalExtension", true);
}

} // namespace ccrypto
