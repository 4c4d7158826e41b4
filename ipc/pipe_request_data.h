#pragma once

#include "core/text/element.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace ccrypto {

/// A small tagged value of the pipe messages: an integer, or a zero-terminated text that is not owned.
struct PipeValue {
    enum class Kind : std::uint32_t { integer = 0, text = 1 };

    Kind kind = Kind::integer;
    std::uint32_t integer = 0;
    const char* text = nullptr;
};

} // namespace ccrypto

/// The message of the library's named pipes: a request, or the response that takes its place in the same object.
///
/// On the wire, integers little-endian, nothing padded:
///
///     0   4  request type
///     4   4  status, signed; 0 in requests
///     8   4  length of the body in bytes
///     12     items, back to back: a tag byte, the payload's length in 4 bytes, the payload
///
/// | tag | item    | payload                                                                                        |
/// |-----|---------|------------------------------------------------------------------------------------------------|
/// | 1   | integer | 4 bytes                                                                                        |
/// | 2   | data    | bytes; a text is sent with its terminating zero; nothing for a null source                     |
/// | 3   | value   | nothing, or a kind byte and the value: 1 and 4 bytes, or 2 and a text with its terminating zero |
///
/// A body holds at most `maximumBody` bytes. What was received is never trusted: no reader follows a length past the body, every
/// text handed out ends inside it, and any bytes at all may be read with any sequence of calls.
///
/// The body is kept in an `element`, so it is wiped before it is released (messages carry PINs), and a failed allocation ends the
/// process.
class CCryptoPipeRequestData {
public:
    static constexpr std::uint32_t maximumBody = 16U * 1024U * 1024U;
    static constexpr std::uint32_t textLength = 0xFFFFFFFF; ///< as the length in AddData: a zero-terminated text

    static constexpr std::int32_t statusGood = 0;
    static constexpr std::int32_t statusMalformed = -1; ///< the body is not what the reader expects
    static constexpr std::int32_t statusNoPipe = -2;    ///< the pipe could not be opened
    static constexpr std::int32_t statusBusy = -4;      ///< no instance of the pipe became free in time

    static constexpr std::uint8_t tagInteger = 1;
    static constexpr std::uint8_t tagData = 2;
    static constexpr std::uint8_t tagValue = 3;

    explicit CCryptoPipeRequestData(std::uint32_t requestType);
    CCryptoPipeRequestData(const CCryptoPipeRequestData&) = delete;
    CCryptoPipeRequestData& operator=(const CCryptoPipeRequestData&) = delete;

    /// The fixed parts of a message, from index 0 up to the first null: part 0 is the 12-byte header, and there is no other.
    virtual void* GetPart(std::uint32_t index);
    /// Bytes of part `index`; 0 where there is none.
    virtual std::uint32_t GetPartSize(std::uint32_t index) const;
    virtual ~CCryptoPipeRequestData();

    std::uint32_t requestType() const { return header_.requestType; }
    std::int32_t status() const { return header_.status; }
    /// While building, the bytes written; while reading, the read cursor.
    std::uint32_t position() const { return header_.position; }
    /// While building, the storage of the body; after a read, the bytes received.
    std::uint32_t capacity() const { return capacity_; }
    /// The body received, whole.
    std::span<const std::uint8_t> body() const { return {body_.data(), capacity_}; }

    /// Makes the message ready to be filled anew, with `status` in its header; the request type stays.
    void StartMessage(std::int32_t status = statusGood);

    /// Append one item. \return false when the body would exceed `maximumBody`: nothing is appended, the failure is logged, and the
    /// message, which has lost an item, can no longer be sent.
    bool AddInt(std::uint32_t value);
    /// `length` bytes, or with `textLength` a text and its terminator; a null pointer adds an item without payload.
    bool AddData(const void* data, std::uint32_t length = textLength);
    /// A null pointer adds an item without payload, as does a text value without text.
    bool AddValue(const ccrypto::PipeValue* value);

    /// Each reads the item at the cursor. `last` says whether the caller expects no other after it: a body that holds more is then
    /// malformed. \return false, logged, with nothing handed out when the item is not there or malformed; the status is then -1 and
    /// every later read of the message fails too.
    ///
    /// An integer is read from 4 bytes, in GetInt those at the payload's start, in GetValue those after the kind byte, whatever
    /// length the item claims; the body must hold them. An integer item without payload gives false and leaves the status at 0.
    [[nodiscard]] bool GetInt(std::uint32_t& value, bool last);
    /// `text` points into the body, valid until the message is filled, read or received anew; null for an item without payload. It
    /// ends at its first zero, which the body must hold, even if after the item.
    [[nodiscard]] bool GetString(const char*& text, bool last);
    [[nodiscard]] bool GetData(const std::uint8_t*& data, std::uint32_t& length, bool last);
    /// The value's text points into the body; null for an item without payload.
    [[nodiscard]] bool GetValue(std::unique_ptr<ccrypto::PipeValue>& value, bool last);

    /// The tag of the item at the cursor; 0 when none remains. The cursor stays.
    std::uint8_t NextTag() const;

protected:
    /// Checks the tag and the length of the item at the cursor and moves the cursor past it. \return the payload, null when it is
    /// empty or the item is refused; in that case the status is -1.
    const std::uint8_t* GetDataPtr(std::uint8_t expectedTag, std::uint32_t& length);
    /// How each reader but GetInt ends: with the status good, the cursor is kept for the next item or, after the last, checked to
    /// stand at the end and put back to 0; otherwise it is put back to 0.
    bool CheckStatus(bool last);

    void setRequestType(std::uint32_t requestType) { header_.requestType = requestType; }
    void setStatus(std::int32_t status) { header_.status = status; }
    /// False when an item did not fit.
    bool isComplete() const { return complete_; }
    std::uint8_t* bodyBytes() { return body_.data(); }

    /// Takes the length the header just received announces: the cursor goes to 0, and storage for exactly that many bytes replaces
    /// the old body. An announcement of 0 keeps the old storage, which is no longer part of the message.
    /// \return false when more than `maximumBody` is announced; nothing is allocated, and the message is left without a body.
    bool ReceiveBody();
    /// Leaves the message without a body, after one could not be received whole.
    void DropBody();

private:
    struct Header {
        std::uint32_t requestType;
        std::int32_t status;
        std::uint32_t position;
    };
    static_assert(sizeof(Header) == 12);

    /// Appends the tag and the length of an item and storage for its payload. `step` is the least by which the storage grows.
    /// \return where the payload goes; null when the body would become too long.
    std::uint8_t* AppendItem(std::uint8_t tag, std::uint64_t payload, std::uint32_t step);
    const std::uint8_t* Refuse(const char* reason, std::uint32_t& length);
    /// The bytes of the body from `place` in it to its end.
    std::size_t BytesFrom(const std::uint8_t* place) const;
    /// Status -1 for a value that the body or its item cuts short. The log has no line of its own for this and calls it the end of
    /// the data, whether other items follow or not.
    void RefuseShortItem();

    Header header_;
    /// At least `capacity_` bytes.
    element body_;
    std::uint32_t capacity_ = 0;
    bool complete_ = true;
};
