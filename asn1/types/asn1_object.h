#pragma once

#include "asn1/parser/parser.h"
#include "asn1/template/template_match.h"
#include "asn1/tree/element_node.h"
#include "core/text/element.h"
#include "core/text/string.h"

#include <cstdint>
#include <memory>
#include <string_view>

namespace ccrypto {

/// The bytes of a value without its kind: a text that is filled in, or was found, as an OCTET STRING.
[[nodiscard]] inline element Octets(const element& value)
{
    return {value.data(), value.length()};
}

} // namespace ccrypto

/// One ASN.1 type with its template: reads its fields from a decoded tree, or builds the tree of them.
///
/// The object keeps a copy of the data it was parsed from, so it may outlive the tree. A failed parse leaves the object as one that
/// was never given anything; nothing is thrown.
class CCryptoASN1Object {
public:
    CCryptoASN1Object(const CCryptoASN1Object&) = delete;
    CCryptoASN1Object& operator=(const CCryptoASN1Object&) = delete;

    virtual ~CCryptoASN1Object() = default;

    /// Fills the template from the fields. \return false, logged, when they do not make a value.
    virtual bool BuildNode() = 0;
    /// Reads the fields from the data that was bound.
    virtual bool ParseNode() = 0;
    /// A member to be parsed or built; null for a type that has none.
    virtual std::unique_ptr<CCryptoASN1Object> CreateMember() { return nullptr; }

    /// Binds `node`, with as many of its siblings as the template takes, and reads the fields. The node may be a part of what the
    /// object holds, which is destroyed once it was copied. \return false, logged, for a null
    /// node, for a template that is not one ("SetNodeToParse() failed"), and ("ParseNode() failed") for data that the template does
    /// not match, where the step that failed is named, that goes on inside an element after the last item there, or whose fields
    /// do not make sense. A reason that ParseNode gave stays the thread's LastFailure().
    bool Parse(const elementNode* node);
    /// Parse for an object that already held something.
    bool Assign(const elementNode* node);
    /// Decodes elements, then parses them. More than the template takes are refused, and octets other than padding with 00 or FF
    /// after a 00 or FF that ends a level.
    bool ParseDer(const element& der);
    /// Back to an object that was never given anything.
    void clear();
    /// Ignores data after the last item of the template, or of an element in it, which Parse and ParseDer refuse otherwise.
    void allowSurplus(bool allowed = true) { allowsSurplus_ = allowed; }
    /// How many elements of the list at the node parsed last the template took.
    [[nodiscard]] std::uint32_t taken() const { return taken_; }

    /// The tree of the fields, without the names and optional items that nothing was put into; null, logged, when they do not make
    /// one.
    [[nodiscard]] ccrypto::ElementNodePtr BuildTree();
    /// The same as DER; empty on failure.
    [[nodiscard]] element BuildDer();

    /// The part of the bound data that stands for a placeholder of the template; null when it was not bound or is empty.
    [[nodiscard]] const elementNode* find(std::string_view name) const;
    [[nodiscard]] bool isBound(std::string_view name) const { return match_.find(name) != nullptr; }
    /// Of a part that is an element, its value. Empty, or 0, for what find() does not find. A number is the last four of the
    /// octets, whatever text they look like; bytes are integers or raw bytes.
    [[nodiscard]] CCryptoString findText(std::string_view name) const;
    [[nodiscard]] std::uint32_t findNumber(std::string_view name) const;
    [[nodiscard]] element findBytes(std::string_view name) const;

protected:
    /// \param templateText a constant. \param withSiblings the data is copied with all siblings that follow it.
    explicit CCryptoASN1Object(const char* templateText, bool withSiblings = false);

    /// For the constructors that take data: parses, and logs "Invalid elementToParse" for a node that does not match.
    void construct(const elementNode* elementToParse);

    /// Clears the fields; called before ParseNode and after a failure.
    virtual void ClearFields() {}

    /// What it means to the type that data() does not match; null for no more than the step that failed.
    virtual const char* MeaningOfMismatch() const { return nullptr; }

    /// The template to fill, fresh for each build.
    CCryptoParser& builder() { return builder_; }
    /// The node that was bound.
    const elementNode* data() const { return data_.get(); }

private:
    enum class Outcome { parsed, noTemplate, mismatch, surplus, wrongFields };

    Outcome setNodeToParse(const elementNode& node);
    Outcome parse(const elementNode& node);
    const elementNode* valueOf(std::string_view name) const;

    const char* templateText_;
    bool withSiblings_;
    bool allowsSurplus_ = false;
    std::uint32_t taken_ = 0;
    CCryptoParser builder_;
    ccrypto::ElementNodePtr data_;
    CCryptoTemplateMatch match_;
};
