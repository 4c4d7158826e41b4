#include "tools/cryptotool/keys/key_input.h"

#include "asn1/der/pem.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/input/encoding_detection.h"
#include "tools/cryptotool/input/file_input.h"
#include "tools/cryptotool/keys/certificate_key.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace ccrypto {

namespace {

/// Decodes base64 and hexadecimal text; DER and PEM stay unchanged, without a byte order mark. \return false with
/// `reason`.
bool DropTextForm(element& bytes, std::string& reason)
{
    bytes.erase(0, bytes.length() - static_cast<std::uint32_t>(WithoutByteOrderMark(bytes.view()).size()));
    const std::string_view text = bytes.view();
    if (text.empty()) {
        reason = "it is empty";
        return false;
    }
    if (HasPemBlock(text))
        return true;
    element decoded;
    const TextDecoding decoding = DecodeText(text, decoded, reason);
    if (decoding == TextDecoding::decoded)
        bytes = std::move(decoded);
    return decoding != TextDecoding::broken;
}

/// Why no key was loaded. Text of other formats is named, with the program that converts it.
std::string ReasonWithoutKey(std::string_view text)
{
    constexpr std::string_view opensshTypes[] = {"ssh-", "ecdsa-sha2-", "sk-ssh-", "sk-ecdsa-"};
    std::string reason = LastReason("it holds no key");
    if (std::ranges::any_of(opensshTypes, [=](std::string_view type) { return text.starts_with(type); }))
        return "it is a public key in the format of OpenSSH; ssh-keygen -e -m PKCS8 -f FILE converts it";
    // Of PKCS#12 (RFC 7292, 4) and CMS a content type of PKCS#7 is at the front.
    constexpr std::string_view pkcs7Arc = "\x2A\x86\x48\x86\xF7\x0D\x01\x07";
    if (text.starts_with('\x30') && text.substr(0, 40).find(pkcs7Arc) != std::string_view::npos)
        return "it is PKCS#12 or CMS, from which no key is read";
    std::vector<DataBlock> blocks;
    if (!HasPemBlock(text) || !ReadPem(text, blocks))
        return reason;
    const std::string& label = blocks.front().label;
    if (label == "OPENSSH PRIVATE KEY")
        return "it is a private key in the format of OpenSSH; ssh-keygen -p -m PKCS8 -f FILE converts it";
    return std::ranges::any_of(blocks, IsKeyLabel, &DataBlock::label)
               ? reason
               : PemBlockName(1, label) + " is neither a key nor a certificate";
}

/// \param password null for a file whose password is not asked. \return exitDone, or the exit code after the reason was printed.
int Load(Invocation& invocation, const std::string& file, const SecretKind* password, KeyInput& input)
{
    element bytes;
    std::string reason;
    if (!ReadWhole(invocation.console(), file, bytes, reason) || !DropTextForm(bytes, reason))
        return invocation.refuse(file, reason);
    element certified = PublicKeyOfCertificate(bytes.bytes());
    input.isOfCertificate = !certified.isEmpty();
    if (input.isOfCertificate)
        bytes = std::move(certified);

    int passwordExit = exitDone;
    CCryptoKeyFile::PasswordSource ask;
    if (password != nullptr)
        ask = [&](element& secret) {
            passwordExit = ReadSecret(invocation, *password, Asking::once, secret);
            return passwordExit == exitDone;
        };
    CCryptoKeyFile keyFile;
    input.key = keyFile.Load(bytes.bytes(), ask);
    input.form = keyFile.form();
    if (passwordExit != exitDone || input.key != nullptr)
        return passwordExit;
    return invocation.refuse(file, input.isOfCertificate ? LastReason("it holds no key") : ReasonWithoutKey(bytes.view()));
}

} // namespace

int ReadKey(Invocation& invocation, const std::vector<std::string>& files, KeyHalf half, KeyInput& input)
{
    if (const int exit = CheckOneStandardInput(invocation, files, {passwordSecret, newPasswordSecret}); exit != exitDone)
        return exit;
    const std::string& file = files.front();
    if (const int exit = Load(invocation, file, &passwordSecret, input); exit != exitDone)
        return exit;
    const bool isEnough = half == KeyHalf::any || input.key->hasPrivate();
    return isEnough ? exitDone : invocation.refuse(file, "it holds no private key");
}

int ReadPeerKey(Invocation& invocation, const std::string& file, KeyInput& input)
{
    return Load(invocation, file, nullptr, input);
}

} // namespace ccrypto
