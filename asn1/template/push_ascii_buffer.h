#pragma once

#include "asn1/tree/push_buffer.h"

#include <cstdint>

/// Writes a tree as template text that parses back to a tree of the same DER. One item a line, indented by four blanks a level; a
/// short value follows a "=". docs/template-language.md describes the notation.
class CPushAsciiBuffer : public ccrypto::TextPushBuffer {
public:
    /// \param maxDepth levels below this one are written as "{ … }", for looking at a tree; such text does not parse back.
    explicit CPushAsciiBuffer(std::uint32_t maxDepth = UINT32_MAX) : maxDepth_(maxDepth) {}

protected:
    bool pushDocument(const elementNode* first) override { return pushList(first, nullptr, 0); }
    bool pushHead(const Place& place) override;
    bool pushValue(const Place& place) override;
    bool pushEnd(const Place& place) override;
    const elementNode* listOf(const Place& place) const override;
    const char* name() const override { return "CPushAsciiBuffer"; }

private:
    std::uint32_t maxDepth_;
};
