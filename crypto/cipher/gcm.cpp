#include "crypto/cipher/gcm.h"

#include "core/diagnostics/auto_logger.h"
#include "crypto/base/block_bytes.h"
#include "crypto/base/constant_time.h"

#include <algorithm>
#include <cstring>

using namespace ccrypto;

namespace {

constexpr std::size_t blockBytes = aes::blockSize;
/// SP 800-38D, 5.2.1.1, in bytes.
constexpr std::uint64_t maxText = (std::uint64_t{1} << 36) - 32;
constexpr std::uint64_t maxData = (std::uint64_t{1} << 61) - 1;

const Variant<gcm::Calls>& ChosenVariant()
{
    static const Variant<gcm::Calls>& chosen = ChooseVariant(gcm::Variants());
    return chosen;
}

} // namespace

namespace ccrypto {

std::span<const Variant<gcm::Calls>> gcm::Variants()
{
    static const Variant<Calls> variants[] = {
        {"portable", cpu::none, portableCalls},
        {"pclmul", cpu::aesNi | cpu::pclmul, pclmulCalls},
        {"vaes", cpu::vaes | cpu::avx2 | cpu::aesNi | cpu::pclmul, vaesCalls},
    };
    return variants;
}

} // namespace ccrypto

CCryptoGCM::CCryptoGCM(const char* name, algorithm::Id id, std::size_t keySize) : CCryptoGCM(name, id, keySize, ChosenVariant()) {}

CCryptoGCM::CCryptoGCM(const char* name, algorithm::Id id, std::size_t keySize, const Variant<gcm::Calls>& variant)
    : name_(name), id_(id), keySize_(keySize), calls_(&variant.calls)
{
}

CCryptoGCM::~CCryptoGCM()
{
    platform::SecureWipe(kept_.data(), kept_.length());
}

bool CCryptoGCM::setTagLength(std::size_t length)
{
    CCryptoAutoLogger logger("CCryptoGCM::setTagLength");

    if (length != 4 && length != 8 && (length < 12 || length > maxTag))
        return logger.fail(false, "A tag has 4, 8 or 12 to 16 bytes, not %zu", length);
    nextTagLength_ = length;
    return logger.setResult(true);
}

bool CCryptoGCM::start(CipherDirection direction, std::span<const std::uint8_t> key, std::span<const std::uint8_t> iv)
{
    return begin(direction == CipherDirection::encrypt ? State::encrypting : State::keeping, key, iv);
}

bool CCryptoGCM::startCheck(std::span<const std::uint8_t> key, std::span<const std::uint8_t> iv)
{
    return begin(State::checking, key, iv);
}

bool CCryptoGCM::begin(State state, std::span<const std::uint8_t> key, std::span<const std::uint8_t> iv)
{
    CCryptoAutoLogger logger("CCryptoGCM::begin");

    forget();
    if (key.size() != keySize_)
        return logger.fail(false, "%s has no keys of %zu bytes", name_, key.size());
    if (iv.empty() || iv.size() > maxData)
        return logger.fail(false, "%s needs an initialisation vector of 1 byte at least", name_);
    tagLength_ = nextTagLength_;
    calls_->cipher->expandKey(cipherKey_, key.data(), key.size());
    Wiped<Block> subkey{};
    calls_->cipher->encrypt(cipherKey_, subkey.data(), subkey.data(), 1);
    calls_->expandHashKey(hashKey_, subkey.data());
    computeFirstCounter(iv);
    state_ = state;
    return logger.setResult(true);
}

/// SP 800-38D, 7.1, steps 2 and 3.
void CCryptoGCM::computeFirstCounter(std::span<const std::uint8_t> iv)
{
    firstCounter_.fill(0);
    if (iv.size() == 12) {
        std::ranges::copy(iv, firstCounter_.begin());
        firstCounter_.back() = 1;
    } else {
        hashPadded(iv);
        hashPartial();
        Block lengths{};
        block_bytes::Store64(lengths.data() + 8, 8 * std::uint64_t{iv.size()});
        calls_->hash(hashKey_, text_.hash.data(), lengths.data(), 1);
        std::ranges::copy(text_.hash, firstCounter_.begin());
        text_.hash = {};
    }
    text_.counter = firstCounter_;
    block_bytes::Increment(text_.counter.data() + 12, 4);
}

