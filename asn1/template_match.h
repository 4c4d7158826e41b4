#pragma once

#include "asn1/element_node.h"
#include "core/string.h"

#include <cstdint>
#include <string_view>
#include <vector>

/// What a placeholder of a template stands for in the data it was matched against. The data must outlive it.
struct TemplateBinding {
    std::string_view name;             ///< text of the template
    const elementNode* node = nullptr; ///< null for an element whose value is empty
    bool withSiblings = false;         ///< a value: the node and all that follow it; otherwise the one node
};

/// Holds decoded data against a template and binds the template's placeholders.
///
/// Items are matched in order against the data of the same level. A typed item agrees with a data node of the same type, tag class
/// and number whose value agrees with what the item asks of it; constants must be equal. An item with "OPTIONAL" that does not
/// agree is left out, and the same data is tried against the next. A placeholder by itself takes the whole data node at its place;
/// inside a typed item, alone or behind "=", it takes that item's value; in a bracket list it takes the tag number; the first of
/// two in a BIT_STRING takes the unused bits. "EXCLUDE" stands for its content. Data behind the last item is left alone.
class CCryptoTemplateMatch {
public:
    /// Both are lists: the first node and its siblings. \return false when an item that is not optional finds no data.
    bool Match(const elementNode* templateItems, const elementNode* data);

    const std::vector<TemplateBinding>& bindings() const { return bindings_; }
    /// Null when the placeholder was not bound.
    const TemplateBinding* find(std::string_view name) const;

    /// The item that found no data, deepest first attempt: "INTEGER: the data holds SEQUENCE"; empty after a match.
    CCryptoString failedStep() const;

private:
    bool matchList(const elementNode* item, const elementNode*& data, std::uint32_t depth);
    bool matchItem(const elementNode& item, const elementNode*& data, std::uint32_t depth);
    bool matchTyped(const elementNode& item, const elementNode& data, std::uint32_t depth);
    bool matchValue(const elementNode& item, const elementNode& data, std::uint32_t depth);
    bool matchBitString(const elementNode& item, const elementNode& data, std::uint32_t depth);
    bool matchConstant(const elementNode& item, const elementNode* constant, const elementNode& data);
    bool matchTagNumber(const elementNode& item, const elementNode& data);
    void bind(const elementNode& placeholder, const elementNode* node, bool withSiblings);
    bool fail(const elementNode& item, const elementNode* data);

    std::vector<TemplateBinding> bindings_;
    const elementNode* failedItem_ = nullptr;
    const elementNode* failedData_ = nullptr;
};
