#include "tools/cryptotool/cli/command_table.h"

#include "tools/cryptotool/cli/command.h"

namespace ccrypto {

namespace {

const Command* const commandTable[] = {
    &asn1ShowCommand,  &asn1BuildCommand,  &asn1MatchCommand,   &asn1GetCommand,    &cipherEncCommand,  &cipherDecCommand,
    &oidCommand,       &gzipCommand,       &gunzipCommand,      &hashCommand,       &macCommand,        &randomCommand,
    &speedCommand,     &keyGenCommand,     &keyShowCommand,     &keyPublicCommand,  &keyConvertCommand, &keySignCommand,
    &keyVerifyCommand, &keyEncryptCommand, &keyDecryptCommand,  &keyAgreeCommand,   &certShowCommand,   &certVerifyCommand,
    &certBuildCommand, &crlShowCommand,    &crlVerifyCommand,   &crlFindCommand,    &crlBuildCommand,   &csrShowCommand,
    &csrBuildCommand,  &csrVerifyCommand,  &ocspRequestCommand, &ocspShowCommand,   &ocspVerifyCommand, &ocspRespondCommand,
    &cmsShowCommand,   &cmsSignCommand,    &cmsVerifyCommand,   &cmsEncryptCommand, &cmsDecryptCommand, &p12ShowCommand,
    &p12ImportCommand, &p12ExportCommand,  &completionCommand,  &manualCommand,
};

constexpr Noun nounTable[] = {
    {"asn1", "show, build and match DER"},
    {"cipher", "encrypt and decrypt files with a password or a key"},
    {"key", "make, show and convert keys; sign, verify, encrypt and agree with them"},
    {"cert", "show, verify and issue certificates"},
    {"crl", "show, verify, search and issue revocation lists"},
    {"csr", "show, verify and make certificate requests"},
    {"ocsp", "ask for the status of certificates, verify responses, and make them"},
    {"cms", "sign files and verify, encrypt and decrypt messages"},
    {"p12", "show, read and make files of keys and certificates (PKCS#12)"},
};

} // namespace

std::span<const Command* const> Commands()
{
    return commandTable;
}

std::span<const Noun> Nouns()
{
    return nounTable;
}

} // namespace ccrypto
