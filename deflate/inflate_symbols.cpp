#include "deflate/inflate_decoder.h"

#include <cstring>

namespace ccrypto {

namespace {

constexpr const char* badLiteral = "A code that is not a literal or length";
constexpr const char* badDistance = "A code that is not a distance";
constexpr const char* distanceTooFar = "A distance beyond the start of the data";

/// What the fast loop may read in one round.
constexpr std::size_t roundInput = 24;

/// Copies 16 bytes at a time; up to 15 bytes after the match are overwritten.
inline void CopyWide(std::uint8_t* target, const std::uint8_t* source, std::uint32_t length)
{
    const std::uint8_t* const end = target + length;
    do {
        std::memcpy(target, source, 16);
        target += 16;
        source += 16;
    } while (target < end);
}

/// A match that overlaps itself within 16 bytes; up to 15 bytes after it are overwritten.
inline void CopyNear(std::uint8_t* target, std::uint32_t distance, std::uint32_t length)
{
    const std::uint8_t* const source = target - distance;
    std::uint8_t* const end = target + length;
    if (distance == 1) {
        std::memset(target, *source, length);
        return;
    }
    // The bytes before the target repeat; each store is right in its first `distance` bytes, and the next one puts the rest right.
    const std::uint32_t stride = distance < 8 ? distance : 8;
    if (distance < 8) {
        const std::uint64_t pattern = LoadLittleEndian<std::uint64_t>(source);
        for (; target < end; target += stride)
            StoreLittleEndian(target, pattern);
        return;
    }
    for (const std::uint8_t* from = source; target < end; target += stride, from += stride)
        std::memcpy(target, from, 8);
}

} // namespace

InflateDecoder::Progress InflateDecoder::readSymbols()
{
    while (step_ == Step::symbols) {
        // The symbol that takes the last room is read by itself: what a round of the fast loop takes in depends on how the input is
        // cut.
        const bool mayRunFast = input_.rest().size() >= roundInput && position_ + roundOutput <= lastStart_;
        const Progress progress = mayRunFast ? readManySymbols() : readOneSymbol();
        if (progress != Progress::goesOn)
            return progress;
        if (!keepRoom())
            return Progress::failed;
    }
    return Progress::goesOn;
}

InflateDecoder::Progress InflateDecoder::readOneSymbol()
{
    input_.refill();
    const CCryptoHuffman::Entry entry = literals_.find(input_.bits());
    if (entry.allBits() > input_.count())
        return Progress::needsInput;
    if (entry.isInvalid()) {
        input_.drop(entry.allBits());
        return fail(badLiteral);
    }
    if (entry.isLiteral() || entry.isEndOfBlock()) {
        input_.drop(entry.allBits());
        if (entry.isLiteral())
            window_[position_++] = static_cast<std::uint8_t>(entry.value());
        else
            endBlock();
        return Progress::goesOn;
    }

    const std::uint64_t bits = input_.bits() >> entry.allBits();
    const CCryptoHuffman::Entry far = distances_.find(bits);
    const std::uint32_t used = entry.allBits() + far.allBits();
    if (used > input_.count())
        return Progress::needsInput;
    const std::uint32_t length = entry.valueOf(input_.bits());
    const std::uint32_t distance = far.valueOf(bits);
    if (far.isInvalid() || distance > position_) {
        input_.drop(entry.allBits());
        return fail(far.isInvalid() ? badDistance : distanceTooFar);
    }
    input_.drop(used);
    for (const std::size_t end = position_ + length; position_ < end; ++position_)
        window_[position_] = window_[position_ - distance];
    return Progress::goesOn;
}

InflateDecoder::Progress InflateDecoder::readManySymbols()
{
    const std::uint8_t* in = input_.rest().data();
    const std::uint8_t* const lastIn = in + input_.rest().size() - roundInput;
    std::uint64_t bits = input_.bits();
    std::uint32_t count = input_.count();
    std::uint8_t* const window = window_.data();
    std::uint8_t* out = window + position_;
    const std::uint8_t* const lastOut = window + lastStart_ - roundOutput;
    const char* fault = nullptr;
    bool ended = false;

    // Leaves 56 to 63 bits. Those above the count are bits of the input, too, which the next turn lays over themselves.
    const auto refill = [&] {
        bits |= LoadLittleEndian<std::uint64_t>(in) << count;
        in += (63 - count) >> 3;
        count |= 56;
    };
    const auto drop = [&](CCryptoHuffman::Entry entry) {
        bits >>= entry.allBits();
        count -= entry.allBits();
    };

    refill();
    CCryptoHuffman::Entry entry = literals_.primary(bits);
    do {
        // 56 bits hold two literals of the primary table and a length, or three literals.
        if (entry.isLiteral()) {
            drop(entry);
            *out++ = static_cast<std::uint8_t>(entry.value());
            entry = literals_.primary(bits);
            if (entry.isLiteral()) {
                drop(entry);
                *out++ = static_cast<std::uint8_t>(entry.value());
                entry = literals_.primary(bits);
            }
        }
        if (entry.isLink())
            entry = literals_.secondary(entry, bits);
        if (entry.isLiteral()) {
            drop(entry);
            *out++ = static_cast<std::uint8_t>(entry.value());
            refill();
            entry = literals_.primary(bits);
            continue;
        }
        if (entry.isSpecial()) {
            ended = entry.isEndOfBlock();
            fault = ended ? nullptr : badLiteral;
            drop(entry);
            break;
        }
        const std::uint32_t length = entry.valueOf(bits);
        drop(entry);
        refill();
        const CCryptoHuffman::Entry far = distances_.find(bits);
        const std::uint32_t distance = far.valueOf(bits);
        if (far.isInvalid() || distance > static_cast<std::size_t>(out - window)) {
            fault = far.isInvalid() ? badDistance : distanceTooFar;
            break;
        }
        drop(far);
        refill();
        entry = literals_.primary(bits);
        if (distance >= 16)
            CopyWide(out, out - distance, length);
        else
            CopyNear(out, distance, length);
        out += length;
    } while (in <= lastIn && out <= lastOut);

    position_ = static_cast<std::size_t>(out - window);
    input_.resume(in, bits, count);
    if (fault != nullptr)
        return fail(fault);
    if (ended)
        endBlock();
    return Progress::goesOn;
}

} // namespace ccrypto
