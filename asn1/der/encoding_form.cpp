#include "asn1/der/encoding_form.h"

#include "asn1/der/der_analyzer.h"
#include "asn1/tree/node_parts.h"

using namespace ccrypto;

namespace {

EncodingForm FormOfTaggedItem(const elementNode* value)
{
    const bool isLone = value != nullptr && value->next() == nullptr;
    // NULL has no contents under an implicit tag, and is an element under an explicit one.
    if (value == nullptr || (isLone && value->type() == ElementType::asn1Null))
        return EncodingForm::either;
    const bool isList = !isLone && (IsAsn1Type(value->type()) || value->type() == ElementType::identifier);
    return isList || HoldsElement(value) ? EncodingForm::constructed : EncodingForm::either;
}

} // namespace

namespace ccrypto {

bool HoldsElement(const elementNode* list)
{
    for (; list != nullptr; list = list->next()) {
        if (IsAsn1Type(list->type()) && (!IsExcluded(*list) || HoldsElement(list->value())))
            return true;
    }
    return false;
}

EncodingForm FormOfData(const elementNode& data)
{
    const EncodingMarks marks = EncodingMarksOf(data);
    if (marks.constructed)
        return EncodingForm::constructed;
    if (HasBracket(data, ElementType::implicit))
        return EncodingForm::either;
    if (marks.primitive)
        return EncodingForm::primitive;
    if (HoldsElement(marks.value))
        return EncodingForm::constructed;
    const bool mayBeList = IsListType(data.type()) || IsTagClass(data.type());
    return mayBeList && marks.value == nullptr ? EncodingForm::either : EncodingForm::primitive;
}

EncodingForm FormOfItem(const elementNode& item)
{
    const EncodingMarks marks = EncodingMarksOf(item);
    if (marks.constructed)
        return EncodingForm::constructed;
    if (HasBracket(item, ElementType::primitive))
        return EncodingForm::primitive;
    const bool holdsElement = HoldsElement(marks.value);
    if (HasBracket(item, ElementType::implicit))
        return marks.value != nullptr && !holdsElement ? EncodingForm::primitive : EncodingForm::either;
    if (IsListType(item.type()))
        return EncodingForm::constructed;
    if (IsTagClass(item.type()))
        return FormOfTaggedItem(marks.value);
    return holdsElement || item.type() == ElementType::external ? EncodingForm::either : EncodingForm::primitive;
}

bool IsConstructedString(const elementNode& item)
{
    const ElementType type = item.type();
    if (!IsAsn1Type(type) || IsTagClass(type) || IsListType(type) || type == ElementType::external)
        return false;
    const EncodingMarks marks = EncodingMarksOf(item);
    return !marks.excluded && (marks.constructed || (!marks.primitive && HoldsElement(marks.value)));
}

} // namespace ccrypto
