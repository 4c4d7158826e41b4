#include "asn1/der/push_der_buffer.h"

#include "asn1/der/back_buffer.h"
#include "asn1/der/ber_tlv.h"
#include "asn1/der/der_analyzer.h"
#include "asn1/der/der_parser.h"
#include "asn1/der/encoding_form.h"
#include "asn1/der/object_identifier.h"
#include "asn1/der/unfilled_items.h"
#include "asn1/tree/item_list.h"
#include "asn1/tree/node_parts.h"
#include "core/diagnostics/auto_logger.h"
#include "core/text/utf8.h"

using namespace ccrypto;

namespace {

constexpr std::uint64_t maxTagNumber = 30;
constexpr std::uint64_t maxUnusedBits = 0xFF;

bool IsAtMost(const element& number, std::uint64_t most)
{
    return !number.negative() && number.length() <= sizeof most && number.toWord64() <= most;
}

class Encoder {
public:
    explicit Encoder(CCryptoAutoLogger& logger) : logger_(logger) {}

    bool writeList(const elementNode* first, const elementNode* owner, std::uint32_t depth);
    std::span<const std::uint8_t> bytes() const { return out_.bytes(); }

private:
    bool writeItem(const elementNode& node, const elementNode* owner, std::uint32_t depth);
    bool writeNode(const elementNode& node, std::uint32_t depth);
    bool writeDataObject(const elementNode& node, std::uint32_t depth);
    bool writeLevel(const elementNode* first, const elementNode& owner, std::uint32_t depth);
    bool writeIdentifier(ElementType type, const EncodingMarks& marks);
    void writeLength(std::size_t length);
    bool writeValue(const element& value, const elementNode* owner);
    void writeInteger(const element& value);
    bool writeObjectIdentifier(const element& value);
    void writeUtf8(const element& value);
    bool writeTwoByteCharacters(const element& value);
    bool fail(const char* format, const char* argument) { return logger_.fail(false, format, argument); }

