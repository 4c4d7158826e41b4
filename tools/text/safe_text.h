#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

// Text for a terminal. A control character may steer a terminal, and a bidirectional control or a line separator may make a line
// look like what it is not; both stand as escapes.

namespace ccrypto {

/// Control characters (C0, DEL, C1), line and paragraph separators, bidirectional controls, surrogates, and what is not a
/// character.
bool IsUnsafe(std::uint32_t codePoint);

/// One line: unsafe characters and bytes that are not UTF-8 become "\xHH" a byte, nothing else changes.
std::string OneLine(std::string_view text);

/// Text in double quotes, with "\" before quotes and backslashes, and escapes as above.
std::string Quoted(std::string_view text);

/// A JSON string (RFC 8259, 7) of UTF-8 text, unsafe characters as "\n", "\t" or "\uHHHH"; bytes that are not UTF-8 stand for
/// Latin-1 characters.
std::string JsonString(std::string_view text);

/// Whether every byte belongs to UTF-8 without unsafe characters.
bool IsSafeText(std::string_view text);

enum class EscapeStyle { templateText, json, xml };

/// The same document of the given language, with every unsafe character that lies in it, line ends and tabs aside, as an escape of
/// that language.
std::string EscapeDocument(std::string_view document, EscapeStyle style);

} // namespace ccrypto
