#include "tools/cryptotool/cipher/cipher_transfer.h"

#include "core/base/algorithm.h"
#include "crypto/cipher/gcm.h"
#include "tools/cryptotool/cli/progress.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/input/secret_input.h"

#include <algorithm>

namespace ccrypto {

namespace {

constexpr std::size_t cipherPieceSize = 1U << 18;

int RefuseText(Invocation& invocation, const CipherInput& input)
{
    return invocation.refuse(input.name(), LastReason("it cannot be processed"));
}

/// The key or the vector is not one of the cipher, whatever the text.
int RefuseStart(Invocation& invocation)
{
    return invocation.refuse(NameOfSecret(invocation.arguments(), keySecret), LastReason("the cipher cannot be started"));
}

/// The end of the text is not right. Of wrong padding the library does not know what it means; GCM says it by itself.
int RefuseEnd(Invocation& invocation, const CipherSetting& setting, const CipherInput& input)
{
    if (dynamic_cast<const CCryptoGCM*>(setting.cipher.get()) != nullptr)
        return RefuseText(invocation, input);
    const char* const secret = setting.isFromPassword ? "password" : "key";
    return invocation.refuse(input.name(),
                             LastReason("it cannot be processed") + "; the " + secret + " may be wrong, or the file damaged");
}

/// Takes the whole input through a cipher that was started. \param output null when no text comes out.
int Run(Invocation& invocation, const CipherSetting& setting, CipherInput& input, Output* output, Progress& progress)
{
    ICryptoCipher& cipher = *setting.cipher;
    element text;
    text.reserve(cipherPieceSize + 64);
    const auto write = [&](std::size_t count) { return output == nullptr || output->write(std::span(text.data(), count)); };
    std::size_t written = 0;
    std::span<const std::uint8_t> piece;
    do {
        if (!input.next(piece))
            return invocation.refuse(input.name(), input.reason());
        if (!cipher.update(piece, text.data(), written))
            return RefuseText(invocation, input);
        if (!write(written))
            return invocation.refuse(output->name(), output->reason());
        progress.add(piece.size());
    } while (!piece.empty());
    text.reserve(static_cast<std::uint32_t>(cipher.finalSize()));
    if (!cipher.final(text.data(), written))
        return RefuseEnd(invocation, setting, input);
    return write(written) ? exitDone : invocation.refuse(output->name(), output->reason());
}

int Finish(Invocation& invocation, Output& output, int code)
{
    if (code != exitDone || output.finish())
        return code;
    return RefuseOutput(invocation, output);
}

/// The first of two passes: whether the tag is right.
int Check(Invocation& invocation, CCryptoGCM& gcm, const CipherSetting& setting, CipherInput& input, Progress& progress)
{
    if (!gcm.startCheck(setting.key.bytes(), setting.iv.bytes()) || !gcm.addAuthenticated(setting.authenticated.bytes()))
        return RefuseStart(invocation);
    return Run(invocation, setting, input, nullptr, progress);
}

} // namespace

bool CipherInput::open()
{
    stream_ = std::make_unique<InputStream>(console_);
    piece_.resize(cipherPieceSize);
    held_ = 0;
    if (stream_->open(name_))
        return true;
    reason_ = stream_->reason();
    return false;
}

void CipherInput::remember()
{
    hash_ = ICryptoHash::Create(algorithm::sha256);
}

bool CipherInput::rewind()
{
    isRepeated_ = true;
    place_ = 0;
    return open();
}

/// Reads on until the piece holds so many bytes or the input ends.
bool CipherInput::fill(std::size_t count)
{
    while (held_ < count) {
        const std::int64_t more = stream_->read(std::span(piece_.data() + held_, piece_.length() - held_));
        if (more < 0) {
            reason_ = stream_->reason();
            return false;
        }
        if (more == 0)
            break;
        held_ += static_cast<std::size_t>(more);
    }
    return true;
}

/// Keeps the digest of the piece, or compares it with the one kept before.
bool CipherInput::isAsBefore()
{
    element digest = hash_->digestOf(piece_.bytes().first(held_));
    if (!isRepeated_) {
        digests_.push_back(std::move(digest));
        return true;
    }
    const std::size_t place = place_++;
    if (place < digests_.size() && digests_[place] == digest)
        return true;
    reason_ = "it changed while it was read";
    return false;
}

bool CipherInput::peek(std::size_t count, std::span<const std::uint8_t>& front)
{
    if (!fill(count))
        return false;
    front = piece_.bytes().first(std::min(count, held_));
    return true;
}

bool CipherInput::next(std::span<const std::uint8_t>& piece)
{
    // Pieces are the same each time only when they are as long as they can be.
    if (!fill(hash_ != nullptr ? piece_.length() : skipped_ + 1) || (hash_ != nullptr && !isAsBefore()))
        return false;
    const std::size_t from = std::min(skipped_, held_);
    piece = piece_.bytes().first(held_).subspan(from);
    held_ = 0;
    skipped_ = 0;
    return true;
}

int EncryptTo(Invocation& invocation, CipherSetting& setting, CipherInput& input, Output& output,
              std::span<const std::uint8_t> header)
{
    StartReason();
    auto* const gcm = dynamic_cast<CCryptoGCM*>(setting.cipher.get());
    if (!setting.cipher->start(CipherDirection::encrypt, setting.key.bytes(), setting.iv.bytes()) ||
        (gcm != nullptr && !gcm->addAuthenticated(setting.authenticated.bytes())))
        return RefuseStart(invocation);
    if (!output.open() || !output.write(header))
        return RefuseOutput(invocation, output);
    Progress progress(invocation.console(), input.size());
    return Finish(invocation, output, Run(invocation, setting, input, &output, progress));
}

int DecryptTo(Invocation& invocation, CipherSetting& setting, CipherInput& input, Output& output)
{
    StartReason();
    ICryptoCipher& cipher = *setting.cipher;
    auto* const gcm = dynamic_cast<CCryptoGCM*>(&cipher);
    const bool twice = gcm != nullptr && input.canRewind();
    Progress progress(invocation.console(), twice ? 2 * input.size() : input.size());
    if (twice) {
        // What went to standard output cannot be taken back when the file is another one the second time.
        input.remember();
        const std::size_t header = input.skipped();
        if (const int code = Check(invocation, *gcm, setting, input, progress); code != exitDone)
            return code;
        if (!input.rewind())
            return invocation.refuse(input.name(), input.reason());
        input.skip(header);
        if (!gcm->startChecked())
            return RefuseText(invocation, input);
    } else if (!cipher.start(CipherDirection::decrypt, setting.key.bytes(), setting.iv.bytes()) ||
               (gcm != nullptr && !gcm->addAuthenticated(setting.authenticated.bytes()))) {
        return RefuseStart(invocation);
    }
    if (!output.open())
        return RefuseOutput(invocation, output);
    return Finish(invocation, output, Run(invocation, setting, input, &output, progress));
}

} // namespace ccrypto
