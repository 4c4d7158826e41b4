#include "tools/cryptotool/keys/key_input.h"

#include "asn1/der/pem.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/input/encoding_detection.h"
#include "tools/cryptotool/input/file_input.h"

namespace ccrypto {

namespace {

/// The bytes that base64 or hexadecimal text stands for; DER and PEM stay unchanged, without a byte order mark. \return false with
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

} // namespace

int ReadKey(Invocation& invocation, const std::vector<std::string>& files, KeyHalf half, KeyInput& input)
{
    if (const int exit = CheckOneStandardInput(invocation, files, {passwordSecret, newPasswordSecret}); exit != exitDone)
        return exit;
    const std::string& file = files.front();
    element bytes;
    std::string reason;
    if (!ReadWhole(invocation.console(), file, bytes, reason) || !DropTextForm(bytes, reason))
        return invocation.refuse(file, reason);
    int passwordExit = exitDone;
    CCryptoKeyFile keyFile;
    input.key = keyFile.Load(bytes.bytes(), [&](element& password) {
        passwordExit = ReadSecret(invocation, passwordSecret, Asking::once, password);
        return passwordExit == exitDone;
    });
    input.form = keyFile.form();
    if (passwordExit != exitDone)
        return passwordExit;
    if (input.key == nullptr)
        return invocation.refuse(file, Reason("it holds no key"));
    const bool isEnough = half == KeyHalf::any || input.key->hasPrivate();
    return isEnough ? exitDone : invocation.refuse(file, "it holds no private key");
}

} // namespace ccrypto