void CCryptoGCM::hashPadded(std::span<const std::uint8_t> bytes)
{
    if (text_.partialCount != 0) {
        const std::size_t count = std::min(bytes.size(), blockBytes - text_.partialCount);
        std::copy_n(bytes.begin(), count, text_.partial.begin() + static_cast<std::ptrdiff_t>(text_.partialCount));
        text_.partialCount += count;
        bytes = bytes.subspan(count);
        if (text_.partialCount == blockBytes)
            hashPartial();
    }
    const std::size_t blocks = bytes.size() / blockBytes;
    calls_->hash(hashKey_, text_.hash.data(), bytes.data(), blocks);
    bytes = bytes.subspan(blocks * blockBytes);
    if (!bytes.empty()) {
        std::ranges::copy(bytes, text_.partial.begin());
        text_.partialCount = bytes.size();
    }
}

void CCryptoGCM::hashPartial()
{
    if (text_.partialCount == 0)
        return;
    std::fill(text_.partial.begin() + static_cast<std::ptrdiff_t>(text_.partialCount), text_.partial.end(), std::uint8_t{0});
    calls_->hash(hashKey_, text_.hash.data(), text_.partial.data(), 1);
    text_.partialCount = 0;
}

bool CCryptoGCM::addAuthenticated(std::span<const std::uint8_t> data)
{
    CCryptoAutoLogger logger("CCryptoGCM::addAuthenticated");

    const bool begun = state_ == State::encrypting || state_ == State::keeping || state_ == State::checking;
    if (!begun || text_.textBegun || data.size() > maxData - text_.dataLength) {
        forget();
        return logger.fail(false, "Authenticated data comes after the start and before the text, and has an end");
    }
    text_.dataLength += data.size();
    hashPadded(data);
    return logger.setResult(true);
}

void CCryptoGCM::beginText()
{
    if (text_.textBegun)
        return;
    hashPartial();
    text_.textBegun = true;
    first_ = text_;
}

bool CCryptoGCM::startChecked()
{
    CCryptoAutoLogger logger("CCryptoGCM::startChecked");

    if (state_ != State::checked)
        return logger.fail(false, "No text was checked");
    text_ = first_;
    state_ = State::decrypting;
    return logger.setResult(true);
}

void CCryptoGCM::processBytes(const std::uint8_t* in, std::uint8_t* out, std::size_t length)
{
    for (std::size_t i = 0; i < length; ++i, ++text_.partialCount) {
        const auto other = static_cast<std::uint8_t>(in[i] ^ text_.stream[text_.partialCount]);
        text_.partial[text_.partialCount] = state_ == State::encrypting ? other : in[i];
        if (out != nullptr)
            out[i] = other;
    }
    if (text_.partialCount == blockBytes)
        hashPartial();
}

void CCryptoGCM::process(const std::uint8_t* in, std::uint8_t* out, std::size_t length)
{
    text_.textLength += length;
    const auto advance = [&](std::size_t count) {
        in += count;
        out = out == nullptr ? nullptr : out + count;
        length -= count;
    };
    if (text_.partialCount != 0) {
        const std::size_t count = std::min(length, blockBytes - text_.partialCount);
        processBytes(in, out, count);
        advance(count);
    }
    const std::size_t blocks = length / blockBytes;
    if (out == nullptr)
        calls_->hash(hashKey_, text_.hash.data(), in, blocks);
    else
        (state_ == State::encrypting ? calls_->encrypt : calls_->decrypt)(cipherKey_, hashKey_, text_.hash.data(),
                                                                          text_.counter.data(), out, in, blocks);
    advance(blocks * blockBytes);
    if (length != 0) {
        if (out != nullptr) {
            calls_->cipher->encrypt(cipherKey_, text_.stream.data(), text_.counter.data(), 1);
            block_bytes::Increment(text_.counter.data() + 12, 4);
        }
        processBytes(in, out, length);
    }
}

/// Processes all but the last bytes, which may be the tag. \return the number of bytes processed.
std::size_t CCryptoGCM::processAllButTag(std::span<const std::uint8_t> in, std::uint8_t* out)
{
    const std::size_t all = text_.endCount + in.size();
    const std::size_t count = all > tagLength_ ? all - tagLength_ : 0;
    const std::size_t fromEnd = std::min(count, text_.endCount);
    if (fromEnd != 0) {
        process(text_.end.data(), out, fromEnd);
        text_.endCount -= fromEnd;
        std::memmove(text_.end.data(), text_.end.data() + fromEnd, text_.endCount);
    }
    const std::size_t fromInput = count - fromEnd;
    if (fromInput != 0)
        process(in.data(), out == nullptr ? nullptr : out + fromEnd, fromInput);
    const auto rest = in.subspan(fromInput);
    std::ranges::copy(rest, text_.end.begin() + static_cast<std::ptrdiff_t>(text_.endCount));
    text_.endCount += rest.size();
    return count;
}

