#pragma once

#include "asn1/tree/element_node.h"
#include "core/text/string.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace ccrypto {

/// What a placeholder of a template stands for in the data it was matched against. The data, and the match, must outlive it.
struct TemplateBinding {
    std::string_view name;             ///< text of the template
    const elementNode* node = nullptr; ///< null for an element whose value is empty
    bool withSiblings = false;         ///< a value: the node and all that follow it; otherwise the one node
};

} // namespace ccrypto

/// Holds decoded data against a template and binds the template's placeholders.
///
/// Items are matched in order against the data of the same level. A typed item agrees with a data node of the same type, tag class
/// and number; it must then match inside, in its form (asn1/der/encoding_form.h) and, where the template gives constants, in its
/// octets. An item with "OPTIONAL" that does not agree is left out, and the same data is tried against the next; one that agrees
/// and does not match inside fails the whole, so that broken data is never taken for absent.
///
/// A placeholder by itself takes the whole data node at its place; inside a typed item, alone or after "=", it takes that item's
/// value; in a bracket list it takes the tag number or the unused bits; the first of two in a BIT_STRING takes the unused bits;
/// after constants it takes the octets that follow theirs. "EXCLUDE" stands for its content. Data after the last item is left
/// alone, but of data that is there a list must take something: a choice of which no alternative agrees fails.
///
/// #7F49{…} takes a BER-TLV data object of that tag, name{…} any, and #BF81,name{…} one whose tag begins so: the name then stands
/// for the rest of the tag.
class CCryptoTemplateMatch {
public:
    /// Both are lists: the first node and its siblings. The data may be what a placeholder stood for in the match before.
    /// \return false when an item finds no data that it can take.
    [[nodiscard]] bool Match(const elementNode* templateItems, const elementNode* data);

    /// What no item took: the first such element after the last item, and the first inside an element after the last item there.
    /// Null when there is none, and after a failure. Neither is a failure; a caller that wants no more than the template says so.
    [[nodiscard]] const elementNode* following() const { return following_; }
    [[nodiscard]] const elementNode* surplus() const { return surplus_; }

    /// Empty after a failure.
    const std::vector<ccrypto::TemplateBinding>& bindings() const { return bindings_; }
    /// Null when the placeholder was not bound.
    const ccrypto::TemplateBinding* find(std::string_view name) const;

    /// The item that did not match, and why: "INTEGER: the data holds SEQUENCE"; empty after a match. No value of the data is in
    /// it.
    const CCryptoString& failedStep() const { return failedStep_; }
    /// Where that item stands in the template: "SEQUENCE / CONTEXT_SPECIFIC[0] / item 3"; empty after a match.
    const CCryptoString& failedPlace() const { return failedPlace_; }

    /// Forgets what was bound, before the data is destroyed; the failure stays.
    void clearBindings();

private:
    enum class Reason { otherType, noData, otherForm, otherValue, tooDeep };

    bool matchWhole(const elementNode* items, const elementNode* data, std::uint32_t depth);
    bool matchList(const elementNode* item, const elementNode*& data, std::uint32_t depth);
    bool matchItem(const elementNode& item, const elementNode*& data, std::uint32_t depth);
    bool matchDataObject(const elementNode& item, const elementNode& tagged, const elementNode*& data, std::uint32_t depth);
    bool matchTag(const elementNode& item, const elementNode& tagged, const elementNode& data);
    bool matchExcluded(const elementNode& item, const elementNode*& data, std::uint32_t depth);
    bool matchTyped(const elementNode& item, const elementNode& data, std::uint32_t depth);
    bool matchBitString(const elementNode& item, const elementNode& data, std::uint32_t depth);
    bool matchUnusedBits(const elementNode& item, const elementNode*& wanted, const elementNode* number);
    bool matchValue(const elementNode& item, const elementNode* wanted, const elementNode& data, const elementNode* value,
                    std::uint32_t depth);
    bool matchOctets(const elementNode& item, const elementNode* wanted, const elementNode& data, element octets);
    const elementNode* splitUnusedBits(const elementNode*& value);
    const elementNode* keep(ccrypto::ElementNodePtr made);
    ccrypto::ElementNodePtr takeMade(const elementNode* data);
    void bind(const elementNode& placeholder, const elementNode* node, bool withSiblings);
    bool fail(const elementNode& item, const elementNode* data, Reason reason);
    CCryptoString describeFailure() const;

    std::vector<ccrypto::TemplateBinding> bindings_;
    /// Nodes that placeholders stand for and that are not in the data.
    std::vector<ccrypto::ElementNodePtr> made_;
    CCryptoString failedStep_;
    CCryptoString failedPlace_;
    const elementNode* following_ = nullptr;
    const elementNode* surplus_ = nullptr;
    const elementNode* failedItem_ = nullptr; ///< until Match returns
    const elementNode* failedData_ = nullptr;
    Reason failedReason_ = Reason::otherType;
};
