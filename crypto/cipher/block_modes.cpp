#include "crypto/cipher/block_modes.h"

#include "core/diagnostics/auto_logger.h"
#include "crypto/base/block_bytes.h"
#include "crypto/cipher/padding.h"

#include <algorithm>
#include <cstring>

namespace ccrypto {

bool BlockCipherMode::setEffectiveKeyBits(std::uint32_t bits)
{
    return cipher_->setEffectiveKeyBits(bits) || ICryptoCipher::setEffectiveKeyBits(bits);
}

bool BlockCipherMode::start(CipherDirection direction, std::span<const std::uint8_t> key, std::span<const std::uint8_t> iv)
{
    CCryptoAutoLogger logger("BlockCipherMode::start");

    forget();
    if (key.size() < description_.minKey || key.size() > description_.maxKey)
        return logger.fail(false, "%s has no keys of %zu bytes", name(), key.size());
    if (iv.size() != ivSize())
        return logger.fail(false, "%s needs an initialisation vector of %zu bytes, not %zu", name(), ivSize(), iv.size());
    if (!cipher_->setKey(key))
        return logger.setResult(false);
    std::ranges::copy(iv, chain_.begin());
    direction_ = direction;
    started_ = true;
    return logger.setResult(true);
}

void BlockCipherMode::forget()
{
    started_ = false;
    pendingCount_ = 0;
    platform::SecureWipe(chain_.data(), chain_.size());
    platform::SecureWipe(pending_.data(), pending_.size());
    cipher_->clearKey();
}

bool WholeBlockMode::start(CipherDirection direction, std::span<const std::uint8_t> key, std::span<const std::uint8_t> iv)
{
    padding_ = nextPadding_;
    return BlockCipherMode::start(direction, key, iv);
}

std::size_t WholeBlockMode::updateSize(std::size_t length) const
{
    const std::size_t all = pendingCount_ + length;
    // A last block that may be padding waits for final().
    const bool waits = padding_ && !encrypting() && all > 0;
    return (waits ? all - 1 : all) / cipher().blockSize() * cipher().blockSize();
}

void WholeBlockMode::transform(std::uint8_t* out, const std::uint8_t* in, std::size_t blocks)
{
    if (!chained_)
        encrypting() ? cipher().encrypt(out, in, blocks) : cipher().decrypt(out, in, blocks);
    else
        encrypting() ? cipher().encryptCbc(out, in, blocks, chain_.data()) : cipher().decryptCbc(out, in, blocks, chain_.data());
}

bool WholeBlockMode::update(std::span<const std::uint8_t> in, std::uint8_t* out, std::size_t& written)
{
    written = 0;
    if (!started()) {
        CCryptoAutoLogger logger("WholeBlockMode::update");
        return logger.fail(false, "No text was started");
    }
    const std::size_t size = cipher().blockSize();
    const std::uint8_t* next = in.data();
    std::size_t length = in.size();
    std::size_t left = updateSize(length);
    const auto keep = [&](std::size_t count) {
        if (count != 0)
            std::memcpy(pending_.data() + pendingCount_, next, count);
        pendingCount_ += count;
        next += count;
        length -= count;
    };
    written = left;
    if (left != 0 && pendingCount_ != 0) {
        keep(size - pendingCount_);
        transform(out, pending_.data(), 1);
        pendingCount_ = 0;
        out += size;
        left -= size;
    }
    if (left != 0) {
        transform(out, next, left / size);
        next += left;
        length -= left;
    }
    keep(length);
    return true;
}

bool WholeBlockMode::final(std::uint8_t* out, std::size_t& written)
{
    CCryptoAutoLogger logger("WholeBlockMode::final");

    written = 0;
    const std::size_t size = cipher().blockSize();
    if (!started())
        return logger.fail(false, "No text was started");
    if (!padding_ || !encrypting()) {
        const std::size_t wanted = padding_ ? size : 0;
        if (pendingCount_ != wanted) {
            forget();
            return logger.fail(false, "The text is not made of whole blocks of %zu bytes", size);
        }
    }
    if (padding_ && encrypting()) {
        pkcs7::Pad(pending_.data(), pendingCount_, size);
        transform(out, pending_.data(), 1);
        written = size;
    } else if (padding_) {
        transform(pending_.data(), pending_.data(), 1);
        constant_time::Mask good = constant_time::Mask::False();
        const std::size_t length = pkcs7::TextLength(pending_.data(), size, good);
        if (!constant_time::Declassify(good)) {
            forget();
            return logger.fail(false, "Wrong padding");
        }
        written = constant_time::Declassify(length);
        std::memcpy(out, pending_.data(), written);
    }
    forget();
    return logger.setResult(true);
}

std::size_t StreamMode::takePending(const std::uint8_t* in, std::uint8_t* out, std::size_t length)
{
    const std::size_t size = cipher().blockSize();
    const std::size_t count = std::min(length, pendingCount_);
    const std::size_t from = size - pendingCount_;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t taken = in[i];
        out[i] = static_cast<std::uint8_t>(taken ^ pending_[from + i]);
        if (kind_ == StreamKind::cipherFeedback)
            chain_[from + i] = encrypting() ? out[i] : taken;
    }
    pendingCount_ -= count;
    return count;
}

