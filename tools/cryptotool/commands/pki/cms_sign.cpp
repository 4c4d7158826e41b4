#include "crypto/hash/hash.h"
#include "pki/cms/pkcs7.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/input/file_input.h"
#include "tools/cryptotool/pki/issuing_options.h"
#include "tools/cryptotool/pki/message_options.h"
#include "tools/cryptotool/pki/ocsp_input.h"
#include "tools/cryptotool/pki/validation_input.h"

namespace ccrypto {

namespace {

constexpr std::string_view cmsSignDetails =
    R"(Signs FILE, or standard input, with the certificate of --signer and its private key, and writes a CMS message (RFC 5652, the successor of
PKCS#7) as DER. The message has the content only with --embed. The certificate must be valid and its key usage must allow to sign;
its issuer is not looked for. Attributes that are signed: content type, message digest, signing certificate (RFC 5035), and those
that options ask for.

--revocation embeds the proof that the certificate is not revoked: pdf as the signed attribute of PDF files, etsi as the unsigned one
of CAdES. Nothing is written when the key fails.
)";
constexpr Option messageSignerOption = {OptionKind::text, 0, "signer", "FILE",
                                        "the signer's certificate, first in FILE; others there are for the message"};
constexpr Option messageKeyOption = {OptionKind::text, 0, "key", "FILE", "its private key"};
constexpr Option proofListOption = {OptionKind::text, 0, "crl", "FILE", "with --revocation: a revocation list"};
constexpr Option proofResponseOption = {OptionKind::text, 0, "ocsp", "FILE", "with --revocation: an OCSP response"};
constexpr Option cmsSignOptions[] = {
    messageSignerOption,
    messageKeyOption,
    {OptionKind::text, 0, "certs", "FILE", "further certificates for the message", true},
    proofListOption,
    proofResponseOption,
    {OptionKind::choice, 0, "revocation", "none|pdf|etsi", "where the proof goes (none)"},
    {OptionKind::flag, 0, "embed", "", "put the content into the message"},
    {OptionKind::flag, 0, "signing-time", "", "add the time of signing, that of --at, to what is signed"},
    {OptionKind::flag, 0, "algorithm-protection", "", "add the algorithms to what is signed (RFC 6211)"},
    {OptionKind::text, 0, "at", "TIME", "sign at 2026-11-23T12:00:00Z (now)"},
    signatureHashOption,
    passwordSecret.file,
    passwordSecret.descriptor,
    messageEncodingOption,
    outputOption,
};

/// Ed25519 and Ed448 each go with one hash (RFC 8419).
algorithm::Id HashForKey(const ICryptoKeyPair& key, const Arguments& arguments)
{
    if (arguments.has(signatureHashOption.name))
        return SignatureHash(arguments);
    if (key.curveId() == algorithm::ed25519)
        return algorithm::sha512;
    return key.curveId() == algorithm::ed448 ? algorithm::shake256 : SignatureHash(arguments);
}

int ReadProofs(Invocation& invocation, SCryptoSignature& signature)
{
    const Arguments& arguments = invocation.arguments();
    const std::string where = arguments.value("revocation", "none");
    const bool isGiven = arguments.has(proofListOption.name) || arguments.has(proofResponseOption.name);
    if (isGiven == (where == "none"))
        return invocation.misuse("--revocation goes with --crl or --ocsp");
    if (arguments.values(proofListOption.name).size() > 1 || arguments.values(proofResponseOption.name).size() > 1)
        return invocation.misuse("a signature embeds one list or one response");
    if (arguments.has(proofListOption.name) && arguments.has(proofResponseOption.name))
        invocation.warn(arguments.value(proofListOption.name), "it is not embedded, since the response is");
    signature.embedding =
        where == "pdf" ? RevocationEmbedding::pdf : (where == "etsi" ? RevocationEmbedding::etsi : RevocationEmbedding::none);
    int exit = exitDone;
    if (arguments.has(proofListOption.name)) {
        CrlPtr list;
        exit = ReadList(invocation, arguments.value(proofListOption.name), list);
        if (exit == exitDone)
            signature.crl = list->der();
    }
    if (exit == exitDone && arguments.has(proofResponseOption.name))
        exit = ReadMessage(invocation, arguments.value(proofResponseOption.name), signature.ocspResponse);
    return exit;
}

/// The digest of the file; with `content`, all of it as well.
int ReadContent(Invocation& invocation, const std::string& file, SCryptoSignature& signature, element& content)
{
    std::string reason;
    if (invocation.arguments().has("embed")) {
        if (!ReadWhole(invocation.console(), file, content, reason))
            return invocation.refuse(file, reason);
        signature.content = content.bytes();
        return exitDone;
    }
    const std::unique_ptr<ICryptoHash> hash = ICryptoHash::Create(signature.hash);
    const bool isRead = StreamFile(
        invocation.console(), file, [&](std::span<const std::uint8_t> piece) { hash->update(piece); }, reason);
    if (!isRead)
        return invocation.refuse(file, reason);
    signature.documentDigest = hash->final();
    return exitDone;
}

int SignMessage(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    const std::string file = arguments.fileOperand(0);
    std::vector<std::string> files = arguments.values("certs");
    for (const Option& option : {proofListOption, proofResponseOption})
        files.insert(files.end(), arguments.values(option.name).begin(), arguments.values(option.name).end());
    files.push_back(file);
    IssuerInput signer;
    SCryptoSignature signature;
    element content;
    int exit = ReadTimeOption(invocation, timeOption, signature.now);
    if (exit == exitDone)
        exit = ReadChainAndKey(invocation, messageSignerOption, messageKeyOption, files, signer, signature.extraCertificates);
    for (const std::string& more : arguments.values("certs"))
        if (exit == exitDone)
            exit = ReadCertificates(invocation, more, signature.extraCertificates);
    if (exit == exitDone)
        exit = ReadProofs(invocation, signature);
    if (exit != exitDone)
        return exit;
    signature.signer = signer.certificate;
    signature.key = signer.key.get();
    signature.hash = HashForKey(*signer.key, arguments);
    signature.addsSigningTime = arguments.has("signing-time");
    signature.addsAlgorithmProtection = arguments.has("algorithm-protection");
    if (exit = ReadContent(invocation, file, signature, content); exit != exitDone)
        return exit;
    StartReason();
    const element message = CCryptoPKCS7::ComputeSignature(signature);
    if (message.isEmpty())
        return invocation.refuse(arguments.value(messageKeyOption.name), LastReason("it cannot sign this"));
    return WriteMessage(invocation, message);
}

} // namespace

const Command cmsSignCommand = {"cms", "sign", "signs a file", "[FILE]", 0, 1, cmsSignDetails, cmsSignOptions, SignMessage};

} // namespace ccrypto
