#include "pki/x509/x509_value.h"

#include "asn1/der/der_analyzer.h"
#include "asn1/der/der_parser.h"
#include "asn1/der/encoding_form.h"
#include "asn1/template/template_cache.h"
#include "asn1/tree/item_list.h"
#include "core/diagnostics/auto_logger.h"
#include "pki/x509/attribute_text.h"
#include "pki/x509/field_reading.h"

#include <algorithm>
#include <utility>

using namespace ccrypto;

namespace {

constexpr const char* valueTemplate = "SEQUENCE{ OBJECT_IDENTIFIER = oid, BOOLEAN(OPTIONAL) = mandatory, value }";
constexpr const char* builtValueTemplate = "SEQUENCE{OBJECT_IDENTIFIER{oid},BOOLEAN(OPTIONAL){mandatory},value}";
constexpr const char* relativeNameTemplate = "SET[CONSTRUCTED]{ value }";
constexpr const char* listTemplate = "SEQUENCE[CONSTRUCTED]{ values }";
// The value of an attribute may be a BOOLEAN, which the template of extensions takes for the flag.
constexpr const char* attributeTemplate = "SEQUENCE{ OBJECT_IDENTIFIER = oid, value }";

constexpr const char* valueMissing = "CCrypto_X509_Value; Parser or value missing?";
constexpr const char* valueInvalid = "CCrypto_X509_Value; Invalid value?";

const elementNode* SequenceOf(const elementNode* node)
{
    const bool isRelativeName = node != nullptr && node->type() == ElementType::set;
    const elementNode* const value = isRelativeName ? node->content() : nullptr;
    return value != nullptr && value->next() == nullptr ? value : isRelativeName ? nullptr : node;
}

/// A BOOLEAN as DER writes it (X.690, 11.1), decoded or filled in.
bool ReadFlag(const elementNode* value, bool& flag)
{
    if (value == nullptr || IsAsn1Type(value->type()) || value->token().length() != 1)
        return false;
    const std::uint8_t octet = value->token()[0];
    flag = octet != 0;
    return octet == 0 || octet == 0xFF || value->type() == ElementType::truth;
}

/// The octets of a primitive OCTET STRING, which may be none; null for any other value.
const element* StringOctets(const elementNode& node)
{
    static const element none = element();
    const elementNode* const value = node.value();
    if (node.type() != ElementType::octetString || FormOfData(node) == EncodingForm::constructed)
        return nullptr;
    return value == nullptr ? &none : !IsAsn1Type(value->type()) ? &value->token() : nullptr;
}

} // namespace

CCrypto_X509_Value::CCrypto_X509_Value() : CCryptoASN1Object(valueTemplate) {}

CCrypto_X509_Value::CCrypto_X509_Value(const elementNode* node) : CCrypto_X509_Value()
{
    Parse(node);
}

CCrypto_X509_Value::CCrypto_X509_Value(const Oid& oid, const elementNode* value, bool critical) : CCrypto_X509_Value()
{
    oid_ = oid;
    critical_ = critical;
    ownValue_ = value != nullptr ? value->clone() : nullptr;
    value_ = ownValue_.get();
}

void CCrypto_X509_Value::ClearFields()
{
    oid_ = {};
    critical_ = false;
    value_ = nullptr;
    ownValue_.reset();
}

bool CCrypto_X509_Value::BuildNode()
{
    if (oid_.isNone() || value_ == nullptr)
        return false;
    const elementNode* const items = ParsedTemplate(builtValueTemplate);
    builder().setRoot(items != nullptr ? items->clone(true) : nullptr);
    // The octets, since dotted text does not say which identifier it was where the first arc is 2. A flag that is not set is the
    // default and left out.
    const element octets(oid_.octets().data(), static_cast<std::uint32_t>(oid_.octets().size()));
    return builder().fill("oid", octets) && (!critical_ || builder().fill("mandatory", element::FromTruth(true))) &&
           builder().fill_tree("value", value_);
}

