#pragma once

#include "asn1/tree/push_buffer.h"

/// Writes a tree as JSON (RFC 8259). A tree as CCryptoJSONParser gives it for an ordinary document becomes that document again;
/// any other is written as the tree of a template, each item an object of one member with the item's head as its name.
/// docs/template-language.md describes both.
class CPushJSONBuffer : public ccrypto::TextPushBuffer {
protected:
    bool pushDocument(const elementNode* first) override;
    bool pushHead(const Place& place) override;
    bool pushValue(const Place& place) override;
    bool pushEnd(const Place& place) override;
    const elementNode* listOf(const Place& place) const override;
    const char* name() const override { return "CPushJSONBuffer"; }

private:
    bool pushRoot(const elementNode* first);
    void pushString(std::string_view text);
    void pushScalar(const element& value, const elementNode* owner);
    void pushOrdinaryValue(const elementNode& node);
    bool pushItemName(const elementNode& node);

    bool ordinary_ = false;
};
