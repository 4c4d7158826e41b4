#include "deflate/deflate_writer.h"

#include <utility>

namespace ccrypto {

namespace {

constexpr std::uint8_t bestFlag = 2;
constexpr std::uint8_t fastestFlag = 4;

} // namespace

DeflateWriter::DeflateWriter(DeflateFormat format, DeflateSink sink, int level)
    : format_(format), level_(level), output_(std::move(sink)), encoder_(level, output_)
{
}

bool DeflateWriter::fail(const char* reason)
{
    ended_ = true;
    reason_ = reason;
    return false;
}

bool DeflateWriter::checkSink()
{
    return output_.stopped() ? fail("The receiver of the output stopped") : true;
}

bool DeflateWriter::Start(const CCryptoGZIPHeader& header)
{
    if (format_ == DeflateFormat::raw)
        return true;
    CCryptoGZIPHeader complete = header;
    if (complete.extraFlags == 0 && (level_ == 1 || level_ == 9))
        complete.extraFlags = level_ == 1 ? fastestFlag : bestFlag;
    element bytes;
    const char* const fault = complete.Write(bytes);
    if (fault != nullptr)
        return fail(fault);
    output_.putBytes(bytes.bytes());
    return checkSink();
}

bool DeflateWriter::Write(std::span<const std::uint8_t> piece)
{
    if (ended_)
        return reason_[0] != '\0' ? false : fail("The data has ended already");
    if (format_ == DeflateFormat::gzip) {
        checksum_.update(piece);
        length_ += static_cast<std::uint32_t>(piece.size());
    }
    encoder_.Write(piece);
    return checkSink();
}

bool DeflateWriter::Finish()
{
    if (ended_)
        return reason_[0] == '\0';
    ended_ = true;
    encoder_.Finish();
    if (format_ == DeflateFormat::gzip) {
        output_.put(checksum_.value(), 32);
        output_.put(length_, 32);
    }
    output_.flush();
    return checkSink();
}

} // namespace ccrypto
