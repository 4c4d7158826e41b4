#pragma once

#include "asn1/tree/element_node.h"

#include <cstdint>

namespace ccrypto {

/// How many items one text of template, JSON or XML may hold: some 200 MB of memory.
constexpr std::uint32_t maxItems = 2000000;
constexpr const char* tooManyItems = "Parsing failed; More than 2000000 items";

/// How many levels of a tree the text forms write, the lists in an item's parts among them.
constexpr std::uint32_t maxTreeDepth = 256;

/// A list of siblings that grows at its end.
struct ItemList {
    ElementNodePtr first;
    elementNode* last = nullptr;

    elementNode& add(ElementNodePtr node)
    {
        last = last == nullptr ? (first = std::move(node)).get() : last->set(LinkKind::sibling, std::move(node));
        return *last;
    }
};

} // namespace ccrypto
