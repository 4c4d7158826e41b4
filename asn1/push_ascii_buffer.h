#pragma once

#include "asn1/push_buffer.h"

#include <cstdint>

/// Writes a tree as template text that parses back to a tree of the same DER. One item a line, indented by four blanks a level; a
/// value stands behind "=" where it is short. docs/template-language.md describes the notation.
class CPushAsciiBuffer : public CPushBuffer {
public:
    /// \param deepest levels below this one are written as "{ … }", for looking at a tree; such text does not parse back.
    explicit CPushAsciiBuffer(std::uint32_t deepest = UINT32_MAX) : deepest_(deepest) {}

    bool Push(const elementNode* first) override;

private:
    bool pushList(const elementNode* first, const elementNode* owner, std::uint32_t depth);
    bool pushItem(const elementNode& node, const elementNode* owner, std::uint32_t depth);
    bool pushInLine(const elementNode* first, const elementNode* owner, const char* separator, std::uint32_t depth);
    bool pushParts(const elementNode& node, std::uint32_t depth);
    void pushIndent(std::uint32_t depth);

    std::uint32_t deepest_;
};

/// The notation of one token: a word, a number, a quoted string or a "#" run, whichever is read back as a value that `owner`, which
/// may be null, encodes to the same bytes.
CCryptoString TokenNotation(const element& token, const elementNode* owner);