bool CCrypto_X509_Value::Parse(const elementNode* node)
{
    CCryptoAutoLogger logger("CCrypto_X509_Value::Parse");
    const elementNode* const sequence = SequenceOf(node);
    const elementNode* const items = ParsedTemplate(valueTemplate);
    const bool isThere = sequence != nullptr && items != nullptr && CCryptoTemplateMatch().Match(items, sequence);
    if (CCryptoASN1Object::Parse(isThere ? sequence : nullptr))
        return logger.setResult(true);
    return logger.fail(false, "%s", isThere ? valueInvalid : valueMissing);
}

bool CCrypto_X509_Value::ParseNode()
{
    value_ = find("value");
    oid_ = Oid::OfNode(data()->content());
    return IsIdentifierContent(oid_.octets()) && (!isBound("mandatory") || ReadFlag(find("mandatory"), critical_));
}

element CCrypto_X509_Value::content() const
{
    const element* const octets = value_ != nullptr ? StringOctets(*value_) : nullptr;
    return octets != nullptr ? Octets(*octets) : element();
}

CCryptoString CCrypto_X509_Value::text(bool* isText) const
{
    const elementNode* const value = value_ != nullptr ? value_->value() : nullptr;
    std::optional<CCryptoString> text;
    if (value_ != nullptr && (value == nullptr || !IsAsn1Type(value->type())))
        text = AttributeText(value_->type(), value != nullptr ? value->token().bytes() : std::span<const std::uint8_t>());
    if (isText != nullptr)
        *isText = text.has_value();
    return text ? *std::move(text) : CCryptoString();
}

bool CCrypto_X509_ValueList::append(const elementNode& node, bool isAttribute, std::uint32_t relativeName)
{
    CCryptoAutoLogger logger("CCrypto_X509_ValueList::append", LoggerMode::quiet);
    if (values_.size() >= maxValues)
        return logger.fail(false, "There are more than %u values", maxValues);
    CCryptoTemplateMatch match;
    const elementNode* const items = ParsedTemplate(isAttribute ? attributeTemplate : valueTemplate);
    if (items == nullptr || !match.Match(items, &node))
        return logger.fail(false, "%s", valueMissing);

    auto value = std::make_unique<CCrypto_X509_Value>();
    value->oid_ = Oid::OfNode(node.content());
    const TemplateBinding* const flag = match.find("mandatory");
    value->value_ = match.find("value")->node;
    value->relativeName_ = relativeName;
    if (!IsIdentifierContent(value->oid_.octets()) || match.surplus() != nullptr ||
        (flag != nullptr && !ReadFlag(flag->node, value->critical_)) || (!isAttribute && StringOctets(*value->value_) == nullptr))
        return logger.fail(false, "%s", valueInvalid);
    values_.push_back(std::move(value));
    return true;
}

bool CCrypto_X509_ValueList::readAttributes(const elementNode& set, std::uint32_t relativeName)
{
    if (set.type() != ElementType::set || set.content() == nullptr)
        return false;
    for (const elementNode* attribute = set.content(); attribute != nullptr; attribute = attribute->next()) {
        if (!append(*attribute, true, relativeName))
            return false;
    }
    return true;
}

bool CCrypto_X509_ValueList::Refer(const elementNode* first, std::span<const std::uint8_t> octets, bool asName)
{
    CCryptoAutoLogger logger("CCrypto_X509_ValueList::Parse");
    clear();
    std::uint32_t relativeName = 0;
    for (const elementNode* node = first; node != nullptr; node = node->next()) {
        const bool isRead = asName ? readAttributes(*node, relativeName++) : append(*node, false, 0);
        if (!isRead) {
            clear();
            return logger.fail(false, asName ? "Not a name" : "Not a list of extensions");
        }
    }
    readOctets_.assign(octets.data(), static_cast<std::uint32_t>(octets.size()));
    return logger.setResult(true);
}

bool CCrypto_X509_ValueList::Parse(const elementNode* first, bool asName)
{
    ElementNodePtr list = elementNode::Make(ElementType::sequence);
    if (first != nullptr)
        list->set(LinkKind::content, first->clone(true));
    const element octets = CCryptoParser::ToDer(list.get());
    const bool isRead = Refer(list->content(), octets.bytes(), asName);
    if (isRead)
        ownNodes_ = std::move(list);
    return isRead;
}

