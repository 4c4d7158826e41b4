#include "asn1/types/asn1_values.h"

#include "asn1/der/encoding_form.h"
#include "core/base/ascii.h"

#include <algorithm>
#include <string_view>

using namespace ccrypto;

namespace {

constexpr const char* contextSpecificTemplate = "CONTEXT_SPECIFIC[context] { data }";
constexpr const char* objectIdentifierTemplate = "OBJECT_IDENTIFIER=oid";
constexpr const char* octetStringTemplate = "OCTET_STRING[PRIMITIVE] { data }";
// "GeneralizedType" is the keyword of universal tag 24.
constexpr const char* generalizedTimeTemplate = "GeneralizedType=dateTime";
constexpr const char* generalStringTemplate = "GeneralString=value";

constexpr std::size_t secondsLength = std::string_view("YYYYMMDDHHMMSS").size();
constexpr std::size_t maxFractionDigits = 3; ///< milliseconds

/// The time of a DER GeneralizedTime; invalid for any other text. Digits after the milliseconds are cut off.
CCryptoDateTime TimeOfGeneralizedTime(std::string_view text)
{
    const auto areDigits = [](std::string_view digits) { return std::ranges::all_of(digits, IsDigit); };
    if (text.size() <= secondsLength || !text.ends_with('Z') || !areDigits(text.substr(0, secondsLength)))
        return {};
    const std::string_view fraction = text.substr(secondsLength, text.size() - secondsLength - 1);
    if (!fraction.empty() && (fraction[0] != '.' || fraction.size() == 1 || !areDigits(fraction.substr(1))))
        return {};
    CCryptoString kept(text.substr(0, secondsLength));
    kept.append(fraction.substr(0, 1 + maxFractionDigits)).append("Z");
    return CCryptoDateTime(kept);
}

std::uint32_t FractionDigits(std::int32_t milliseconds)
{
    return milliseconds == 0 ? 0 : milliseconds % 100 == 0 ? 1 : milliseconds % 10 == 0 ? 2 : 3;
}

} // namespace

CCryptoASN1ContextSpecific::CCryptoASN1ContextSpecific() : CCryptoASN1Object(contextSpecificTemplate) {}

CCryptoASN1ContextSpecific::CCryptoASN1ContextSpecific(const elementNode* node) : CCryptoASN1ContextSpecific()
{
    construct(node);
}

CCryptoASN1ContextSpecific::CCryptoASN1ContextSpecific(std::uint32_t tagNumber, const elementNode* data)
    : CCryptoASN1ContextSpecific()
{
    tagNumber_ = tagNumber;
    if (data != nullptr)
        content_ = data->clone(true);
}

bool CCryptoASN1ContextSpecific::BuildNode()
{
    elementNode* const item = builder().root();
    if (!builder().fill("context", element(tagNumber_)))
        return false;
    if (isConstructed_ && content_ == nullptr)
        item->append(LinkKind::brackets, elementNode::Make(ElementType::constructed));
    return builder().fill_tree("data", content_.get());
}

bool CCryptoASN1ContextSpecific::ParseNode()
{
    tagNumber_ = findNumber("context");
    isConstructed_ = FormOfData(*this->CCryptoASN1Object::data()) == EncodingForm::constructed;
    const elementNode* const data = find("data");
    content_ = data != nullptr ? data->clone(true) : nullptr;
    return true;
}

void CCryptoASN1ContextSpecific::ClearFields()
{
    tagNumber_ = 0;
    isConstructed_ = false;
    content_.reset();
}

CCryptoASN1ObjectIdentifier::CCryptoASN1ObjectIdentifier() : CCryptoASN1Object(objectIdentifierTemplate) {}

CCryptoASN1ObjectIdentifier::CCryptoASN1ObjectIdentifier(const elementNode* node) : CCryptoASN1ObjectIdentifier()
{
    construct(node);
}

CCryptoASN1ObjectIdentifier::CCryptoASN1ObjectIdentifier(const CCryptoString& dotted) : CCryptoASN1ObjectIdentifier()
{
    oid_ = dotted;
}

bool CCryptoASN1ObjectIdentifier::BuildNode()
{
    return !oid_.isEmpty() && builder().fill("oid", element(oid_.view()));
}

bool CCryptoASN1ObjectIdentifier::ParseNode()
{
    if (data()->type() != ElementType::objectIdentifier)
        return false;
    // Octets without a dotted form stay bytes.
    const elementNode* const dotted = find("oid");
    if (dotted == nullptr || dotted->type() == ElementType::bytes || dotted->token().isEmpty())
        return false;
    oid_ = findText("oid");
    return true;
}

CCryptoASN1OctetStringObject::CCryptoASN1OctetStringObject() : CCryptoASN1Object(octetStringTemplate) {}

CCryptoASN1OctetStringObject::CCryptoASN1OctetStringObject(const elementNode* node) : CCryptoASN1OctetStringObject()
{
    construct(node);
}

CCryptoASN1OctetStringObject::CCryptoASN1OctetStringObject(const element& bytes) : CCryptoASN1OctetStringObject()
{
    bytes_ = bytes;
}

bool CCryptoASN1OctetStringObject::BuildNode()
{
    element raw = bytes_;
    raw.setType(ElementType::bytes);
    return builder().fill("data", raw);
}

bool CCryptoASN1OctetStringObject::ParseNode()
{
    const elementNode* const value = find("data");
    // What was decoded inside the octets is octets again here.
    bytes_ = value != nullptr && IsAsn1Type(value->type()) ? CCryptoParser::ToDer(value) : findBytes("data");
    return true;
}

CCryptoASN1GeneralizedTime::CCryptoASN1GeneralizedTime() : CCryptoASN1Object(generalizedTimeTemplate) {}

CCryptoASN1GeneralizedTime::CCryptoASN1GeneralizedTime(const elementNode* node) : CCryptoASN1GeneralizedTime()
{
    construct(node);
}

CCryptoASN1GeneralizedTime::CCryptoASN1GeneralizedTime(const CCryptoDateTime& time) : CCryptoASN1GeneralizedTime()
{
    time_ = time;
}

bool CCryptoASN1GeneralizedTime::BuildNode()
{
    const std::uint32_t digits = FractionDigits(time_.fields().millisecond);
    return time_.isValid() && builder().fill("dateTime", time_.toUtcDateTime().toGeneralizedTime(digits).data());
}

bool CCryptoASN1GeneralizedTime::ParseNode()
{
    time_ = TimeOfGeneralizedTime(findBytes("dateTime").view());
    return time_.isValid();
}

CCryptoASN1GeneralString::CCryptoASN1GeneralString() : CCryptoASN1Object(generalStringTemplate) {}

CCryptoASN1GeneralString::CCryptoASN1GeneralString(const elementNode* node) : CCryptoASN1GeneralString()
{
    construct(node);
}

CCryptoASN1GeneralString::CCryptoASN1GeneralString(const CCryptoString& text) : CCryptoASN1GeneralString()
{
    text_ = text;
}

bool CCryptoASN1GeneralString::BuildNode()
{
    return builder().fill("value", text_.data());
}

bool CCryptoASN1GeneralString::ParseNode()
{
    text_ = CCryptoString(findBytes("value").view());
    return true;
}
