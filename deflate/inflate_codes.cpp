#include "deflate/inflate_decoder.h"

#include <algorithm>

namespace ccrypto {

namespace {

struct FaultTexts {
    const char* overSubscribed;
    const char* incomplete;
};

constexpr FaultTexts codeLengthFaults = {"An over-subscribed set of code length codes", "An incomplete set of code length codes"};
constexpr FaultTexts literalFaults = {"An over-subscribed set of literal and length codes",
                                      "An incomplete set of literal and length codes"};
constexpr FaultTexts distanceFaults = {"An over-subscribed set of distance codes", "An incomplete set of distance codes"};

/// Null when there is no fault.
const char* TextOf(CCryptoHuffman::Fault fault, const FaultTexts& texts)
{
    switch (fault) {
    case CCryptoHuffman::Fault::overSubscribed:
        return texts.overSubscribed;
    case CCryptoHuffman::Fault::incomplete:
        return texts.incomplete;
    default:
        return nullptr;
    }
}

} // namespace

InflateDecoder::Progress InflateDecoder::readCounts()
{
    if (!input_.has(14))
        return Progress::needsInput;
    literalCount_ = input_.take(5) + 257;
    distanceCount_ = input_.take(5) + 1;
    codeLengthCount_ = input_.take(4) + 4;
    if (literalCount_ > deflate::usedLiteralCodes)
        return fail("More than 286 literal and length codes");
    if (distanceCount_ > deflate::usedDistanceCodes)
        return fail("More than 30 distance codes");
    lengths_.fill(0);
    lengthsRead_ = 0;
    step_ = Step::codeLengthLengths;
    return Progress::goesOn;
}

InflateDecoder::Progress InflateDecoder::readCodeLengthLengths()
{
    for (; lengthsRead_ < codeLengthCount_; ++lengthsRead_) {
        if (!input_.has(3))
            return Progress::needsInput;
        lengths_[deflate::codeLengthOrder[lengthsRead_]] = static_cast<std::uint8_t>(input_.take(3));
    }
    const char* const fault = TextOf(codeLengths_.Build({lengths_.data(), deflate::codeLengthCodes}), codeLengthFaults);
    if (fault != nullptr)
        return fail(fault);
    lengths_.fill(0);
    lengthsRead_ = 0;
    step_ = Step::codeLengths;
    return Progress::goesOn;
}

InflateDecoder::Progress InflateDecoder::readCodeLengths()
{
    while (lengthsRead_ < literalCount_ + distanceCount_) {
        input_.refill();
        const CCryptoHuffman::Entry entry = codeLengths_.primary(input_.bits());
        if (entry.allBits() > input_.count())
            return Progress::needsInput;
        if (!entry.isLiteral()) {
            const Progress progress = repeatCodeLength(entry.value());
            if (progress != Progress::goesOn)
                return progress;
            continue;
        }
        input_.drop(entry.allBits());
        lengths_[lengthsRead_++] = static_cast<std::uint8_t>(entry.value());
    }
    return buildCodes();
}

InflateDecoder::Progress InflateDecoder::repeatCodeLength(std::uint32_t code)
{
    const std::uint32_t codeBits = codeLengths_.primary(input_.bits()).allBits();
    const deflate::ValueRun& run = deflate::repeatRuns[code - deflate::repeatPrevious];
    if (input_.count() < codeBits + run.extraBits)
        return Progress::needsInput;
    input_.drop(codeBits);
    const std::uint32_t count = run.base + input_.take(run.extraBits);
    if (code == deflate::repeatPrevious && lengthsRead_ == 0)
        return fail("A code length is repeated before there is one");
    if (lengthsRead_ + count > literalCount_ + distanceCount_)
        return fail("A code length is repeated beyond the last code");
    const std::uint8_t length = code == deflate::repeatPrevious ? lengths_[lengthsRead_ - 1] : std::uint8_t{0};
    std::fill_n(lengths_.begin() + lengthsRead_, count, length);
    lengthsRead_ += count;
    return Progress::goesOn;
}

InflateDecoder::Progress InflateDecoder::buildCodes()
{
    codesAreFixed_ = false;
    if (lengths_[deflate::endOfBlock] == 0)
        return fail("A block without a code for its end");
    const char* fault = TextOf(literals_.Build({lengths_.data(), literalCount_}), literalFaults);
    if (fault == nullptr)
        fault = TextOf(distances_.Build({lengths_.data() + literalCount_, distanceCount_}), distanceFaults);
    if (fault != nullptr)
        return fail(fault);
    step_ = Step::symbols;
    return Progress::goesOn;
}

void InflateDecoder::buildFixedCodes()
{
    if (codesAreFixed_)
        return;
    codesAreFixed_ = true;
    literals_.Build(deflate::fixedLiteralLengths);
    distances_.Build(deflate::fixedDistanceLengths);
}

} // namespace ccrypto
