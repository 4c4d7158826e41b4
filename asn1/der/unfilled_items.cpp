#include "asn1/der/unfilled_items.h"

#include "asn1/der/der_analyzer.h"
#include "asn1/tree/item_list.h"
#include "asn1/tree/node_parts.h"

namespace ccrypto {

namespace {

bool DropFromList(ElementNodePtr& list, std::uint32_t depth);

/// \return whether the item holds something, or is there without holding anything.
bool DropFromItem(elementNode& item, std::uint32_t depth)
{
    if (!IsAsn1Type(item.type()) && !IsValue(item.type()))
        return false;
    const bool isBareValue = IsValue(item.type()) && item.value() == nullptr;
    bool isFilled = isBareValue || !HasModifier(item, ElementType::optional);
    for (const LinkKind kind : {LinkKind::shortValue, LinkKind::content}) {
        ElementNodePtr value = item.release(kind);
        if (value == nullptr)
            continue;
        isFilled = DropFromList(value, depth + 1);
        item.set(kind, std::move(value));
    }
    return isFilled;
}

/// \return whether anything in the list is filled.
bool DropFromList(ElementNodePtr& list, std::uint32_t depth)
{
    if (depth >= maxTreeDepth)
        return true;
    ItemList kept;
    bool isFilled = false;
    while (list != nullptr) {
        ElementNodePtr rest = list->release(LinkKind::sibling);
        const bool isItemFilled = DropFromItem(*list, depth);
        const bool isLeftOut =
            list->type() == ElementType::identifier || (!isItemFilled && HasModifier(*list, ElementType::optional));
        isFilled |= isItemFilled;
        if (!isLeftOut)
            kept.add(std::move(list));
        list = std::move(rest);
    }
    list = std::move(kept.first);
    return isFilled;
}

} // namespace

bool IsFilled(const elementNode* list, std::uint32_t depth)
{
    if (list != nullptr && depth >= maxTreeDepth)
        return true;
    for (const elementNode* node = list; node != nullptr; node = node->next()) {
        const elementNode* const value = node->value();
        if (IsValue(node->type()) && value == nullptr)
            return true;
        if (!IsAsn1Type(node->type()) && !IsValue(node->type()))
            continue;
        if (value == nullptr ? !HasModifier(*node, ElementType::optional) : IsFilled(value, depth + 1))
            return true;
    }
    return false;
}

void DropUnfilledItems(ElementNodePtr& list)
{
    DropFromList(list, 0);
}

} // namespace ccrypto