bool CCrypto_X509_ValueList::ParseName(std::span<const std::uint8_t> der)
{
    CCryptoAutoLogger logger("CCrypto_X509_ValueList::ParseName");
    clear();
    CCryptoDERParser decoder;
    ElementNodePtr name = decoder.Decode(der);
    if (name == nullptr || !decoder.isDer() || name->type() != ElementType::sequence || name->next() != nullptr ||
        !Refer(name->content(), der, true))
        return logger.fail(false, "Not a name");
    ownNodes_ = std::move(name);
    return logger.setResult(true);
}

void CCrypto_X509_ValueList::clear()
{
    values_.clear();
    ownNodes_.reset();
    readOctets_ = {};
}

void CCrypto_X509_ValueList::add(std::unique_ptr<CCrypto_X509_Value> value)
{
    if (value == nullptr)
        return;
    values_.push_back(std::move(value));
    readOctets_ = {};
}

const CCrypto_X509_Value* CCrypto_X509_ValueList::find(const Oid& oid) const
{
    const auto found = std::ranges::find_if(values_, [&oid](const auto& value) { return value->oid() == oid; });
    return found != values_.end() ? found->get() : nullptr;
}

namespace {

using ValueIterator = std::vector<std::unique_ptr<CCrypto_X509_Value>>::const_iterator;

/// One SET, its values in the order of their encodings (X.690, 11.6); null, logged, for a value that cannot be written.
ElementNodePtr BuildRelativeName(ValueIterator first, ValueIterator last)
{
    std::vector<std::pair<element, ElementNodePtr>> encoded;
    for (; first != last; ++first) {
        ElementNodePtr node = (*first)->BuildTree();
        if (node == nullptr)
            return nullptr;
        element octets = CCryptoParser::ToDer(node.get());
        encoded.emplace_back(std::move(octets), std::move(node));
    }
    std::ranges::sort(encoded, {}, [](const auto& entry) { return entry.first.view(); });
    ItemList list;
    for (auto& entry : encoded)
        list.add(std::move(entry.second));

    const elementNode* const items = ParsedTemplate(relativeNameTemplate);
    CCryptoParser set(items != nullptr ? items->clone(true) : nullptr);
    return set.fill_tree("value", list.first.get()) ? set.takeRoot() : nullptr;
}

} // namespace

ElementNodePtr CCrypto_X509_ValueList::BuildItems(bool asName) const
{
    CCryptoAutoLogger logger("CCrypto_X509_ValueList::BuildItems");
    if (!readOctets_.isEmpty()) {
        const ElementNodePtr sequence = CCryptoDERParser().Decode(readOctets_.bytes());
        logger.setResult(sequence != nullptr);
        return sequence != nullptr ? sequence->release(LinkKind::content) : nullptr;
    }
    ItemList list;
    for (auto first = values_.begin(); first != values_.end();) {
        const auto isOther = [&](const auto& value) { return value->relativeName() != (*first)->relativeName(); };
        const auto last = asName ? std::find_if(first, values_.end(), isOther) : std::next(first);
        ElementNodePtr item = asName ? BuildRelativeName(first, last) : (*first)->BuildTree();
        if (item == nullptr)
            return logger.fail(ElementNodePtr(), "A value cannot be written");
        list.add(std::move(item));
        first = last;
    }
    logger.setResult(true);
    return std::move(list.first);
}

element CCrypto_X509_ValueList::GetDerEncodedElement(bool asName) const
{
    if (!readOctets_.isEmpty())
        return readOctets_;
    const ElementNodePtr items = BuildItems(asName);
    if (items == nullptr && !isEmpty())
        return {};
    const elementNode* const list = ParsedTemplate(listTemplate);
    CCryptoParser sequence(list != nullptr ? list->clone(true) : nullptr);
    return sequence.fill_tree("values", items.get()) ? sequence.ToDer() : element();
}
