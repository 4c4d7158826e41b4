#include "tools/cryptotool/pki/issuing_options.h"

#include "asn1/der/pem.h"
#include "core/text/hex.h"
#include "pki/validation/name_forms.h"
#include "pki/x509/extension_builder.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/input/file_input.h"
#include "tools/cryptotool/keys/key_input.h"
#include "tools/cryptotool/output/output.h"
#include "tools/cryptotool/pki/name_input.h"
#include "tools/cryptotool/pki/names.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace ccrypto {

namespace {

constexpr std::string_view criticalWord = "critical,";

int MisuseOf(Invocation& invocation, const Option& option, const std::string& value)
{
    return invocation.misuse("--" + std::string(option.name) + " needs " + std::string(option.value) + ", not " + value);
}

/// Takes over what a builder made. \return exitDone, or exitRefused when it made nothing.
int Add(Invocation& invocation, CCrypto_X509_ValueList& extensions, ExtensionPtr extension)
{
    if (extension == nullptr)
        return invocation.refuse({}, LastReason("an extension cannot be written"));
    extensions.add(std::move(extension));
    return exitDone;
}

std::optional<GeneralName> ParseGeneralName(std::string_view text)
{
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos)
        return std::nullopt;
    const std::string_view kind = text.substr(0, colon);
    const std::string_view value = text.substr(colon + 1);
    GeneralName name;
    name.value.append(value);
    if (SameInAnyCase(kind, "UPN"))
        return UserPrincipalName(CCryptoString(value));
    if (SameInAnyCase(kind, "email"))
        name.kind = GeneralName::Kind::email;
    else if (SameInAnyCase(kind, "DNS"))
        name.kind = GeneralName::Kind::dns;
    else if (SameInAnyCase(kind, "URI"))
        name.kind = GeneralName::Kind::uri;
    else if (SameInAnyCase(kind, "IP")) {
        const auto octets = ReadIpAddress(value);
        if (!octets)
            return std::nullopt;
        name.kind = GeneralName::Kind::ipAddress;
        name.value = element(octets->data(), static_cast<std::uint32_t>(octets->size()));
    } else
        return std::nullopt;
    return name;
}

int AddBasicConstraints(Invocation& invocation, CCrypto_X509_ValueList& extensions)
{
    const Arguments& arguments = invocation.arguments();
    const bool isCa = arguments.has(isCaOption.name);
    if (arguments.has(pathLengthOption.name) && !isCa)
        return invocation.misuse("--path-length requires --is-ca");
    BasicConstraints constraints{isCa, std::nullopt};
    if (arguments.has(pathLengthOption.name))
        constraints.pathLength = static_cast<std::uint32_t>(
            std::min<std::uint64_t>(arguments.number(pathLengthOption.name, 0), std::numeric_limits<std::int32_t>::max()));
    return isCa ? Add(invocation, extensions, BuildBasicConstraints(constraints)) : exitDone;
}

int AddKeyUsage(Invocation& invocation, CCrypto_X509_ValueList& extensions)
{
    KeyUsage usage;
    for (const std::string& name : invocation.arguments().values(setKeyUsageOption.name)) {
        const std::optional<KeyUsageBit> bit = KeyUsageBitOf(name);
        if (!bit)
            return invocation.misuse(UnknownKeyUsageText(name));
        usage.bits = static_cast<std::uint16_t>(usage.bits | static_cast<std::uint16_t>(*bit));
    }
    if (usage.bits == 0 && invocation.arguments().has(isCaOption.name))
        usage.bits = static_cast<std::uint16_t>(KeyUsageBit::keyCertSign) | static_cast<std::uint16_t>(KeyUsageBit::crlSign);
    return usage.bits != 0 ? Add(invocation, extensions, BuildKeyUsage(usage)) : exitDone;
}

int AddPurposes(Invocation& invocation, CCrypto_X509_ValueList& extensions)
{
    std::vector<Oid> purposes;
    for (const std::string& value : invocation.arguments().values(setPurposeOption.name)) {
        purposes.push_back(PurposeOf(value));
        if (purposes.back().isNone())
            return MisuseOf(invocation, setPurposeOption, value);
    }
    return purposes.empty() ? exitDone : Add(invocation, extensions, BuildExtendedKeyUsage(purposes));
}

