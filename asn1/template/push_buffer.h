#pragma once

#include "asn1/tree/element_node.h"
#include "core/text/element.h"

#include <cstdint>
#include <string_view>

/// Where a tree is written: a growable buffer of bytes, and one form of writing for each subclass.
class CPushBuffer {
public:
    CPushBuffer() = default;
    CPushBuffer(const CPushBuffer&) = delete;
    CPushBuffer& operator=(const CPushBuffer&) = delete;
    virtual ~CPushBuffer() = default;

    /// Writes `first` and its siblings behind what the buffer holds. A null list writes nothing.
    /// \return false, logged, when the tree cannot be written in this form; the buffer is then as it was.
    virtual bool Push(const elementNode* first) = 0;

    void PushByte(std::uint8_t byte) { buffer_.append(byte); }
    void PushBytes(const void* bytes, std::uint32_t length) { buffer_.append(bytes, length); }
    void PushText(std::string_view text) { buffer_.append(text); }
    void PushElement(const element& value) { buffer_.append(value.data(), value.length()); }

    /// \return false, logged as "expected length %d > buffer length%d", when the buffer holds fewer bytes than a reader was
    /// promised.
    bool CheckLength(std::uint32_t expected) const;

    const element& buffer() const { return buffer_; }
    element takeBuffer() { return std::move(buffer_); }

protected:
    element buffer_;
};
