#pragma once

#include "asn1/tree/push_buffer.h"

/// Writes a tree as XML 1.0. A tree as CCryptoXMLParser gives it for an ordinary document becomes that document again; any other is
/// written as the tree of a template, an element an item, in a namespace of its own. docs/template-language.md describes both.
class CPushXmlBuffer : public ccrypto::TextPushBuffer {
protected:
    bool pushDocument(const elementNode* first) override;
    bool pushHead(const Place& place) override;
    bool pushValue(const Place& place) override;
    bool pushEnd(const Place& place) override;
    const char* name() const override { return "CPushXmlBuffer"; }

private:
    bool pushItemHead(const Place& place);
    bool pushAttributes(const elementNode& node);
    void pushAttribute(std::string_view name, std::string_view value);
    void pushEscaped(std::string_view text, bool isAttribute);

    bool ordinary_ = false;
    bool isRoot_ = false; ///< the namespace is not declared yet
};