void StreamMode::nextStreamBlock()
{
    const std::size_t size = cipher().blockSize();
    cipher().encrypt(pending_.data(), chain_.data(), 1);
    if (kind_ == StreamKind::counter)
        block_bytes::Increment(chain_.data(), size);
    else if (kind_ == StreamKind::outputFeedback)
        std::memcpy(chain_.data(), pending_.data(), size);
    pendingCount_ = size;
}

void StreamMode::applyBlocks(const std::uint8_t* in, std::uint8_t* out, std::size_t blocks)
{
    const std::size_t size = cipher().blockSize();
    if (blocks == 0)
        return;
    if (kind_ == StreamKind::counter) {
        cipher().applyCounter(out, in, blocks, chain_.data());
    } else if (kind_ == StreamKind::cipherFeedback && !encrypting()) {
        // All blocks of cipher text are there: their key stream is computed side by side.
        cipher().encrypt(pending_.data(), chain_.data(), 1);
        cipher().encrypt(out + size, in, blocks - 1);
        std::memcpy(chain_.data(), in + (blocks - 1) * size, size);
        block_bytes::Xor(out, in, pending_.data(), size);
        block_bytes::Xor(out + size, out + size, in + size, (blocks - 1) * size);
    } else {
        for (; blocks > 0; --blocks, in += size, out += size) {
            cipher().encrypt(chain_.data(), chain_.data(), 1);
            block_bytes::Xor(out, in, chain_.data(), size);
            if (kind_ == StreamKind::cipherFeedback)
                std::memcpy(chain_.data(), out, size);
        }
    }
}

bool StreamMode::update(std::span<const std::uint8_t> in, std::uint8_t* out, std::size_t& written)
{
    written = 0;
    if (!started()) {
        CCryptoAutoLogger logger("StreamMode::update");
        return logger.fail(false, "No text was started");
    }
    const std::size_t size = cipher().blockSize();
    const std::size_t begun = takePending(in.data(), out, in.size());
    const std::size_t whole = (in.size() - begun) / size;
    applyBlocks(in.data() + begun, out + begun, whole);
    const std::size_t done = begun + whole * size;
    if (done < in.size()) {
        nextStreamBlock();
        takePending(in.data() + done, out + done, in.size() - done);
    }
    written = in.size();
    return true;
}

bool StreamMode::final(std::uint8_t*, std::size_t& written)
{
    CCryptoAutoLogger logger("StreamMode::final");

    written = 0;
    if (!started())
        return logger.fail(false, "No text was started");
    forget();
    return logger.setResult(true);
}

} // namespace ccrypto
