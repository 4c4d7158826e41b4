#include "deflate/deflate_stream.h"

#include "core/diagnostics/auto_logger.h"
#include "deflate/deflate_reader.h"
#include "deflate/deflate_writer.h"

#include <algorithm>
#include <functional>
#include <utility>

using namespace ccrypto;

namespace {

constexpr const char* nothingStarted = "Nothing was started";
constexpr const char* usedInside = "The receiver of the output used the stream that called it";

/// A copy of `input` where it is a part of `output`, whose storage goes when it grows; nothing otherwise.
element CopyOfPart(std::span<const std::uint8_t> input, const element& output)
{
    const std::span<const std::uint8_t> whole = output.bytes();
    const std::less<> isBefore;
    const bool isPart = !input.empty() && !whole.empty() && isBefore(input.data(), whole.data() + whole.size()) &&
                        isBefore(whole.data(), input.data() + input.size());
    return isPart ? element(input.data(), static_cast<std::uint32_t>(input.size())) : element();
}

} // namespace

/// Marks the time in which the sink may run, and finds out when a call comes from there.
class CDeflateStream::Call {
public:
    explicit Call(CDeflateStream& stream) : stream_(stream), isInner_(std::exchange(stream.inCall_, true))
    {
        if (isInner_)
            stream_.calledBack_ = true;
    }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;
    ~Call() { stream_.inCall_ = isInner_; }

    bool isInner() const { return isInner_; }

private:
    CDeflateStream& stream_;
    bool isInner_;
};

CDeflateStream::CDeflateStream() = default;
CDeflateStream::~CDeflateStream() = default;

void CDeflateStream::stop()
{
    reader_.reset();
    writer_.reset();
    reason_ = "";
    reasonOffset_ = 0;
    calledBack_ = false;
}

void CDeflateStream::StartInflate(DeflateFormat format, DeflateSink sink, const InflateLimits& limits)
{
    const Call call(*this);
    if (call.isInner())
        return;
    stop();
    reader_ = std::make_unique<DeflateReader>(format, std::move(sink), limits);
}

bool CDeflateStream::StartDeflate(DeflateFormat format, DeflateSink sink, int level, const CCryptoGZIPHeader& header)
{
    CCryptoAutoLogger logger("CDeflateStream::StartDeflate");
    const Call call(*this);
    if (call.isInner())
        return logger.fail(false, "%s", usedInside);
    stop();
    if (level < fastest || level > best) {
        reason_ = "A compression level outside 1 to 9";
        return logger.fail(false, "%s", reason_);
    }
    writer_ = std::make_unique<DeflateWriter>(format, std::move(sink), level);
    if (settle(writer_->Start(header)))
        return logger.setResult(true);
    return logger.fail(false, "%s", reason_);
}

bool CDeflateStream::fail(const char* reason)
{
    reason_ = reason;
    if (reader_ != nullptr)
        reasonOffset_ = reader_->reasonOffset();
    return false;
}

bool CDeflateStream::settle(bool good)
{
    // What was called back stays unusable until it is started again.
    if (calledBack_)
        return fail(usedInside);
    if (good)
        return true;
    return fail(reader_ != nullptr ? reader_->reason() : writer_ != nullptr ? writer_->reason() : nothingStarted);
}

template <typename Give>
bool CDeflateStream::pass(CCryptoAutoLogger& logger, Give give)
{
    const Call call(*this);
    if (call.isInner())
        return logger.fail(false, "%s", usedInside);
    bool good = false;
    if (!calledBack_ && reader_ != nullptr)
        good = give(*reader_);
    else if (!calledBack_ && writer_ != nullptr)
        good = give(*writer_);
    if (settle(good))
        return logger.setResult(true);
    return logger.fail(false, "%s (offset %llu)", reason_, static_cast<unsigned long long>(reasonOffset_));
}

bool CDeflateStream::Write(std::span<const std::uint8_t> piece)
{
    CCryptoAutoLogger logger("CDeflateStream::Write");
    return pass(logger, [piece](auto& side) { return side.Write(piece); });
}

bool CDeflateStream::Finish()
{
    CCryptoAutoLogger logger("CDeflateStream::Finish");
    return pass(logger, [](auto& side) { return side.Finish(); });
}

const CCryptoGZIPHeader* CDeflateStream::header() const
{
    return reader_ != nullptr ? &reader_->header() : nullptr;
}

DeflateSink CDeflateStream::AppendTo(element& output, std::uint32_t most)
{
    return [&output, most](std::span<const std::uint8_t> bytes) {
        if (output.length() > most || bytes.size() > most - output.length()) {
            CCryptoAutoLogger logger("CDeflateStream::AppendTo");
            return logger.fail(false, "The output would exceed %lu bytes", static_cast<unsigned long>(most));
        }
        output.append(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
        return true;
    };
}

bool CDeflateStream::Inflate(std::span<const std::uint8_t> input, DeflateFormat format, element& output,
                             const InflateLimits& limits)
{
    const std::uint32_t before = output.length();
    const element copy = CopyOfPart(input, output);
    // What the element cannot hold exceeds a limit of the size, too; one of 0 would be none.
    InflateLimits within = limits;
    const std::uint64_t room = std::max<std::uint64_t>(UINT32_MAX - before, 1);
    within.maxOutput = limits.maxOutput == 0 ? room : std::min(limits.maxOutput, room);
    CDeflateStream stream;
    stream.StartInflate(format, AppendTo(output), within);
    if (stream.Write(copy.isEmpty() ? input : copy.bytes()) && stream.Finish())
        return true;
    output.resize(before);
    return false;
}

bool CDeflateStream::Deflate(std::span<const std::uint8_t> input, DeflateFormat format, element& output, int level,
                             const CCryptoGZIPHeader& header)
{
    const std::uint32_t before = output.length();
    const element copy = CopyOfPart(input, output);
    CDeflateStream stream;
    if (stream.StartDeflate(format, AppendTo(output), level, header) && stream.Write(copy.isEmpty() ? input : copy.bytes()) &&
        stream.Finish())
        return true;
    output.resize(before);
    return false;
}
