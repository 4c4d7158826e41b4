#pragma once

#include "asn1/tree/element_node.h"
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
    [[nodiscard]] bool CheckLength(std::uint32_t expected) const;

    const element& buffer() const { return buffer_; }
    element takeBuffer() { return std::move(buffer_); }

protected:
    element buffer_;
};

namespace ccrypto {

/// Writes a tree as text: the walk that template text, JSON and XML share. A form decides how a node's head, value and end are
/// written, and which of its slots holds the list between value and end.
///
/// Siblings are walked; levels are recursed, `maxTreeDepth` of them at most.
class TextPushBuffer : public CPushBuffer {
public:
    bool Push(const elementNode* first) final;

protected:
    static constexpr const char* tooDeep = "The tree is more than 256 levels deep";

    /// A node, the node that owns its list, which may be null, and the level of that list.
    struct Place {
        const elementNode& node;
        const elementNode* owner;
        std::uint32_t depth;
    };

    /// The whole text: the root's list and what the form writes around it.
    virtual bool pushDocument(const elementNode* first) = 0;
    virtual bool pushHead(const Place& place) = 0;
    virtual bool pushValue(const Place& place) = 0;
    virtual bool pushEnd(const Place& place) = 0;
    virtual const elementNode* listOf(const Place& place) const { return place.node.content(); }
    virtual const char* name() const = 0;

    bool pushList(const elementNode* first, const elementNode* owner, std::uint32_t depth);
    bool pushNode(const Place& place);
    /// Blanks for a level; beyond some levels they would outgrow what is written.
    void pushIndent(std::uint32_t depth);
    /// Keeps the reason for the log. \return false.
    bool fail(const char* reason);

private:
    const char* reason_ = "";
};

} // namespace ccrypto
