#pragma once

#include "core/base/algorithm.h"
#include "core/text/element.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace ccrypto {

enum class CipherDirection { encrypt, decrypt };

} // namespace ccrypto

/// A cipher in a mode of operation: takes a text in pieces of any length and gives the other text.
///
///     start(direction, key, iv), update(...)..., final(...)
///
/// or encrypt() and decrypt() for a whole text. ECB and CBC pad with PKCS#7 (RFC 5652, 6.3) unless told otherwise; the
/// other modes take any length unpadded. CFB feeds back whole blocks. Galois/counter mode is one of them, too, with the tag of 16
/// bytes after the cipher text (RFC 5116, 5.1), and never lets plain text out before the tag was found right: see
/// crypto/cipher/gcm.h for that, for further data that is authenticated, and for other tags.
///
/// AES takes time that depends on lengths only, and so does removing the padding; whether padding was right becomes public.
/// DES, 3DES, RC2 and RC4 index tables by secrets. Modes other than GCM do not detect a changed text: authenticate the
/// cipher text before decrypting it.
///
/// Failures are logged and give false; what was held is then wiped, and a new text must be started. Nothing secret stays in the
/// object after final() or a failure. Not for use by two threads at once.
class ICryptoCipher {
public:
    /// A new cipher: RC2-CBC, RC4, 3DES-CBC, and AES in each mode that has an id. Owned by the caller. \return null, logged as
    /// "Unsupported cipher: %d", for any other id.
    [[nodiscard]] static std::unique_ptr<ICryptoCipher> Create(ccrypto::algorithm::Id id);
    /// By name, in any case: "aes-128-", "aes-192-" or "aes-256-" with "ecb", "cbc", "ofb", "cfb", "ctr" or "gcm"; "des-",
    /// "des-ede-", "des-ede3-" or "rc2-" with "ecb", "cbc", "ofb" or "cfb"; "rc4". \return null, logged, for any other name.
    [[nodiscard]] static std::unique_ptr<ICryptoCipher> CreateByName(std::string_view name);
    /// The names, in that order.
    static std::span<const char* const> Names();

    virtual ~ICryptoCipher() = default;

    /// Begins a text; one that was not finished is forgotten. \return false for a key or an initialisation vector of a wrong
    /// length.
    [[nodiscard]] virtual bool start(ccrypto::CipherDirection direction, std::span<const std::uint8_t> key,
                                     std::span<const std::uint8_t> iv) = 0;
    /// Takes the next bytes. `out` must hold updateSize(in.size()) bytes and not overlap `in`. \return false, with nothing
    /// written, when no text was started or a limit is passed.
    [[nodiscard]] virtual bool update(std::span<const std::uint8_t> in, std::uint8_t* out, std::size_t& written) = 0;
    /// Ends the text. `out` must hold finalSize() bytes. \return false, with nothing written, when no text was started,
    /// the length does not fit, or padding or tag are wrong.
    [[nodiscard]] virtual bool final(std::uint8_t* out, std::size_t& written) = 0;

    /// The maximum that an update with `length` bytes would write now, and final().
    virtual std::size_t updateSize(std::size_t length) const = 0;
    virtual std::size_t finalSize() const = 0;

    /// PKCS#7 padding, on at first; for the next text. Without it a text must be whole blocks. Means nothing to the modes that take
    /// any length.
    virtual void setPadding(bool) {}
    /// Effective key bits of RC2 (RFC 2268), for the next text; 0, as at first, for those of the key. \return false, logged, for
    /// more than 1024 and for other ciphers.
    [[nodiscard]] virtual bool setEffectiveKeyBits(std::uint32_t bits);

    /// In bytes. A block is 1 byte for what takes any length. Where keys have several lengths, the usual one.
    virtual std::size_t blockSize() const = 0;
    virtual std::size_t ivSize() const = 0;
    virtual std::size_t keySize() const = 0;
    /// none for a cipher without an id, such as AES in counter mode.
    virtual ccrypto::algorithm::Id algorithmId() const = 0;
    /// "aes-128-cbc"
    virtual const char* name() const = 0;

    /// The same, appended to an element of at most 4 GiB.
    [[nodiscard]] bool update(std::span<const std::uint8_t> in, element& out);
    [[nodiscard]] bool final(element& out);
    /// A whole text. `out` is set; on failure it is empty.
    [[nodiscard]] bool encrypt(std::span<const std::uint8_t> key, std::span<const std::uint8_t> iv,
                               std::span<const std::uint8_t> text, element& out);
    [[nodiscard]] bool decrypt(std::span<const std::uint8_t> key, std::span<const std::uint8_t> iv,
                               std::span<const std::uint8_t> text, element& out);

protected:
    ICryptoCipher() = default;
    ICryptoCipher(const ICryptoCipher&) = default;
    ICryptoCipher& operator=(const ICryptoCipher&) = default;

    /// Wipes the state of the text, key included; no text is started then.
    virtual void forget() = 0;

private:
    bool transform(ccrypto::CipherDirection direction, std::span<const std::uint8_t> key, std::span<const std::uint8_t> iv,
                   std::span<const std::uint8_t> text, element& out);
};
