#include "pki/cms/filled_template.h"

#include "asn1/der/der_analyzer.h"
#include "asn1/der/encoding_form.h"
#include "asn1/parser/parser.h"
#include "asn1/template/template_cache.h"
#include "asn1/tree/node_parts.h"
#include "core/diagnostics/auto_logger.h"
#include "pki/cms/der_head.h"

#include <algorithm>

namespace ccrypto {

namespace {

constexpr std::uint64_t maxWritten = UINT32_MAX;

bool HasPlaceholder(const elementNode* list)
{
    for (; list != nullptr; list = list->next())
        if (list->type() == ElementType::identifier || HasPlaceholder(list->value()))
            return true;
    return false;
}

} // namespace

DerTemplate::DerTemplate(const char* templateText)
{
    addList(ParsedTemplate(templateText));
}

void DerTemplate::addList(const elementNode* list)
{
    for (; list != nullptr; list = list->next())
        add(*list);
}

void DerTemplate::add(const elementNode& node)
{
    const std::size_t index = items_.size();
    Item& item = items_.emplace_back();
    const EncodingMarks marks = EncodingMarksOf(node);
    if (node.type() == ElementType::identifier) {
        item.kind = Item::Kind::placeholder;
        item.name = node.token().view();
    } else if (!HasPlaceholder(marks.value)) {
        item.octets = CCryptoParser::ToDer(node.clone().get());
    } else {
        item.kind = Item::Kind::element;
        item.isOptional = marks.optional;
        item.identifier = IdentifierOctet(node.type());
        if (marks.number != nullptr)
            item.identifier = static_cast<std::uint8_t>(item.identifier | marks.number->toWord32());
        if (marks.constructed || IsListType(node.type()) || HoldsElement(marks.value))
            item.identifier |= derConstructedBit;
        addList(marks.value);
    }
    items_[index].end = static_cast<std::uint32_t>(items_.size());
}

void FilledTemplate::put(std::string_view name, Slot slot)
{
    const auto isMeant = [&](const DerTemplate::Item& item) {
        return item.kind == DerTemplate::Item::Kind::placeholder && item.name == name;
    };
    const auto found = std::ranges::find_if(layout_.items(), isMeant);
    if (found == layout_.items().end()) {
        unknownName_ = name;
        return;
    }
    slot.isWritten = true;
    slots_[static_cast<std::size_t>(found - layout_.items().begin())] = slot;
}

FilledTemplate::Level FilledTemplate::measure(std::uint32_t first, std::uint32_t end)
{
    Level level;
    for (std::uint32_t index = first; index != end; index = layout_.items()[index].end) {
        const DerTemplate::Item& item = layout_.items()[index];
        Slot& slot = slots_[index];
        if (item.kind == DerTemplate::Item::Kind::constant) {
            level.length += item.octets.length();
        } else if (item.kind == DerTemplate::Item::Kind::placeholder) {
            slot.length = slot.inner != nullptr ? slot.inner->measureAll() : slot.octets.size();
            level.length += slot.length;
            level.isFilled |= slot.isWritten;
            level.holdsElements |= slot.areElements;
        } else {
            const Level inside = measure(index + 1, item.end);
            slot.isWritten = inside.isFilled || !item.isOptional;
            if (!slot.isWritten)
                continue;
            slot.length = inside.length;
            slot.identifier = static_cast<std::uint8_t>(item.identifier | (inside.holdsElements ? derConstructedBit : 0));
            level.length +=
                slot.length <= maxWritten ? slot.length + DerHeadSize(static_cast<std::uint32_t>(slot.length)) : maxWritten;
            level.isFilled |= inside.isFilled;
        }
    }
    return level;
}

void FilledTemplate::write(element& output) const
{
    for (std::uint32_t index = 0; index != slots_.size();) {
        const DerTemplate::Item& item = layout_.items()[index];
        const Slot& slot = slots_[index];
        ++index;
        if (item.kind == DerTemplate::Item::Kind::constant)
            output.append(item.octets.data(), item.octets.length());
        else if (!slot.isWritten)
            index = item.end;
        else if (item.kind == DerTemplate::Item::Kind::element)
            AppendDerHead(output, slot.identifier, static_cast<std::uint32_t>(slot.length));
        else if (slot.inner != nullptr)
            slot.inner->write(output);
        else
            output.append(slot.octets.data(), static_cast<std::uint32_t>(slot.octets.size()));
    }
}

element FilledTemplate::toDer()
{
    CCryptoAutoLogger logger("FilledTemplate::toDer");
    if (!unknownName_.empty())
        return logger.fail(element(), "Index node not found: %s", unknownName_.c_str());
    const std::uint64_t length = measureAll();
    if (length > maxWritten)
        return logger.fail(element(), "The encoding is longer than 4 GiB");
    element output;
    output.reserve(static_cast<std::uint32_t>(length));
    write(output);
    logger.setResult(true);
    return output;
}

} // namespace ccrypto
