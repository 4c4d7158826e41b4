#pragma once

#include "asn1/asn1_object.h"
#include "core/date_time.h"

#include <cstdint>

/// A value behind a context-specific tag.
class CCryptoASN1ContextSpecific : public CCryptoASN1Object {
public:
    CCryptoASN1ContextSpecific();
    explicit CCryptoASN1ContextSpecific(const elementNode* node);
    /// Copies `data` with its siblings.
    CCryptoASN1ContextSpecific(std::uint32_t tagNumber, const elementNode* data);

    bool BuildNode() override;
    bool ParseNode() override;

    std::uint32_t tagNumber() const { return tagNumber_; }
    /// Null for an empty value.
    const elementNode* data() const { return content_.get(); }

private:
    std::uint32_t tagNumber_ = 0;
    ElementNodePtr content_;
};

class CCryptoASN1ObjectIdentifier : public CCryptoASN1Object {
public:
    CCryptoASN1ObjectIdentifier();
    explicit CCryptoASN1ObjectIdentifier(const elementNode* node);
    explicit CCryptoASN1ObjectIdentifier(const CCryptoString& dotted);

    bool BuildNode() override;
    /// False for a node that is no OBJECT_IDENTIFIER.
    bool ParseNode() override;

    /// Dotted text; empty when nothing was parsed.
    const CCryptoString& oid() const { return oid_; }

private:
    CCryptoString oid_;
};

class CCryptoASN1OctetStringObject : public CCryptoASN1Object {
public:
    CCryptoASN1OctetStringObject();
    explicit CCryptoASN1OctetStringObject(const elementNode* node);
    explicit CCryptoASN1OctetStringObject(const element& bytes);

    bool BuildNode() override;
    bool ParseNode() override;

    const element& bytes() const { return bytes_; }

private:
    element bytes_;
};

/// A GeneralizedTime (X.680, 46), always UTC.
class CCryptoASN1GeneralizedTime : public CCryptoASN1Object {
public:
    CCryptoASN1GeneralizedTime();
    explicit CCryptoASN1GeneralizedTime(const elementNode* node);
    explicit CCryptoASN1GeneralizedTime(const CCryptoDateTime& time);

    bool BuildNode() override;
    /// False for text that is no time.
    bool ParseNode() override;

    const CCryptoDateTime& time() const { return time_; }

private:
    CCryptoDateTime time_;
};

class CCryptoASN1GeneralString : public CCryptoASN1Object {
public:
    CCryptoASN1GeneralString();
    explicit CCryptoASN1GeneralString(const elementNode* node);
    explicit CCryptoASN1GeneralString(const CCryptoString& text);

    bool BuildNode() override;
    bool ParseNode() override;

    const CCryptoString& text() const { return text_; }

private:
    CCryptoString text_;
};
