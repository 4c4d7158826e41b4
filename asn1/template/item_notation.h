#pragma once

#include "asn1/tree/element_node.h"
#include "core/text/string.h"

#include <cstdint>
#include <string_view>

// Items and their parts on one line of template text. The JSON and XML forms of a tree, too, name things so; there the text comes
// from outside, and "include" has no meaning in it.

namespace ccrypto {

/// The notation of one token: a word, a number, a quoted string or a "#" run, whichever is read back as a value that `owner`, which
/// may be null, encodes to the same bytes. Always UTF-8.
CCryptoString TokenNotation(const element& token, const elementNode* owner);

// These append to `text`, and return false for a tree more than `deepestTree` levels deep.
/// The items of a list, whole.
bool AppendList(const elementNode* first, const elementNode* owner, const char* separator, CCryptoString& text,
                std::uint32_t depth = 0);
/// Whether an item stands in a list: without a word it then has "\" in its place, as its parts would be read as the previous
/// item's.
enum class ItemPlace { alone, inList };
/// What stands in front of an item's content: its word, its bracket and its modifier list.
bool AppendHead(const elementNode& item, const elementNode* owner, ItemPlace place, CCryptoString& text, std::uint32_t depth = 0);
/// What stands behind it: the value, if asked for, and the operator with its operand.
bool AppendTail(const elementNode& item, bool withValue, CCryptoString& text, std::uint32_t depth = 0);
/// The value without its "=", and the operator with its operand, which may both be missing.
bool AppendValue(const elementNode& item, CCryptoString& text, std::uint32_t depth = 0);
bool AppendOperation(const elementNode& item, CCryptoString& text, std::uint32_t depth = 0);

/// A list as it was written, which counts `itemsLeft` down. \return null for text that is no list; nothing is logged.
ElementNodePtr ParseList(std::string_view text, std::uint32_t& itemsLeft);
/// One item without its content. \return null for text that is no item, more than one, or one with content; nothing is logged.
ElementNodePtr ParseHead(std::string_view text, std::uint32_t& itemsLeft);

} // namespace ccrypto
