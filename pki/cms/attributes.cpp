#include "pki/cms/attributes.h"

#include "asn1/der/der_cursor.h"
#include "core/diagnostics/auto_logger.h"
#include "pki/cms/content_info.h"
#include "pki/x509/der_tags.h"

#include <algorithm>
#include <vector>

using namespace ccrypto;

namespace {

constexpr const char* attributeTemplate = "SEQUENCE { OBJECT_IDENTIFIER=attrType, attrValues }";
constexpr const char* attributesTemplate = "SET[CONSTRUCTED]{ authenticatedAttributes }";

constexpr const char* noType = "Attribute type not found?";
constexpr const char* noValues = "attrValues parsing error";

} // namespace

CCryptoPKCS7Attribute::CCryptoPKCS7Attribute() : CCryptoASN1Object(attributeTemplate)
{
    const CCryptoAutoLogger logger("CCryptoPKCS7Attribute::CCryptoPKCS7Attribute", LoggerMode::resultOptional);
}

CCryptoPKCS7Attribute::CCryptoPKCS7Attribute(const elementNode* node) : CCryptoPKCS7Attribute()
{
    construct(node);
}

CCryptoPKCS7Attribute::CCryptoPKCS7Attribute(const Oid& type, ElementNodePtr values) : CCryptoPKCS7Attribute()
{
    type_ = type;
    values_ = std::move(values);
}

void CCryptoPKCS7Attribute::ClearFields()
{
    type_ = {};
    values_.reset();
}

bool CCryptoPKCS7Attribute::BuildNode()
{
    CCryptoAutoLogger logger("CCryptoPKCS7Attribute::BuildNode");
    const ElementNodePtr set = WrapItems(ElementType::set, values_.get());
    return logger.setResult(!type_.isNone() && values_ != nullptr && builder().fill("attrType", element(type_.dotted().view())) &&
                            builder().fill_tree("attrValues", set.get()));
}

bool CCryptoPKCS7Attribute::ParseNode()
{
    CCryptoAutoLogger logger("CCryptoPKCS7Attribute::ParseNode");
    type_ = Oid::OfNode(data()->content());
    if (type_.isNone())
        return logger.fail(false, "%s", noType);
    const elementNode* const set = find("attrValues");
    if (set == nullptr || set->type() != ElementType::set || set->content() == nullptr || CountItems(set->content()) > maxValues)
        return logger.fail(false, "%s", noValues);
    return logger.setResult(true);
}

/// An attribute in which a part is missing does not match.
const char* CCryptoPKCS7Attribute::MeaningOfMismatch() const
{
    if (data() == nullptr || data()->type() != ElementType::sequence)
        return nullptr;
    return Oid::OfNode(data()->content()).isNone() ? noType : noValues;
}

const elementNode* CCryptoPKCS7Attribute::values() const
{
    const elementNode* const set = find("attrValues");
    return values_ == nullptr && set != nullptr ? set->content() : values_.get();
}

const elementNode* CCryptoPKCS7Attribute::onlyValue() const
{
    const elementNode* const first = values();
    return first != nullptr && first->next() == nullptr ? first : nullptr;
}

CCryptoPKCS7Attributes::CCryptoPKCS7Attributes()
    : CCryptoASN1Collection(attributesTemplate, "authenticatedAttributes", MakeAsn1Member<CCryptoPKCS7Attribute>)
{
    const CCryptoAutoLogger logger("CCryptoPKCS7Attributes::CCryptoPKCS7Attributes", LoggerMode::resultOptional);
}

bool CCryptoPKCS7Attributes::ParseNode()
{
    CCryptoAutoLogger logger("CCryptoPKCS7Attributes::ParseNode");
    return logger.setResult(CCryptoASN1Collection::ParseNode());
}

bool CCryptoPKCS7Attributes::ParseItems(const elementNode* first)
{
    CCryptoAutoLogger logger("CCryptoPKCS7Attributes::ParseItems");
    if (first == nullptr)
        return logger.fail(false, "There is no attribute");
    if (CountItems(first) > maxAttributes)
        return logger.fail(false, "There are more than %u attributes", maxAttributes);
    return logger.setResult(Parse(WrapItems(ElementType::set, first).get()));
}

const CCryptoPKCS7Attribute& CCryptoPKCS7Attributes::attribute(std::uint32_t index) const
{
    return static_cast<const CCryptoPKCS7Attribute&>(*members()[index]);
}

std::uint32_t CCryptoPKCS7Attributes::count(const Oid& type) const
{
    std::uint32_t found = 0;
    for (std::uint32_t index = 0; index < size(); ++index)
        found += attribute(index).type() == type;
    return found;
}

const CCryptoPKCS7Attribute* CCryptoPKCS7Attributes::find(const Oid& type) const
{
    for (std::uint32_t index = 0; index < size(); ++index)
        if (attribute(index).type() == type)
            return &attribute(index);
    return nullptr;
}

namespace ccrypto {

element SortedSet(const element& set)
{
    const auto value = OnlyValue(set.bytes(), der_tag::set);
    if (!value)
        return {};
    std::vector<std::span<const std::uint8_t>> items;
    for (DerCursor cursor(*value); !cursor.atEnd();) {
        const DerItem item = cursor.read();
        if (!item)
            return {};
        items.push_back(item.octets);
    }
    std::ranges::sort(items, [](const auto& left, const auto& right) { return std::ranges::lexicographical_compare(left, right); });
    element sorted(set.data(), set.length() - static_cast<std::uint32_t>(value->size()));
    sorted.reserve(set.length());
    for (const auto& item : items)
        sorted.append(item.data(), static_cast<std::uint32_t>(item.size()));
    return sorted;
}

namespace cms {

const Oid contentType = Oid::FromDotted("1.2.840.113549.1.9.3");
const Oid messageDigest = Oid::FromDotted("1.2.840.113549.1.9.4");
const Oid signingTime = Oid::FromDotted("1.2.840.113549.1.9.5");
const Oid counterSignature = Oid::FromDotted("1.2.840.113549.1.9.6");
const Oid algorithmProtection = Oid::FromDotted("1.2.840.113549.1.9.52");
const Oid signingCertificate = Oid::FromDotted("1.2.840.113549.1.9.16.2.12");
const Oid signingCertificateV2 = Oid::FromDotted("1.2.840.113549.1.9.16.2.47");
const Oid revocationReferences = Oid::FromDotted("1.2.840.113549.1.9.16.2.22");
const Oid revocationValues = Oid::FromDotted("1.2.840.113549.1.9.16.2.24");
const Oid pdfRevocationInformation = Oid::FromDotted("1.2.840.113583.1.1.8");

} // namespace cms

} // namespace ccrypto