bool CCryptoGCM::takes(std::size_t length) const
{
    const std::uint64_t sofar = text_.textLength + text_.endCount + kept_.length();
    const std::uint64_t tag = state_ == State::encrypting ? 0 : tagLength_;
    const std::uint64_t maxLength = (state_ == State::keeping ? maxKept : maxText) + tag;
    return length <= maxLength - std::min(maxLength, sofar);
}

bool CCryptoGCM::update(std::span<const std::uint8_t> in, std::uint8_t* out, std::size_t& written)
{
    written = 0;
    if (state_ == State::idle || state_ == State::checked) {
        CCryptoAutoLogger logger("CCryptoGCM::update");
        return logger.fail(false, "No text was started");
    }
    if (!takes(in.size())) {
        CCryptoAutoLogger logger("CCryptoGCM::update");
        const bool keeping = state_ == State::keeping;
        forget();
        return keeping ? logger.fail(false,
                                     "More than %zu bytes, which are kept until the tag was checked: text that can be read twice "
                                     "has no such limit",
                                     maxKept)
                       : logger.fail(false, "The text is too long for one initialisation vector");
    }
    beginText();
    switch (state_) {
    case State::encrypting:
        process(in.data(), out, in.size());
        written = in.size();
        break;
    case State::keeping:
        kept_.append(in.data(), static_cast<std::uint32_t>(in.size()));
        break;
    case State::checking:
        processAllButTag(in, nullptr);
        break;
    default:
        written = processAllButTag(in, out);
        break;
    }
    return true;
}

std::size_t CCryptoGCM::updateSize(std::size_t length) const
{
    if (state_ == State::encrypting)
        return length;
    const std::size_t all = text_.endCount + length;
    return state_ == State::decrypting && all > tagLength_ ? all - tagLength_ : 0;
}

std::size_t CCryptoGCM::finalSize() const
{
    if (state_ == State::encrypting)
        return tagLength_;
    return state_ == State::keeping && kept_.length() > tagLength_ ? kept_.length() - tagLength_ : 0;
}

void CCryptoGCM::computeTag(Block& tag)
{
    hashPartial();
    Block lengths{};
    block_bytes::Store64(lengths.data(), 8 * text_.dataLength);
    block_bytes::Store64(lengths.data() + 8, 8 * text_.textLength);
    calls_->hash(hashKey_, text_.hash.data(), lengths.data(), 1);
    calls_->cipher->encrypt(cipherKey_, tag.data(), firstCounter_.data(), 1);
    block_bytes::Xor(tag.data(), tag.data(), text_.hash.data(), blockBytes);
}

bool CCryptoGCM::tagFits(const std::uint8_t* tag)
{
    Wiped<Block> right{};
    computeTag(right);
    return constant_time::Declassify(constant_time::EqualBytes(right.data(), tag, tagLength_));
}

/// The plain text is made in our own buffer, and leaves it when the tag is right.
bool CCryptoGCM::finishKept(std::uint8_t* out, std::size_t& written)
{
    if (kept_.length() < tagLength_)
        return false;
    const std::size_t length = kept_.length() - tagLength_;
    process(kept_.data(), kept_.data(), length);
    if (!tagFits(kept_.data() + length))
        return false;
    if (length != 0)
        std::memcpy(out, kept_.data(), length);
    written = length;
    return true;
}

bool CCryptoGCM::final(std::uint8_t* out, std::size_t& written)
{
    CCryptoAutoLogger logger("CCryptoGCM::final");

    written = 0;
    if (state_ == State::idle || state_ == State::checked)
        return logger.fail(false, "No text was started");
    beginText();
    bool ok = true;
    if (state_ == State::encrypting) {
        Wiped<Block> tag{};
        computeTag(tag);
        std::copy_n(tag.begin(), tagLength_, out);
        written = tagLength_;
    } else if (state_ == State::keeping) {
        ok = finishKept(out, written);
    } else {
        ok = text_.endCount == tagLength_ && tagFits(text_.end.data());
    }
    if (ok && state_ == State::checking)
        state_ = State::checked;
    else
        forget();
    return ok ? logger.setResult(true)
              : logger.fail(false, "The tag is wrong: the text was changed, or the key, the password or the vector is another one");
}

void CCryptoGCM::forget()
{
    state_ = State::idle;
    platform::SecureWipe(&cipherKey_, sizeof cipherKey_);
    platform::SecureWipe(&hashKey_, sizeof hashKey_);
    platform::SecureWipe(&text_, sizeof text_);
    platform::SecureWipe(&first_, sizeof first_);
    platform::SecureWipe(&firstCounter_, sizeof firstCounter_);
    kept_.clear();
}
