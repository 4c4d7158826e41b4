#include "asn1/deflate_stream.h"

#include "asn1/deflate_reader.h"
#include "asn1/deflate_writer.h"
#include "core/auto_logger.h"

#include <utility>

namespace {

/// Appends to `output`, whose length has 32 bits.
DeflateSink AppendTo(element& output)
{
    return [&output](std::span<const std::uint8_t> bytes) {
        if (bytes.size() > UINT32_MAX - output.length())
            return false;
        output.append(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
        return true;
    };
}

} // namespace

CDeflateStream::CDeflateStream() = default;
CDeflateStream::~CDeflateStream() = default;

void CDeflateStream::stop()
{
    reader_.reset();
    writer_.reset();
    reason_ = "";
    reasonOffset_ = 0;
}

void CDeflateStream::StartInflate(DeflateFormat format, DeflateSink sink, const InflateLimits& limits)
{
    stop();
    reader_ = std::make_unique<DeflateReader>(format, std::move(sink), limits);
}

bool CDeflateStream::StartDeflate(DeflateFormat format, DeflateSink sink, int level, const CCryptoGZIPHeader& header)
{
    CCryptoAutoLogger logger("CDeflateStream::StartDeflate");
    stop();
    if (level < fastest || level > best) {
        reason_ = "A compression level outside 1 to 9";
        return logger.setRetValue(3, false, "%s", reason_);
    }
    writer_ = std::make_unique<DeflateWriter>(format, std::move(sink), level);
    if (!writer_->Start(header)) {
        fail(writer_->reason());
        return logger.setRetValue(3, false, "%s", reason_);
    }
    return logger.setResult(true);
}

bool CDeflateStream::fail(const char* reason)
{
    reason_ = reason;
    if (reader_ != nullptr)
        reasonOffset_ = reader_->reasonOffset();
    return false;
}

bool CDeflateStream::Write(std::span<const std::uint8_t> piece)
{
    CCryptoAutoLogger logger("CDeflateStream::Write");
    if (reader_ == nullptr && writer_ == nullptr)
        return logger.setRetValue(3, false, "Nothing was started");
    if (reader_ != nullptr ? reader_->Write(piece) : writer_->Write(piece))
        return logger.setResult(true);
    fail(reader_ != nullptr ? reader_->reason() : writer_->reason());
    return logger.setRetValue(3, false, "%s (offset %llu)", reason_, static_cast<unsigned long long>(reasonOffset_));
}

bool CDeflateStream::Finish()
{
    CCryptoAutoLogger logger("CDeflateStream::Finish");
    if (reader_ == nullptr && writer_ == nullptr)
        return logger.setRetValue(3, false, "Nothing was started");
    if (reader_ != nullptr ? reader_->Finish() : writer_->Finish())
        return logger.setResult(true);
    fail(reader_ != nullptr ? reader_->reason() : writer_->reason());
    return logger.setRetValue(3, false, "%s (offset %llu)", reason_, static_cast<unsigned long long>(reasonOffset_));
}

const CCryptoGZIPHeader* CDeflateStream::header() const
{
    return reader_ != nullptr ? &reader_->header() : nullptr;
}

bool CDeflateStream::Inflate(std::span<const std::uint8_t> input, DeflateFormat format, element& output,
                             const InflateLimits& limits)
{
    const std::uint32_t before = output.length();
    CDeflateStream stream;
    stream.StartInflate(format, AppendTo(output), limits);
    if (stream.Write(input) && stream.Finish())
        return true;
    output.resize(before);
    return false;
}

bool CDeflateStream::Deflate(std::span<const std::uint8_t> input, DeflateFormat format, element& output, int level,
                             const CCryptoGZIPHeader& header)
{
    const std::uint32_t before = output.length();
    CDeflateStream stream;
    if (stream.StartDeflate(format, AppendTo(output), level, header) && stream.Write(input) && stream.Finish())
        return true;
    output.resize(before);
    return false;
}
