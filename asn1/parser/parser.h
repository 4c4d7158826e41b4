#pragma once

#include "asn1/der/der_parser.h"
#include "asn1/tree/element_node.h"
#include "core/text/string.h"

#include <memory>
#include <string_view>

namespace ccrypto {

/// Whether "include" in template text puts other files into it. Text from outside could name any file that the process can read.
enum class TemplateIncludes { files, none };

} // namespace ccrypto

/// Owns one tree, and loads, saves, searches and edits it. The root is the first item; further items are its siblings.
///
/// Every load destroys the tree held before, whether it succeeds or not. What is loaded from memory may be a part of that tree.
/// Files are read whole, up to 256 MiB.
class CCryptoParser {
public:
    CCryptoParser() = default;
    explicit CCryptoParser(ccrypto::ElementNodePtr root) : root_(std::move(root)) {}

    elementNode* root() const { return root_.get(); }
    bool isEmpty() const { return root_ == nullptr; }
    void clear() { setRoot(nullptr); }
    void setRoot(ccrypto::ElementNodePtr root)
    {
        root_ = std::move(root);
        isDer_ = false;
    }
    [[nodiscard]] ccrypto::ElementNodePtr takeRoot()
    {
        isDer_ = false;
        return std::move(root_);
    }

    /// Template text. Included names without "/" are looked for in the folder of the setting "includePath".
    [[nodiscard]] bool Load_ASCII_File(const CCryptoString& name,
                                       ccrypto::TemplateIncludes includes = ccrypto::TemplateIncludes::files);
    [[nodiscard]] bool Load_DER_File(const CCryptoString& name, const ccrypto::DerOptions& options = {});
    [[nodiscard]] bool Load_JSON_File(const CCryptoString& name);
    [[nodiscard]] bool Load_XML_File(const CCryptoString& name);
    /// One value element, the file's bytes, under a fresh root.
    [[nodiscard]] bool Load_RAW_File(const CCryptoString& name);
    /// The file's bytes; null, logged, when it cannot be read.
    [[nodiscard]] static std::unique_ptr<element> SLoad_RAW_Element(const CCryptoString& name);

    [[nodiscard]] bool Load_ASCII_Memory(std::string_view text);
    [[nodiscard]] bool Load_ASCII_Memory(std::string_view text, ccrypto::TemplateIncludes includes);
    [[nodiscard]] bool Load_DER_Memory(const element& der, const ccrypto::DerOptions& options = {});
    [[nodiscard]] bool Load_JSON_Memory(std::string_view text);
    [[nodiscard]] bool Load_XML_Memory(std::string_view text);

    /// Whether the tree was loaded from DER, and ToDer() gives the same octets until the tree is changed. False for what DER writes
    /// otherwise, such as indefinite lengths and padding: the octets that a signature covers are then in the input alone.
    [[nodiscard]] bool isDer() const { return isDer_; }

    [[nodiscard]] bool Save_ASCII_File(const CCryptoString& name) const;
    [[nodiscard]] static bool Save_ASCII_File(const CCryptoString& name, const elementNode* node);
    [[nodiscard]] bool Save_DER_File(const CCryptoString& name) const;
    [[nodiscard]] static bool Save_DER_File(const CCryptoString& name, const elementNode* node);
    [[nodiscard]] bool Save_JSON_File(const CCryptoString& name) const;
    [[nodiscard]] static bool Save_JSON_File(const CCryptoString& name, const elementNode* node);
    [[nodiscard]] bool Save_XML_File(const CCryptoString& name) const;
    [[nodiscard]] static bool Save_XML_File(const CCryptoString& name, const elementNode* node);
    /// The bytes of the root's value.
    [[nodiscard]] bool Save_RAW_File(const CCryptoString& name) const;

    /// The tree, or the list that begins at `node`, as DER, template text, JSON or XML; empty, logged, when it cannot be written
    /// so.
    [[nodiscard]] element ToDer() const { return ToDer(root_.get()); }
    [[nodiscard]] static element ToDer(const elementNode* node);
    [[nodiscard]] CCryptoString ToText() const { return ToText(root_.get()); }
    [[nodiscard]] static CCryptoString ToText(const elementNode* node);
    [[nodiscard]] CCryptoString ToJson() const { return ToJson(root_.get()); }
    [[nodiscard]] static CCryptoString ToJson(const elementNode* node);
    [[nodiscard]] CCryptoString ToXml() const { return ToXml(root_.get()); }
    [[nodiscard]] static CCryptoString ToXml(const elementNode* node);

    /// Destroys `node` without its siblings, which close the gap. Whether the node belongs to this tree is found by walking to the
    /// root. \return false, logged, for a node of another tree.
    [[nodiscard]] bool remove_node(elementNode* node);
    /// Puts `replacement`, which has no parent, into `old`'s place; the content of `old` follows it, then the siblings of
    /// `old`, and `old` is destroyed. \return the replacement; null, logged, when either condition is not met.
    elementNode* replace_node(elementNode* old, ccrypto::ElementNodePtr replacement);

    /// Walks from `start`, a step a character: "{" content (or short value), "=" short value (or content), "[" brackets,
    /// "(" modifiers, "," next sibling, "P" parent; a run between "|" is a template that the node reached must match.
    /// \return null for a step without a node or with another character.
    static elementNode* find_path(elementNode* start, std::string_view path);
    elementNode* find_path(std::string_view path) const { return find_path(root_.get(), path); }
    static const element* find_path_element(elementNode* start, std::string_view path);

    /// The first node, from `start` on, whose token is an identifier of this name: of the one level, or in depth.
    static elementNode* find_name(elementNode* start, std::string_view name, bool inDepth, bool followSiblings);
    /// The same in the whole tree. \return null, logged as "Index node not found: %s".
    elementNode* index_node(std::string_view name) const;

    /// The value of a named node. Empty, logged, when the node is missing or has none.
    CCryptoString get_text(std::string_view name) const;
    std::uint32_t get_number(std::string_view name) const;
    element get_bytes(std::string_view name) const;
    ccrypto::ElementNodePtr get_tree(std::string_view name) const;

    /// Replaces the token of the first node of this name; its brackets and content stay. \return false, logged, when there is none.
    [[nodiscard]] bool fill(std::string_view name, const element& value);
    /// A word: a keyword becomes its token ("NULL" the type), anything else text.
    [[nodiscard]] bool fill_word(std::string_view name, std::string_view word);
    /// Puts a copy of `tree`, with its siblings, in place of the first node of this name; the node's siblings follow. A null tree
    /// leaves the placeholder.
    [[nodiscard]] bool fill_tree(std::string_view name, const elementNode* tree);

private:
    bool owns(const elementNode* node) const;
    const elementNode* index_value(std::string_view name) const;

    ccrypto::ElementNodePtr root_;
    bool isDer_ = false;
};
