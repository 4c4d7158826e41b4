#include "asn1/types/algorithm_table.h"
#include "core/text/hex.h"
#include "pki/pkcs12/pkcs12.h"
#include "pki/x509/name.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/pki/names.h"
#include "tools/cryptotool/pki/object_report.h"
#include "tools/cryptotool/pki/report_output.h"
#include "tools/cryptotool/pki/store_input.h"

namespace ccrypto {

namespace {

constexpr std::string_view p12ShowDetails =
    R"(Prints what the PKCS#12 file FILE holds. Without a password it prints what is not encrypted, and verifies nothing: "verified"
is then "no". With --password-file or --password-fd the MAC is verified and everything is decrypted; secret values are
never printed.
)";
constexpr Option p12ShowOptions[] = {passwordSecret.file, passwordSecret.descriptor, jsonOption, outputOption};

std::string NameOfId(algorithm::Id id)
{
    return ShortNameOf(OidOfAlgorithm(id));
}

std::string EncryptionText(const SCryptoPasswordEncryption& encryption)
{
    std::string text = NameOfId(encryption.scheme);
    if (encryption.scheme == algorithm::pbes2)
        text += ", " + NameOfId(encryption.cipher) + ", " + NameOfId(encryption.prf);
    return text + ", " + std::to_string(encryption.iterations) + " iterations";
}

std::string MacText(const CCryptoPKCS12MacData& mac)
{
    const algorithm::Id hash = mac.hash();
    const std::string name = hash != algorithm::none ? NameOfId(hash) : ShortNameOf(mac.algorithmOid().view());
    return (mac.isPBMAC1() ? "PBMAC1, " : "HMAC, ") + name + ", " + std::to_string(mac.iterations()) + " iterations";
}

const char* KindText(PKCS12Bag::Kind kind)
{
    switch (kind) {
    case PKCS12Bag::Kind::key:
        return "key";
    case PKCS12Bag::Kind::certificate:
        return "certificate";
    case PKCS12Bag::Kind::revocationList:
        return "revocation list";
    case PKCS12Bag::Kind::secret:
        return "secret";
    case PKCS12Bag::Kind::other:
        break;
    }
    return "other";
}

void DescribeBag(const CCryptoPKCS12& file, const PKCS12Bag& bag, Report& report)
{
    report.add("kind", KindText(bag.kind)).inJsonOnly();
    if (!bag.friendlyName.isEmpty())
        report.add("friendlyName", bag.friendlyName.view());
    if (!bag.localKeyId.isEmpty())
        report.add("localKeyID", HexText(bag.localKeyId.bytes()).view());
    if (bag.encryption)
        report.add("encryption", EncryptionText(*bag.encryption));
    if (bag.key != nullptr) {
        report.add("key", KeyText(*bag.key));
        if (const PKCS12Bag* const certificate = file.certificateOf(bag))
            report.addNumber("certificateBag", static_cast<std::uint64_t>(certificate - file.bags().data()) + 1);
    } else if (bag.certificate != nullptr) {
        report.add("subject", NameText(bag.certificate->subject()).view());
        report.add("serialNumber", SerialText(bag.certificate->serialNumber().bytes()));
        report.add("sha256", Fingerprint(bag.octets.bytes()));
    } else if (bag.revocationList != nullptr) {
        report.add("issuer", NameText(bag.revocationList->issuer()).view());
        report.addNumber("entries", bag.revocationList->entryCount());
    } else if (bag.kind == PKCS12Bag::Kind::secret || bag.kind == PKCS12Bag::Kind::other) {
        report.add("type", ShortNameOf(bag.type));
    } else if (bag.kind != PKCS12Bag::Kind::key || file.outcome() == PKCS12Outcome::opened) {
        report.add("remark", "not supported, or malformed");
    }
}

int ShowStore(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    const bool hasPassword = arguments.has(passwordSecret.file.name) || arguments.has(passwordSecret.descriptor.name);
    CCryptoPKCS12 file;
    const int exit = ReadStore(invocation, arguments.operand(0), hasPassword ? StoreAccess::open : StoreAccess::outline, file);
    if (exit != exitDone)
        return exit;
    Report report;
    if (file.hasMac())
        report.add("mac", MacText(*file.mac()));
    else
        report.add("mac", "none");
    report.addTruth("verified", file.hasMac() && file.outcome() == PKCS12Outcome::opened);
    Report& safes = report.addList("contents");
    for (const PKCS12Safe& safe : file.safes()) {
        Report& item = safes.addItem("content " + std::to_string(&safe - file.safes().data() + 1));
        item.add("type", ShortNameOf(safe.type));
        if (safe.encryption)
            item.add("encryption", EncryptionText(*safe.encryption));
        item.addTruth("isOpen", safe.isOpen);
    }
    safes.withoutName();
    Report& bags = report.addList("bags");
    bags.withoutName();
    for (const PKCS12Bag& bag : file.bags()) {
        const std::string number = std::to_string(&bag - file.bags().data() + 1);
        DescribeBag(file, bag, bags.addItem("bag " + number + ": " + KindText(bag.kind)));
    }
    return WriteReport(invocation, report);
}

} // namespace

const Command p12ShowCommand = {"p12",          "show",   "prints what a PKCS#12 file holds", "FILE", 1, 1, p12ShowDetails,
                                p12ShowOptions, ShowStore};

} // namespace ccrypto
