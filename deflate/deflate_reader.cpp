#include "deflate/deflate_reader.h"

#include "core/base/byte_order.h"

#include <algorithm>
#include <utility>

namespace ccrypto {

DeflateReader::DeflateReader(DeflateFormat format, DeflateSink sink, const InflateLimits& limits)
    : format_(format), output_(std::move(sink), limits), decoder_(output_),
      step_(format == DeflateFormat::raw ? Step::body : Step::start)
{
}

bool DeflateReader::fail(const char* reason)
{
    step_ = Step::failed;
    reason_ = reason;
    return false;
}

bool DeflateReader::Write(std::span<const std::uint8_t> piece)
{
    if (step_ == Step::failed)
        return false;
    if (step_ == Step::finished) {
        reasonOffset_ = given_;
        return fail("The data has ended already");
    }
    given_ += piece.size();
    while (!piece.empty()) {
        if (!step(piece)) {
            reasonOffset_ = given_ - piece.size() - decoder_.heldBytes();
            return false;
        }
    }
    return true;
}

bool DeflateReader::step(std::span<const std::uint8_t>& input)
{
    switch (step_) {
    case Step::start:
    case Step::header:
        return readHeader(input);
    case Step::body:
        return readBody(input);
    case Step::trailer:
        return readTrailer(input);
    case Step::padding:
        return readPadding(input);
    default:
        break;
    }
    // After a member comes another, or padding, or nothing.
    if (format_ == DeflateFormat::gzip && input.front() == CCryptoGZIPHeader::firstMark)
        return readHeader(input);
    return readPadding(input);
}

bool DeflateReader::readPadding(std::span<const std::uint8_t>& input)
{
    if (format_ == DeflateFormat::gzip) {
        step_ = Step::padding;
        const auto other = std::find_if(input.begin(), input.end(), [](std::uint8_t byte) { return byte != 0; });
        input = {other, input.end()};
    }
    return input.empty() ? true : fail("Bytes after the end of the data");
}

bool DeflateReader::readHeader(std::span<const std::uint8_t>& input)
{
    step_ = Step::header;
    while (!input.empty()) {
        const CCryptoGZIPHeader::Result result = nextHeader_.Read(input.front());
        if (result == CCryptoGZIPHeader::Result::failed)
            return fail(nextHeader_.reason());
        input = input.subspan(1);
        if (result == CCryptoGZIPHeader::Result::complete) {
            header_ = std::move(nextHeader_);
            decoder_.Restart();
            output_.startMember();
            step_ = Step::body;
            break;
        }
    }
    return true;
}

bool DeflateReader::readBody(std::span<const std::uint8_t>& input)
{
    switch (decoder_.Decode(input)) {
    case InflateDecoder::Result::failed:
        return fail(decoder_.reason());
    case InflateDecoder::Result::done:
        trailerRead_ = 0;
        step_ = format_ == DeflateFormat::raw ? Step::afterMember : Step::trailer;
        break;
    default:
        break;
    }
    return true;
}

bool DeflateReader::readTrailer(std::span<const std::uint8_t>& input)
{
    const std::size_t count = std::min(input.size(), trailer_.size() - trailerRead_);
    std::copy_n(input.begin(), count, trailer_.begin() + static_cast<std::ptrdiff_t>(trailerRead_));
    input = input.subspan(count);
    trailerRead_ += count;
    if (trailerRead_ < trailer_.size())
        return true;
    if (LoadLittleEndian<std::uint32_t>(trailer_.data()) != output_.memberChecksum())
        return fail("The CRC-32 does not match the data");
    if (LoadLittleEndian<std::uint32_t>(trailer_.data() + 4) != output_.memberLength())
        return fail("The length after the data does not match it");
    step_ = Step::afterMember;
    return true;
}

const char* DeflateReader::cutShort() const
{
    switch (step_) {
    case Step::start:
        return "No GZIP data";
    case Step::header:
        return "The data ends inside a GZIP header";
    case Step::trailer:
        return "The data ends inside the checksum and length of a GZIP member";
    default:
        return decoder_.cutShort();
    }
}

bool DeflateReader::Finish()
{
    if (step_ == Step::afterMember || step_ == Step::padding)
        step_ = Step::finished;
    if (step_ == Step::finished)
        return true;
    if (step_ != Step::failed) {
        reasonOffset_ = given_;
        fail(cutShort());
    }
    return false;
}

} // namespace ccrypto