    CCryptoAutoLogger& logger_;
    BackBuffer out_;
    /// How many elements the one being written lies in.
    std::uint32_t level_ = 0;
};

bool Encoder::writeList(const elementNode* first, const elementNode* owner, std::uint32_t depth)
{
    if (first == nullptr)
        return true;
    if (depth >= maxTreeDepth)
        return logger_.fail(false, "The tree is more than %u levels deep", maxTreeDepth);
    const elementNode* node = first;
    while (node->next() != nullptr)
        node = node->next();
    for (;; node = node->parent()) {
        if (!writeItem(*node, owner, depth))
            return false;
        if (node == first)
            return true;
    }
}

bool Encoder::writeItem(const elementNode& node, const elementNode* owner, std::uint32_t depth)
{
    if (IsAsn1Type(node.type()))
        return writeNode(node, depth);
    if (!IsValue(node.type()))
        return true;
    return node.value() != nullptr ? writeDataObject(node, depth) : writeValue(node.token(), owner);
}

/// What lies inside one element.
bool Encoder::writeLevel(const elementNode* first, const elementNode& owner, std::uint32_t depth)
{
    if (level_ >= CCryptoDERParser::maxLevel)
        return logger_.fail(false, "The tree is more than %u levels deep", CCryptoDERParser::maxLevel);
    ++level_;
    const bool written = writeList(first, &owner, depth + 1);
    --level_;
    return written;
}

bool Encoder::writeDataObject(const elementNode& node, std::uint32_t depth)
{
    const EncodingMarks marks = EncodingMarksOf(node);
    if (marks.optional && !IsFilled(marks.value, depth))
        return true;
    if (marks.excluded)
        return writeList(marks.value, &node, depth + 1);
    if (!ccrypto::IsDataObject(node) || node.token().isEmpty())
        return fail("\"%s\" is not a tag and cannot hold content", node.token().toString().c_str());
    const std::size_t before = out_.length();
    if (!writeLevel(marks.value, node, depth))
        return false;
    writeLength(out_.length() - before);
    out_.prepend(node.token().bytes());
    return true;
}

bool Encoder::writeNode(const elementNode& node, std::uint32_t depth)
{
    const EncodingMarks marks = EncodingMarksOf(node);
    if (marks.optional && !IsFilled(marks.value, depth))
        return true;
    if (marks.excluded)
        return writeList(marks.value, &node, depth + 1);

    const std::size_t before = out_.length();
    if (!writeLevel(node.type() != ElementType::asn1Null ? marks.value : nullptr, node, depth))
        return false;
    if (node.type() == ElementType::bitString && marks.number != nullptr) {
        if (!IsAtMost(*marks.number, maxUnusedBits))
            return fail("A BIT_STRING cannot have %s unused bits", marks.number->toString().c_str());
        out_.prepend(static_cast<std::uint8_t>(marks.number->toWord32()));
    }
    writeLength(out_.length() - before);
    return writeIdentifier(node.type(), marks);
}

bool Encoder::writeIdentifier(ElementType type, const EncodingMarks& marks)
{
    std::uint8_t identifier = IdentifierOctet(type);
    if (IsTagClass(type)) {
        if (marks.number == nullptr)
            return fail("Token '%s' has no enumerated definiton", TokenText(type));
        if (!IsAtMost(*marks.number, maxTagNumber))
            return fail("Tag number %s cannot be written", marks.number->toString().c_str());
        identifier = static_cast<std::uint8_t>(identifier | marks.number->toWord32());
    }
    if (marks.constructed || (!marks.primitive && (IsListType(type) || HoldsElement(marks.value))))
        identifier |= derConstructedBit;
    out_.prepend(identifier);
    return true;
}

void Encoder::writeLength(std::size_t length)
{
    if (length < 0x80) {
        out_.prepend(static_cast<std::uint8_t>(length));
        return;
    }
    std::uint8_t octets = 0;
    for (; length != 0; length >>= 8, ++octets)
        out_.prepend(static_cast<std::uint8_t>(length));
    out_.prepend(static_cast<std::uint8_t>(0x80 | octets));
}

bool Encoder::writeValue(const element& value, const elementNode* owner)
{
    const ElementType type = owner != nullptr ? owner->type() : ElementType::none;
    const ElementType kind = value.type();
    const bool isText = kind == ElementType::text || kind == ElementType::quotedText || kind == ElementType::utf8Text;
    if (kind == ElementType::truth) {
        out_.prepend(value.toTruth() ? std::uint8_t{0xFF} : std::uint8_t{0});
        return true;
    }
    if (kind == ElementType::integer && (type == ElementType::asn1Integer || type == ElementType::enumerated)) {
        writeInteger(value);
        return true;
    }
    // The number that stands for the value of a BIT_STRING without any bits.
    if (kind == ElementType::integer && type == ElementType::bitString && value.view() == "\1" && BracketNumber(*owner) != nullptr)
        return true;
    if (type == ElementType::objectIdentifier && isText)
        return writeObjectIdentifier(value);
    if (type == ElementType::utf8String && kind == ElementType::text) {
        writeUtf8(value);
        return true;
    }
    if (type == ElementType::bmpString && kind == ElementType::utf8Text)
        return writeTwoByteCharacters(value);
    if (type == ElementType::none || kind == ElementType::characterData)
        logger_.WriteLog("WARNING: Pushing unknown value to output; token=%d, len=%d?", static_cast<int>(kind),
                         static_cast<int>(value.length()));
    out_.prepend(value.bytes());
    return true;
}

void Encoder::writeInteger(const element& value)
{
    const bool topBit = !value.isEmpty() && value.data()[0] >= 0x80;
    out_.prepend(value.bytes());
    if (topBit && !value.negative())
        out_.prepend(std::uint8_t{0});
    if (!topBit && value.negative())
        logger_.WriteLog("WARNING: Negative INTEGER coded as positive INTEGER!");
}

bool Encoder::writeObjectIdentifier(const element& value)
{
    element octets;
    if (!DerFromDotted(value.view(), octets))
        return fail("\"%s\" is not an object identifier", value.toString().c_str());
    out_.prepend(octets.bytes());
    return true;
}

void Encoder::writeUtf8(const element& value)
{
    element encoded;
    for (const std::uint8_t byte : value.bytes())
        EncodeUtf8(byte, encoded);
    out_.prepend(encoded.bytes());
}

bool Encoder::writeTwoByteCharacters(const element& value)
{
    element units;
    if (!value.toUtf16(units))
        return fail("\"%s\" is not valid UTF-8", value.toString().c_str());
    for (std::uint32_t index = units.length(); index >= 2; index -= 2) {
        char16_t unit = 0;
        std::memcpy(&unit, units.data() + index - 2, sizeof unit);
        out_.prepend(static_cast<std::uint8_t>(unit));
        out_.prepend(static_cast<std::uint8_t>(unit >> 8));
    }
    return true;
}

} // namespace

bool CPushDerBuffer::Push(const elementNode* first)
{
    CCryptoAutoLogger logger("CPushDerBuffer::Push");
    Encoder encoder(logger);
    if (!encoder.writeList(first, nullptr, 0))
        return false;
    if (encoder.bytes().size() > UINT32_MAX)
        return logger.fail(false, "The encoding is longer than 4 GiB");
    PushBytes(encoder.bytes().data(), static_cast<std::uint32_t>(encoder.bytes().size()));
    return logger.setResult(true);
}

namespace ccrypto {

namespace {

bool WriteOctets(ElementType type, ElementNodePtr value, element& octets)
{
    // A wrapper that is left out leaves what its type makes of the value.
    const ElementNodePtr wrapper = elementNode::Make(type);
    wrapper->set(LinkKind::brackets, element("EXCLUDE"));
    wrapper->set(LinkKind::content, std::move(value));
    CPushDerBuffer buffer;
    if (!buffer.Push(wrapper.get()))
        return false;
    octets = buffer.takeBuffer();
    return true;
}

} // namespace

bool ValueOctets(const elementNode& owner, const elementNode* value, element& octets)
{
    return WriteOctets(owner.type(), value != nullptr ? value->clone(true) : nullptr, octets);
}

bool SingleValueOctets(const elementNode& owner, const elementNode& value, element& octets)
{
    return WriteOctets(owner.type(), value.clone(), octets);
}

} // namespace ccrypto
