#include "core/system/character.h"

#include "core/diagnostics/auto_logger.h"
#include "core/text/stream.h"
#include "core/text/string.h"
#include "core/text/utf8.h"

using namespace ccrypto;

namespace {

constexpr std::uint32_t replacementCharacter = 0xFFFD;

bool IsSurrogate(std::uint32_t unit)
{
    return IsHighSurrogate(unit) || IsLowSurrogate(unit);
}

bool Fail(const char* operation, const char* reason)
{
    CCryptoAutoLogger logger(operation);
    return logger.fail(false, "%s", reason);
}

bool FailRead(const char* reason)
{
    return Fail("CCryptoChar::Read", reason);
}

/// Skips half a unit at the end of the data, so that a reader that goes on reaches the end.
bool SkipOddByte(CCryptoStream& stream)
{
    stream.ReadByte();
    return false;
}

bool FailWrite(const char* reason)
{
    return Fail("CCryptoChar::Write", reason);
}

} // namespace

CCryptoChar::CCryptoChar(CCryptoStream& stream, CharacterEncoding encoding)
{
    if (stream.hasData() && !Read(stream, encoding))
        Fail("CCryptoChar::CCryptoChar", "Stream reading failed");
}

bool CCryptoChar::Read(CCryptoStream& stream, CharacterEncoding encoding)
{
    if (stream.atEnd())
        return false;
    switch (encoding) {
    case CharacterEncoding::Latin1:
        codePoint_ = stream.ReadByte();
        return true;
    case CharacterEncoding::Utf8:
        return readUtf8(stream);
    case CharacterEncoding::Utf16:
        return readUtf16(stream);
    case CharacterEncoding::Wchar16:
        return readWchar16(stream);
    }
    return false;
}

bool CCryptoChar::readUtf8(CCryptoStream& stream)
{
    std::uint8_t bytes[4] = {stream.ReadByte()};
    const std::uint32_t continuations = Utf8ContinuationCount(bytes[0]);
    for (std::uint32_t index = 1; index <= continuations; ++index) {
        if (stream.atEnd())
            return false;
        bytes[index] = stream.ReadByte();
        if (!IsUtf8Continuation(bytes[index]))
            return false;
    }
    return DecodeUtf8({bytes, continuations + 1}, codePoint_) != 0;
}

bool CCryptoChar::readUtf16(CCryptoStream& stream)
{
    std::uint16_t unit = 0;
    if (!stream.ReadWord16(unit))
        return SkipOddByte(stream);
    if (IsLowSurrogate(unit))
        return FailRead("Unpaired low surrogate");
    if (!IsHighSurrogate(unit)) {
        codePoint_ = unit;
        return true;
    }
    std::uint16_t low = 0;
    if (!stream.ReadWord16(low))
        SkipOddByte(stream);
    if (!IsLowSurrogate(low))
        return FailRead("Unpaired high surrogate");
    codePoint_ = ((unit - 0xD800u) << 10) + (low - 0xDC00u) + 0x10000;
    return true;
}

bool CCryptoChar::readWchar16(CCryptoStream& stream)
{
    std::uint16_t unit = 0;
    if (!stream.ReadWord16LittleEndian(unit))
        return SkipOddByte(stream);
    codePoint_ = IsSurrogate(unit) ? replacementCharacter : unit;
    return true;
}

bool CCryptoChar::Write(CCryptoStream& stream, CharacterEncoding encoding) const
{
    switch (encoding) {
    case CharacterEncoding::Latin1:
        return writeLatin1(stream);
    case CharacterEncoding::Utf8: {
        element encoded;
        if (!EncodeUtf8(codePoint_, encoded))
            return false;
        stream.Write(encoded.data(), encoded.length());
        return true;
    }
    case CharacterEncoding::Utf16:
        return writeUtf16(stream);
    case CharacterEncoding::Wchar16:
        return writeWchar16(stream);
    }
    return false;
}

bool CCryptoChar::writeLatin1(CCryptoStream& stream) const
{
    // The low byte is written all the same, as the stored data expects; the log is the only witness.
    if (codePoint_ > 0xFF)
        FailWrite("Can't encode as Latin1");
    stream.WriteByte(static_cast<std::uint8_t>(codePoint_));
    return true;
}

bool CCryptoChar::writeUtf16(CCryptoStream& stream) const
{
    if (codePoint_ > maxCodePoint)
        return false;
    if (codePoint_ == 0xD800)
        return FailWrite("Can't encode as UTF16");
    if (codePoint_ < 0xD800 || (codePoint_ >= 0xE000 && codePoint_ <= 0xFFFF)) {
        stream.WriteWord16(static_cast<std::uint16_t>(codePoint_));
        return true;
    }
    // The first unit is formed without subtracting 0x10000, as in all the data that has been stored; Read does not undo it.
    stream.WriteWord16(static_cast<std::uint16_t>(0xD800 + (codePoint_ >> 10)));
    stream.WriteWord16(static_cast<std::uint16_t>(0xDC00 + (codePoint_ & 0x3FF)));
    return true;
}

bool CCryptoChar::writeWchar16(CCryptoStream& stream) const
{
    if (codePoint_ > 0xFFFF)
        return FailWrite("Can't encode as WCHAR16");
    stream.WriteByte(static_cast<std::uint8_t>(codePoint_));
    stream.WriteByte(static_cast<std::uint8_t>(codePoint_ >> 8));
    return true;
}

CCryptoString::CCryptoString(const CCryptoChar& character)
{
    *this += character;
}

CCryptoString& CCryptoString::operator=(const CCryptoChar& character)
{
    return *this = CCryptoString(character);
}

CCryptoString& CCryptoString::operator+=(const CCryptoChar& character)
{
    element encoded;
    EncodeUtf8(character.codePoint(), encoded);
    return append(encoded.view());
}
