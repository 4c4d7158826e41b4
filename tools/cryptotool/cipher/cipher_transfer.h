#pragma once

#include "core/text/element.h"
#include "crypto/cipher/cipher.h"
#include "crypto/hash/hash.h"
#include "tools/cryptotool/cli/invocation.h"
#include "tools/cryptotool/input/file_input.h"
#include "tools/cryptotool/output/output.h"

#include <memory>
#include <string>
#include <vector>

namespace ccrypto {

/// What a text is encrypted or decrypted with.
struct CipherSetting {
    std::unique_ptr<ICryptoCipher> cipher;
    element key;
    element iv;
    element authenticated; ///< in Galois/counter mode, the additional authenticated data
    bool isFromPassword = false;
};

/// An input whose front can be looked at before it is read.
class CipherInput {
public:
    CipherInput(Console& console, std::string name) : console_(console), name_(std::move(name)) {}

    /// \return false with reason().
    bool open();
    /// Up to `count` bytes from the front, which next() gives again unless skip() leaves them out. \return false with
    /// reason().
    bool peek(std::size_t count, std::span<const std::uint8_t>& front);
    void skip(std::size_t count) { skipped_ = count; }
    std::size_t skipped() const { return skipped_; }
    /// The next piece after what is skipped; empty at the end. \return false with reason().
    bool next(std::span<const std::uint8_t>& piece);
    /// Keeps the digest of every piece from here on: what next() gives after rewind() is then what it gave before, or nothing.
    void remember();
    /// To the front again; only where canRewind(). \return false with reason().
    bool rewind();
    bool canRewind() const { return stream_->size() >= 0; }
    std::int64_t size() const { return stream_->size(); }

    const std::string& name() const { return name_; }
    const std::string& reason() const { return reason_; }

private:
    bool fill(std::size_t count);
    bool isAsBefore();

    Console& console_;
    std::string name_;
    std::string reason_;
    std::unique_ptr<InputStream> stream_;
    std::unique_ptr<ICryptoHash> hash_; ///< null unless pieces are remembered
    std::vector<element> digests_;      ///< of the pieces of the first time
    std::size_t place_ = 0;             ///< of the piece that comes next
    bool isRepeated_ = false;
    element piece_;
    std::size_t held_ = 0; ///< bytes of the piece that next() has not given
    std::size_t skipped_ = 0;
};

/// Sends a header, which may be empty, and the encrypted input to the output. \return the exit code.
int EncryptTo(Invocation& invocation, CipherSetting& setting, CipherInput& input, Output& output,
              std::span<const std::uint8_t> header);
/// Sends the decrypted input to the output. In Galois/counter mode nothing is written before the tag was found right: a file is
/// read twice, and a piece of it that changed in between is not decrypted; what cannot be read twice is kept in memory, up to
/// CCryptoGCM::maxKept.
int DecryptTo(Invocation& invocation, CipherSetting& setting, CipherInput& input, Output& output);

} // namespace ccrypto