int AddAlternativeNames(Invocation& invocation, CCrypto_X509_ValueList& extensions)
{
    GeneralNames names;
    for (const std::string& value : invocation.arguments().values(alternativeNameOption.name)) {
        const std::optional<GeneralName> name = ParseGeneralName(value);
        if (!name || BuildSubjectAlternativeName({*name}) == nullptr)
            return MisuseOf(invocation, alternativeNameOption, value);
        names.push_back(*name);
    }
    return names.empty() ? exitDone : Add(invocation, extensions, BuildSubjectAlternativeName(names));
}

int AddPolicies(Invocation& invocation, CCrypto_X509_ValueList& extensions)
{
    std::vector<PolicyStatement> policies;
    for (const std::string& value : invocation.arguments().values(setPolicyOption.name)) {
        policies.push_back({OidOf(value), {}, {}});
        if (policies.back().policy.isNone())
            return MisuseOf(invocation, setPolicyOption, value);
    }
    return policies.empty() ? exitDone : Add(invocation, extensions, BuildCertificatePolicies(policies));
}

std::vector<CCryptoString> TextsOf(const Invocation& invocation, const Option& option)
{
    std::vector<CCryptoString> texts;
    for (const std::string& value : invocation.arguments().values(option.name))
        texts.emplace_back(std::string_view(value));
    return texts;
}

int AddPlaces(Invocation& invocation, CCrypto_X509_ValueList& extensions)
{
    const std::vector<CCryptoString> lists = TextsOf(invocation, crlUrlOption);
    const std::vector<CCryptoString> responders = TextsOf(invocation, ocspUrlOption);
    const std::vector<CCryptoString> issuers = TextsOf(invocation, issuerUrlOption);
    int exit = exitDone;
    if (!lists.empty())
        exit = Add(invocation, extensions, BuildCrlDistributionPoints(lists));
    if (exit == exitDone && !(responders.empty() && issuers.empty()))
        exit = Add(invocation, extensions, BuildAuthorityInformationAccess(responders, issuers));
    return exit;
}

/// "#HEX" or "@FILE". \return exitDone, or the exit code after the reason was printed.
int ReadExtensionValue(Invocation& invocation, const std::string& option, std::string_view text, element& content)
{
    std::string reason;
    if (text.starts_with('@')) {
        const std::string file(text.substr(1));
        return ReadWhole(invocation.console(), file, content, reason) ? exitDone : invocation.refuse(file, reason);
    }
    const bool isRead = text.starts_with('#') && BytesFromHex(text.substr(1), content);
    return isRead ? exitDone : MisuseOf(invocation, extensionOption, option);
}

/// The first certificate of the file, and the others.
int ReadFirstAndOthers(Invocation& invocation, const std::string& file, CertificatePtr& first, std::vector<CertificatePtr>& others)
{
    std::vector<CertificatePtr> certificates;
    if (const int exit = ReadCertificatesOrRefuse(invocation, file, certificates); exit != exitDone)
        return exit;
    first = certificates.front();
    others.insert(others.end(), certificates.begin() + 1, certificates.end());
    return exitDone;
}

/// \param others null where the file of the certificate must hold one alone.
int ReadPair(Invocation& invocation, const Option& certificate, const Option& key, const std::vector<std::string>& otherFiles,
             IssuerInput& owner, std::vector<CertificatePtr>* others)
{
    const Arguments& arguments = invocation.arguments();
    for (const Option& option : {certificate, key})
        if (!arguments.has(option.name))
            return invocation.misuse("--" + std::string(option.name) + " is needed");
    const std::string certificateFile = arguments.value(certificate.name);
    const std::string keyFile = arguments.value(key.name);
    std::vector<std::string> files = {keyFile, certificateFile};
    files.insert(files.end(), otherFiles.begin(), otherFiles.end());
    KeyInput input;
    int exit = ReadKey(invocation, files, KeyHalf::privateHalf, input);
    if (exit == exitDone && others == nullptr)
        exit = ReadCertificate(invocation, certificateFile, owner.certificate);
    else if (exit == exitDone)
        exit = ReadFirstAndOthers(invocation, certificateFile, owner.certificate, *others);
    if (exit != exitDone)
        return exit;
    owner.key = std::move(input.key);
    const ICryptoKeyPair* const certified = owner.certificate->publicKey().get();
    const bool isPair = certified != nullptr && IsSameKey(*owner.key, *certified);
    return isPair ? exitDone : invocation.refuse(keyFile, "not the key of " + certificateFile);
}

} // namespace

