#pragma once

#include "asn1/tree/element_node.h"
#include "core/text/string.h"

#include <cstdint>
#include <string_view>

// Items and their parts on one line of template text. The JSON and XML forms of a tree use the same notation for names; such text
// is input from outside, in which "include" fails.

namespace ccrypto {

/// The notation of one token: a word, a number, a quoted string or a "#" run, whichever is read back as a value that `owner`, which
/// may be null, encodes to the same bytes. Always UTF-8.
[[nodiscard]] CCryptoString TokenNotation(const element& token, const elementNode* owner);

// These append to `text`, and return false for a tree more than `maxTreeDepth` levels deep.
/// The items of a list, whole.
[[nodiscard]] bool AppendList(const elementNode* first, const elementNode* owner, const char* separator, CCryptoString& text,
                              std::uint32_t depth = 0);
/// In a list, an item without a word needs "\" in its place, or its parts would be read as those of the previous item.
enum class ItemPlace { alone, inList };
/// The part before an item's content: its word, its bracket and its modifier list.
[[nodiscard]] bool AppendHead(const elementNode& item, const elementNode* owner, ItemPlace place, CCryptoString& text,
                              std::uint32_t depth = 0);
/// The part after it: the value, if `withValue`, and the operator with its operand.
[[nodiscard]] bool AppendTail(const elementNode& item, bool withValue, CCryptoString& text, std::uint32_t depth = 0);
/// The value without its "=", and the operator with its operand; nothing where the item has none.
[[nodiscard]] bool AppendValue(const elementNode& item, CCryptoString& text, std::uint32_t depth = 0);
[[nodiscard]] bool AppendOperation(const elementNode& item, CCryptoString& text, std::uint32_t depth = 0);

/// Parses a list, and counts `itemsLeft` down. \return null for text that is not a list; nothing is logged.
[[nodiscard]] ElementNodePtr ParseList(std::string_view text, std::uint32_t& itemsLeft);
/// Parses one item without content. \return null for any other text; nothing is logged.
[[nodiscard]] ElementNodePtr ParseHead(std::string_view text, std::uint32_t& itemsLeft);

} // namespace ccrypto
