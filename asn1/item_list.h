#pragma once

#include "asn1/element_node.h"

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
