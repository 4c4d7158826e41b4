#include "deflate/gzip_header.h"

#include <cstring>

using namespace ccrypto;

namespace {

constexpr std::uint8_t secondMark = 0x8B;
constexpr std::uint8_t methodDeflate = 8;

constexpr std::uint8_t textFlag = 0x01;
constexpr std::uint8_t checksumFlag = 0x02;
constexpr std::uint8_t extraFlag = 0x04;
constexpr std::uint8_t nameFlag = 0x08;
constexpr std::uint8_t commentFlag = 0x10;
constexpr std::uint8_t reservedFlags = 0xE0;

constexpr const char* nameTooLong = "A GZIP file name of more than 1 MiB";
constexpr const char* commentTooLong = "A GZIP comment of more than 1 MiB";

bool HoldsZero(const element& text)
{
    return !text.isEmpty() && std::memchr(text.data(), 0, text.length()) != nullptr;
}

void AppendText(element& target, const element& text)
{
    target.append(text.data(), text.length());
    target.append(std::uint8_t{0});
}

void AppendLittleEndian(element& target, std::uint32_t number, int bytes)
{
    for (; bytes > 0; --bytes, number >>= 8)
        target.append(static_cast<std::uint8_t>(number));
}

} // namespace

CCryptoGZIPHeader::Result CCryptoGZIPHeader::fail(const char* reason)
{
    step_ = Step::idle;
    reason_ = reason;
    return Result::failed;
}

CCryptoGZIPHeader::Result CCryptoGZIPHeader::Read(std::uint8_t byte)
{
    if (step_ == Step::idle) {
        *this = CCryptoGZIPHeader();
        step_ = Step::fixedPart;
    }
    if (step_ == Step::checksum)
        return readChecksum(byte);
    checksum_.update({&byte, 1});

    switch (step_) {
    case Step::extraLength:
        number_ |= std::uint32_t{byte} << (8 * position_);
        if (++position_ < 2)
            return Result::more;
        extra->reserve(number_);
        return openNext(number_ == 0 ? Step::extraBytes : Step::extraLength);
    case Step::extraBytes:
        extra->append(byte);
        return extra->length() < number_ ? Result::more : openNext(Step::extraBytes);
    case Step::name:
        return readText(byte, *name, nameTooLong);
    case Step::comment:
        return readText(byte, *comment, commentTooLong);
    default:
        return readFixedPart(byte);
    }
}

CCryptoGZIPHeader::Result CCryptoGZIPHeader::readFixedPart(std::uint8_t byte)
{
    switch (position_++) {
    case 0:
        return byte == firstMark ? Result::more : fail("Not GZIP data");
    case 1:
        return byte == secondMark ? Result::more : fail("Not GZIP data");
    case 2:
        return byte == methodDeflate ? Result::more : fail("A GZIP compression method other than Deflate");
    case 3:
        flags_ = byte;
        isText = (byte & textFlag) != 0;
        hasChecksum = (byte & checksumFlag) != 0;
        return (byte & reservedFlags) == 0 ? Result::more : fail("Reserved flags are set in a GZIP header");
    case 8:
        extraFlags = byte;
        return Result::more;
    case 9:
        operatingSystem = byte;
        return openNext(Step::fixedPart);
    default:
        modificationTime |= std::uint32_t{byte} << (8 * (position_ - 5));
        return Result::more;
    }
}

CCryptoGZIPHeader::Result CCryptoGZIPHeader::readText(std::uint8_t byte, element& text, const char* tooLong)
{
    if (byte == 0)
        return openNext(step_);
    if (text.length() == maxTextLength)
        return fail(tooLong);
    text.append(byte);
    return Result::more;
}

CCryptoGZIPHeader::Result CCryptoGZIPHeader::readChecksum(std::uint8_t byte)
{
    number_ |= std::uint32_t{byte} << (8 * position_);
    if (++position_ < 2)
        return Result::more;
    if (number_ != (checksum_.value() & 0xFFFF))
        return fail("The checksum of a GZIP header does not match");
    step_ = Step::idle;
    return Result::complete;
}

CCryptoGZIPHeader::Result CCryptoGZIPHeader::openNext(Step step)
{
    position_ = 0;
    switch (step) {
    case Step::fixedPart:
        if ((flags_ & extraFlag) != 0) {
            extra.emplace();
            number_ = 0;
            step_ = Step::extraLength;
            return Result::more;
        }
        [[fallthrough]];
    case Step::extraBytes:
        if ((flags_ & nameFlag) != 0) {
            name.emplace(ElementType::text);
            step_ = Step::name;
            return Result::more;
        }
        [[fallthrough]];
    case Step::name:
        if ((flags_ & commentFlag) != 0) {
            comment.emplace(ElementType::text);
            step_ = Step::comment;
            return Result::more;
        }
        [[fallthrough]];
    case Step::comment:
        number_ = 0;
        step_ = hasChecksum ? Step::checksum : Step::idle;
        return hasChecksum ? Result::more : Result::complete;
    default:
        step_ = Step::extraBytes;
        return Result::more;
    }
}

const char* CCryptoGZIPHeader::Write(element& target) const
{
    if (extra && extra->length() > maxExtraLength)
        return "A GZIP extra field of more than 65535 bytes";
    if (name && name->length() > maxTextLength)
        return nameTooLong;
    if (comment && comment->length() > maxTextLength)
        return commentTooLong;
    if ((name && HoldsZero(*name)) || (comment && HoldsZero(*comment)))
        return "A GZIP file name or comment with a zero byte";

    const std::uint32_t start = target.length();
    const auto flags = (isText ? textFlag : 0) | (hasChecksum ? checksumFlag : 0) | (extra ? extraFlag : 0) |
                       (name ? nameFlag : 0) | (comment ? commentFlag : 0);
    const std::uint8_t beginning[] = {firstMark, secondMark, methodDeflate, static_cast<std::uint8_t>(flags)};
    target.append(beginning, sizeof beginning);
    AppendLittleEndian(target, modificationTime, 4);
    target.append(extraFlags);
    target.append(operatingSystem);
    if (extra) {
        AppendLittleEndian(target, extra->length(), 2);
        target.append(extra->data(), extra->length());
    }
    if (name)
        AppendText(target, *name);
    if (comment)
        AppendText(target, *comment);
    if (hasChecksum) {
        CCryptoCRC32 checksum;
        checksum.update(target.bytes().subspan(start));
        AppendLittleEndian(target, checksum.value() & 0xFFFF, 2);
    }
    return nullptr;
}