algorithm::Id SignatureHash(const Arguments& arguments)
{
    const std::string name = arguments.value(signatureHashOption.name, "sha256");
    if (name == "sha224")
        return algorithm::sha224;
    if (name == "sha384")
        return algorithm::sha384;
    return name == "sha512" ? algorithm::sha512 : algorithm::sha256;
}

int ReadSubjectOption(Invocation& invocation, bool isNeeded, CCrypto_X509_ValueList& subject)
{
    const Arguments& arguments = invocation.arguments();
    std::string problem;
    if (!arguments.has(subjectOption.name))
        return isNeeded ? invocation.misuse("--subject is needed") : exitDone;
    return ParseNameText(arguments.value(subjectOption.name), subject, problem) ? exitDone : invocation.misuse(problem);
}

int ReadPlainExtensions(Invocation& invocation, CCrypto_X509_ValueList& extensions)
{
    for (const std::string& option : invocation.arguments().values(extensionOption.name)) {
        std::string_view text = option;
        const bool isCritical = text.starts_with(criticalWord);
        text.remove_prefix(isCritical ? criticalWord.size() : 0);
        const std::size_t equals = text.find('=');
        const Oid oid = OidOf(text.substr(0, equals));
        element content;
        if (equals == std::string_view::npos || oid.isNone())
            return MisuseOf(invocation, extensionOption, option);
        int exit = ReadExtensionValue(invocation, option, text.substr(equals + 1), content);
        if (exit == exitDone)
            exit = Add(invocation, extensions, BuildExtension(oid, content, isCritical));
        if (exit != exitDone)
            return exit;
    }
    return exitDone;
}

int ReadCertificateExtensions(Invocation& invocation, CCrypto_X509_ValueList& extensions)
{
    constexpr int (*adders[])(Invocation&, CCrypto_X509_ValueList&) = {
        AddBasicConstraints, AddKeyUsage, AddPurposes, AddAlternativeNames, AddPolicies, AddPlaces, ReadPlainExtensions};
    for (const auto add : adders) {
        StartReason();
        if (const int exit = add(invocation, extensions); exit != exitDone)
            return exit;
    }
    return exitDone;
}

int ReadCertificateAndKey(Invocation& invocation, const Option& certificate, const Option& key,
                          const std::vector<std::string>& otherFiles, IssuerInput& owner)
{
    return ReadPair(invocation, certificate, key, otherFiles, owner, nullptr);
}

int ReadChainAndKey(Invocation& invocation, const Option& certificate, const Option& key,
                    const std::vector<std::string>& otherFiles, IssuerInput& owner, std::vector<CertificatePtr>& others)
{
    return ReadPair(invocation, certificate, key, otherFiles, owner, &others);
}

int ReadIssuer(Invocation& invocation, const std::vector<std::string>& otherFiles, IssuerInput& issuer)
{
    return ReadCertificateAndKey(invocation, issuerOption, issuerKeyOption, otherFiles, issuer);
}

int WriteObject(Invocation& invocation, const char* label, const element& der)
{
    const Arguments& arguments = invocation.arguments();
    const bool isDer = arguments.value(keyEncodingOption.name) == "der";
    Output output(invocation.console(), arguments.value(outputOption.name),
                  isDer ? Output::Content::binary : Output::Content::text);
    return FinishOutput(invocation, output,
                        output.open() && (isDer ? output.write(der.bytes()) : output.write(WritePem(label, der).view())));
}

} // namespace ccrypto
