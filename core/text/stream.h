#pragma once

#include "core/text/element.h"

#include <cstdint>

class CCryptoString;

/// A read/write cursor over bytes: reads advance a position, writes append at the end.
///
/// The buffer is the stream's own unless one is handed in; an outside buffer is not owned and must outlive the stream. Integers are
/// big-endian unless the name says otherwise. A read that fails leaves the position where it was.
class CCryptoStream {
public:
    CCryptoStream() = default;
    explicit CCryptoStream(element& outside) : buffer_(&outside) {}
    CCryptoStream(const CCryptoStream&) = delete;
    CCryptoStream& operator=(const CCryptoStream&) = delete;
    virtual ~CCryptoStream() = default;

    bool atEnd() const { return position_ >= buffer_->length(); }
    bool hasData() const { return !atEnd(); }
    std::uint32_t remaining() const { return atEnd() ? 0 : buffer_->length() - position_; }
    std::uint32_t position() const { return position_; }
    const element& buffer() const { return *buffer_; }

    /// The next byte; 0 at end of data.
    std::uint8_t ReadByte();
    /// The next `count` bytes, or all that remain when there are fewer. \return false when none remain, whatever
    /// `count` is.
    [[nodiscard]] bool Read(element& target, std::uint32_t count);
    /// Copies the next `count` bytes to `target`, which must hold that many. \return false when fewer remain.
    [[nodiscard]] bool ReadExactly(std::uint8_t* target, std::uint32_t count);
    /// The next 16-bit unit; `unit` is untouched when fewer than two bytes remain.
    [[nodiscard]] bool ReadWord16(std::uint16_t& unit);
    [[nodiscard]] bool ReadWord16LittleEndian(std::uint16_t& unit);

    void WriteByte(std::uint8_t byte);
    void Write(const void* bytes, std::uint32_t count);
    void WriteWord16(std::uint16_t value) { writeBigEndian(value, 2); }
    /// The low 24 bits.
    void WriteWord24(std::uint32_t value) { writeBigEndian(value, 3); }
    void WriteWord32(std::uint32_t value) { writeBigEndian(value, 4); }
    void WriteWord64(std::uint64_t value) { writeBigEndian(value, 8); }

    /// The bytes up to a line feed or a carriage return, which is consumed with its complement where one follows that is not the
    /// last byte of the buffer. \return true when a terminator was seen or the line is not empty.
    [[nodiscard]] bool ReadLine(CCryptoString& line);
    /// The line that ends just before the position, which moves to its start. \return false at the start of the buffer.
    [[nodiscard]] bool ReadPreviousLine(CCryptoString& line);

    /// Position 0 and an empty buffer.
    void reset();

private:
    void writeBigEndian(std::uint64_t value, std::uint32_t count);

    element own_;
    element* buffer_ = &own_;
    std::uint32_t position_ = 0;
};
