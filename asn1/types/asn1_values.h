#pragma once

#include "asn1/types/asn1_object.h"
#include "core/system/date_time.h"

#include <cstdint>

/// A value with a context-specific tag.
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

protected:
    void ClearFields() override;

private:
    std::uint32_t tagNumber_ = 0;
    bool isConstructed_ = false; ///< as it was read: an empty value does not imply it
    ccrypto::ElementNodePtr content_;
};

class CCryptoASN1ObjectIdentifier : public CCryptoASN1Object {
public:
    CCryptoASN1ObjectIdentifier();
    explicit CCryptoASN1ObjectIdentifier(const elementNode* node);
    explicit CCryptoASN1ObjectIdentifier(const CCryptoString& dotted);

    bool BuildNode() override;
    /// False for a node that is not an OBJECT_IDENTIFIER, and for one whose octets have no dotted form.
    bool ParseNode() override;

    /// Dotted text; empty when nothing was parsed.
    const CCryptoString& oid() const { return oid_; }

protected:
    void ClearFields() override { oid_ = {}; }

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

protected:
    void ClearFields() override { bytes_ = {}; }

private:
    element bytes_;
};

/// A GeneralizedTime as DER has it (X.690, 11.7): YYYYMMDDHHMMSS, a fraction of a second or none, "Z". Of the
/// fraction milliseconds are kept; zeros at its end, which DER leaves out, are ignored.
class CCryptoASN1GeneralizedTime : public CCryptoASN1Object {
public:
    CCryptoASN1GeneralizedTime();
    explicit CCryptoASN1GeneralizedTime(const elementNode* node);
    explicit CCryptoASN1GeneralizedTime(const CCryptoDateTime& time);

    bool BuildNode() override;
    /// False for text of another form, local times among them.
    bool ParseNode() override;

    const CCryptoDateTime& time() const { return time_; }

protected:
    void ClearFields() override { time_ = {}; }

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

protected:
    void ClearFields() override { text_ = {}; }

private:
    CCryptoString text_;
};
