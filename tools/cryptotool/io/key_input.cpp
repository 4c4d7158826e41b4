#include "tools/cryptotool/io/key_input.h"

#include "asn1/der/pem.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/io/input.h"

namespace ccrypto {

namespace {

/// The bytes that base64 stands for; DER and PEM stay as they are, without a byte order mark. \return false with `reason`.
bool DropBase64(element& bytes, std::string& reason)
{
    bytes.erase(0, bytes.length() - static_cast<std::uint32_t>(WithoutByteOrderMark(bytes.view()).size()));
    const std::string_view text = bytes.view();
    if (text.empty()) {
        reason = "it is empty";
        return false;
    }
    if (HasPemBlock(text) || !IsBase64Text(text))
        return true;
    element decoded;
    if (!DecodeBase64(text, decoded, reason))
        return false;
    bytes = std::move(decoded);
    return true;
}

} // namespace

int ReadKey(Invocation& invocation, const std::string& file, KeyInput& input)
{
    element bytes;
    std::string reason;
    if (!ReadWhole(invocation.console(), file, bytes, reason) || !DropBase64(bytes, reason))
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
    if (input.key != nullptr)
        return exitDone;
    return invocation.refuse(file, Reason("it holds no key"));
}

} // namespace ccrypto
