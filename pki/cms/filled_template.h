#pragma once

#include "asn1/tree/element_node.h"
#include "core/text/element.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ccrypto {

/// A template laid out for FilledTemplate: its elements in the order in which they are written, constants already encoded.
class DerTemplate {
public:
    struct Item {
        enum class Kind { element, placeholder, constant };

        Kind kind = Kind::constant;
        std::uint8_t identifier = 0;
        bool isOptional = false;
        std::uint32_t end = 0; ///< the index after the last item inside
        std::string name;      ///< of a placeholder
        ::element octets;      ///< of a constant
    };

    explicit DerTemplate(const char* templateText);

    /// Empty for text that is not a template.
    [[nodiscard]] const std::vector<Item>& items() const { return items_; }

private:
    void addList(const elementNode* list);
    void add(const elementNode& node);

    std::vector<Item> items_;
};

/// A template with octets for its placeholders, written as DER without a tree: each octet is copied once, however deep it lies.
///
/// An optional item is written when something in it was put in, empty octets among it. What is put in is not copied, and must
/// outlive the object.
class FilledTemplate {
public:
    explicit FilledTemplate(const DerTemplate& layout) : layout_(layout), slots_(layout.items().size()) {}

    /// The value of a string or a number.
    void putOctets(std::string_view name, std::span<const std::uint8_t> octets) { put(name, {.octets = octets}); }
    /// Any number of elements, DER.
    void putElements(std::string_view name, std::span<const std::uint8_t> der) { put(name, {.octets = der, .areElements = true}); }
    void putTemplate(std::string_view name, FilledTemplate& inner) { put(name, {.inner = &inner, .areElements = true}); }

    /// Empty, logged, when a name was not that of a placeholder.
    [[nodiscard]] element toDer();

private:
    struct Slot {
        std::span<const std::uint8_t> octets = {};
        FilledTemplate* inner = nullptr;
        bool areElements = false;
        bool isWritten = false;      ///< of a placeholder: something was put in
        std::uint64_t length = 0;    ///< of the value as it is written
        std::uint8_t identifier = 0; ///< of an element
    };
    /// Items of one level, measured.
    struct Level {
        std::uint64_t length = 0;
        bool isFilled = false;
        bool holdsElements = false; ///< in place of a placeholder
    };

    void put(std::string_view name, Slot slot);
    Level measure(std::uint32_t first, std::uint32_t end);
    [[nodiscard]] std::uint64_t measureAll() { return measure(0, static_cast<std::uint32_t>(slots_.size())).length; }
    void write(element& output) const;

    const DerTemplate& layout_;
    std::vector<Slot> slots_; ///< for each item of the template
    std::string unknownName_;
};

} // namespace ccrypto
