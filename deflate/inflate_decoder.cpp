#include "deflate/inflate_decoder.h"

#include <algorithm>
#include <cstring>

namespace ccrypto {

InflateDecoder::InflateDecoder(InflateOutput& output) : output_(output), window_(capacity)
{
    placeLastStart();
}

void InflateDecoder::Restart()
{
    step_ = Step::blockHeader;
    lastBlock_ = false;
    reason_ = "";
    position_ = 0;
    delivered_ = 0;
    placeLastStart();
}

InflateDecoder::Progress InflateDecoder::fail(const char* reason)
{
    reason_ = reason;
    return Progress::failed;
}

const char* InflateDecoder::cutShort() const
{
    switch (step_) {
    case Step::blockHeader:
        return "The data ends before a block";
    case Step::storedLength:
    case Step::storedBytes:
        return "The data ends inside a stored block";
    case Step::counts:
    case Step::codeLengthLengths:
    case Step::codeLengths:
        return "The data ends inside the codes of a block";
    default:
        return "The data ends inside a compressed block";
    }
}

InflateDecoder::Result InflateDecoder::Decode(std::span<const std::uint8_t>& input)
{
    input_.give(input);
    Progress progress = Progress::goesOn;
    while (progress == Progress::goesOn && step_ != Step::done)
        progress = step();
    // Every bit held from an earlier piece belonged to what was cut there, so what is held now came with this one.
    if (step_ == Step::done)
        input_.giveBack();
    input = input_.rest();
    if (!deliver() || progress == Progress::failed)
        return Result::failed;
    if (step_ != Step::done)
        return Result::needsInput;
    return judge() ? Result::done : Result::failed;
}

InflateDecoder::Progress InflateDecoder::step()
{
    switch (step_) {
    case Step::blockHeader:
        return readBlockHeader();
    case Step::storedLength:
        return readStoredLength();
    case Step::storedBytes:
        return copyStored();
    case Step::counts:
        return readCounts();
    case Step::codeLengthLengths:
        return readCodeLengthLengths();
    case Step::codeLengths:
        return readCodeLengths();
    default:
        return readSymbols();
    }
}

InflateDecoder::Progress InflateDecoder::readBlockHeader()
{
    if (!input_.has(3))
        return Progress::needsInput;
    lastBlock_ = input_.take(1) != 0;
    switch (static_cast<deflate::BlockType>(input_.take(2))) {
    case deflate::BlockType::stored:
        input_.dropToByte();
        step_ = Step::storedLength;
        return Progress::goesOn;
    case deflate::BlockType::fixed:
        buildFixedCodes();
        step_ = Step::symbols;
        return Progress::goesOn;
    case deflate::BlockType::dynamic:
        step_ = Step::counts;
        return Progress::goesOn;
    }
    return fail("A block of the reserved type");
}

void InflateDecoder::endBlock()
{
    step_ = lastBlock_ ? Step::done : Step::blockHeader;
}

InflateDecoder::Progress InflateDecoder::readStoredLength()
{
    if (!input_.has(32))
        return Progress::needsInput;
    storedLeft_ = input_.take(16);
    if (input_.take(16) != (storedLeft_ ^ 0xFFFF))
        return fail("The length of a stored block and its complement disagree");
    step_ = Step::storedBytes;
    return Progress::goesOn;
}

InflateDecoder::Progress InflateDecoder::copyStored()
{
    while (storedLeft_ != 0) {
        if (input_.count() != 0) {
            window_[position_++] = static_cast<std::uint8_t>(input_.take(8));
            --storedLeft_;
        } else {
            const std::span<const std::uint8_t> rest = input_.rest();
            if (rest.empty())
                return Progress::needsInput;
            const std::size_t count = std::min({rest.size(), std::size_t{storedLeft_}, lastStart_ + 1 - position_});
            std::memcpy(window_.data() + position_, rest.data(), count);
            position_ += count;
            input_.skip(count);
            storedLeft_ -= static_cast<std::uint32_t>(count);
        }
        if (!keepRoom())
            return Progress::failed;
    }
    endBlock();
    return Progress::goesOn;
}

void InflateDecoder::placeLastStart()
{
    lastStart_ = static_cast<std::size_t>(std::min<std::uint64_t>(latestStart - position_, output_.left())) + position_;
}

bool InflateDecoder::deliver()
{
    const std::span<const std::uint8_t> fresh(window_.data() + delivered_, position_ - delivered_);
    delivered_ = position_;
    const char* const refused = output_.deliver(fresh);
    if (refused != nullptr)
        reason_ = refused;
    return refused == nullptr;
}

bool InflateDecoder::judge()
{
    const char* const refused = output_.judge(input_.consumed());
    if (refused != nullptr)
        reason_ = refused;
    return refused == nullptr;
}

bool InflateDecoder::makeRoom()
{
    if (!deliver() || !judge())
        return false;
    std::memmove(window_.data(), window_.data() + position_ - deflate::windowSize, deflate::windowSize);
    position_ = deflate::windowSize;
    delivered_ = position_;
    placeLastStart();
    return true;
}

} // namespace ccrypto
