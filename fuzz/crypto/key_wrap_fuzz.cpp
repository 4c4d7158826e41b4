#include "crypto/cipher/key_wrap.h"
#include "fuzz/require.h"

#include <algorithm>
#include <span>

using namespace ccrypto;

namespace {

using Bytes = CCryptoKeyWrap::Bytes;

struct WrapForm {
    element (*wrap)(Bytes key, Bytes secret);
    element (*unwrap)(Bytes key, Bytes wrapped);
};

constexpr WrapForm forms[] = {
    {CCryptoKeyWrap::Wrap, CCryptoKeyWrap::Unwrap},
    {CCryptoKeyWrap::WrapPadded, CCryptoKeyWrap::UnwrapPadded},
};

bool AreSame(const element& value, Bytes bytes)
{
    return std::ranges::equal(value.bytes(), bytes);
}

} // namespace

/// A key of 16 bytes, then what is wrapped, and what is unwrapped.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t keyLength = 16;
    if (size < keyLength)
        return 0;
    const Bytes key(data, keyLength);
    const Bytes rest(data + keyLength, size - keyLength);
    for (const WrapForm& form : forms) {
        const element wrapped = form.wrap(key, rest);
        Require(wrapped.isEmpty() || AreSame(form.unwrap(key, wrapped.bytes()), rest));
        // Nothing has two wrapped forms.
        const element secret = form.unwrap(key, rest);
        Require(secret.isEmpty() || AreSame(form.wrap(key, secret.bytes()), rest));
    }
    return 0;
}
