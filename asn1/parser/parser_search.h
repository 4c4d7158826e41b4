#pragma once

#include "asn1/tree/element_node.h"

#include <functional>

/// A cursor over a tree: depth first, a node before its slots, slots in the order modifiers, brackets, short value,
/// operation, content, then the siblings. The first match wins.
class CCryptoParserSearch {
public:
    /// \param start where the search begins; its parents and earlier siblings are not visited. \param inDepth false to look at one
    /// level alone. \param followSiblings whether the siblings of `start` are searched.
    CCryptoParserSearch(elementNode* start, bool inDepth, bool followSiblings)
        : start_(start), next_(start), inDepth_(inDepth), followSiblings_(followSiblings)
    {
    }

    /// The next node for which `matches` is true; null when none is left.
    elementNode* find(const std::function<bool(const elementNode&)>& matches);

private:
    elementNode* nodeAfter(elementNode* node) const;

    elementNode* start_;
    elementNode* next_;
    bool inDepth_;
    bool followSiblings_;
};
