#pragma once

#include "asn1/tree/element_node.h"
#include "core/log/log_writers.h"
#include "core/text/element.h"

#include <cstdint>
#include <string_view>

/// A growable buffer of bytes into which a tree is written, in the form of the subclass.
class CPushBuffer {
public:
    CPushBuffer() = default;
    CPushBuffer(const CPushBuffer&) = delete;
    CPushBuffer& operator=(const CPushBuffer&) = delete;
    virtual ~CPushBuffer() = default;

    /// Appends `first` and its siblings. A null list writes nothing.
    /// \return false, logged, when the tree cannot be written in this form; the buffer is unchanged then.
    [[nodiscard]] virtual bool Push(const elementNode* first) = 0;

    void PushByte(std::uint8_t byte) { buffer_.append(byte); }
    void PushBytes(const void* bytes, std::uint32_t length) { buffer_.append(bytes, length); }
    void PushText(std::string_view text) { buffer_.append(text); }
    void PushElement(const element& value) { buffer_.append(value.data(), value.length()); }

    /// \return false, logged as "expected length %d > buffer length%d", when the buffer holds fewer bytes than a reader was
    /// promised.
    [[nodiscard]] bool CheckLength(std::uint32_t expected) const
    {
        if (expected <= buffer_.length())
            return true;
        WriteErrorEx_G("expected length %d > buffer length%d", static_cast<int>(expected), static_cast<int>(buffer_.length()));
        return false;
    }

    const element& buffer() const { return buffer_; }
    element takeBuffer() { return std::move(buffer_); }

protected:
    element buffer_;
};
