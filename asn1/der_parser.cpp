#include "asn1/der_parser.h"

#include "asn1/object_identifier.h"
#include "core/auto_logger.h"
#include "core/log_writers.h"

#include <algorithm>

namespace {

constexpr std::uint32_t leastText = 2;
constexpr std::uint32_t mostText = 511;
constexpr std::uint32_t leastInsideOctetString = 3;
constexpr std::uint32_t leastInsideBitString = 4;
constexpr std::uint8_t utf8LeadOfLatinLetters = 0xC3;

bool IsTextByte(std::uint8_t byte)
{
    return (byte >= 0x20 && byte <= 0x7E) || byte >= 0xA0;
}

/// Whether bytes without a type of their own look like text, and of which kind.
ElementType DetectText(std::span<const std::uint8_t> value)
{
    if (value.size() < leastText || value.size() > mostText || !std::ranges::all_of(value, IsTextByte))
        return ElementType::bytes;
    return std::ranges::find(value, utf8LeadOfLatinLetters) != value.end() ? ElementType::utf8Text : ElementType::text;
}

ElementType KindOf(ElementType type, std::span<const std::uint8_t> value)
{
    if (type == ElementType::asn1Integer)
        return ElementType::integer;
    if (type == ElementType::utf8String)
        return ElementType::utf8Text;
    const ElementType kind = DetectText(value);
    // UTF-8 text in a BMPString would be written back in two-byte characters.
    return type == ElementType::bmpString && kind == ElementType::utf8Text ? ElementType::bytes : kind;
}

element ValueOf(ElementType type, std::span<const std::uint8_t> value)
{
    if (type == ElementType::objectIdentifier) {
        element dotted;
        if (DottedFromDer(value, dotted))
            return dotted;
        return element(value.data(), static_cast<std::uint32_t>(value.size()));
    }
    element plain(value.data(), static_cast<std::uint32_t>(value.size()), KindOf(type, value));
    plain.setNegative(type == ElementType::asn1Integer && value[0] >= 0x80);
    return plain;
}

void AttachValue(elementNode& node, element value)
{
    const bool isShort = value.length() < CCryptoDERParser::shortValueLimit;
    node.set(isShort ? LinkKind::shortValue : LinkKind::content, std::move(value));
}

} // namespace

bool CCryptoDERParser::fail(const char* reason, std::uint32_t offset)
{
    reason_ = reason;
    reasonOffset_ = offset;
    return false;
}

ElementNodePtr CCryptoDERParser::Decode(std::span<const std::uint8_t> input)
{
    CCryptoAutoLogger logger("CCryptoDERParser::Decode");
    reason_ = "";
    reasonOffset_ = 0;
    if (input.size() > UINT32_MAX)
        return logger.setRetValue(3, ElementNodePtr(), "The data is longer than 4 GiB");

    CCryptoDERAnalyzer analyzer(input, options_.lenient);
    Level level = decodeLevel(analyzer, 0, static_cast<std::uint32_t>(input.size()), 0, false);
    if (!level.failed && level.nodes == nullptr)
        level.failed = !fail("The data holds no element", 0);
    if (level.failed) {
        logger.setRetValue(3, false, "%s (offset %u)", reason_, reasonOffset_);
        return nullptr;
    }
    logger.setResult(true);
    return std::move(level.nodes);
}

CCryptoDERParser::Level CCryptoDERParser::decodeLevel(CCryptoDERAnalyzer& analyzer, std::uint32_t position, std::uint32_t end,
                                                      std::uint32_t depth, bool probing)
{
    Level level;
    elementNode* last = nullptr;
    for (;;) {
        DerHeader header;
        const CCryptoDERAnalyzer::Result result = analyzer.read(position, end, header);
        level.end = position;
        level.endedByOctet = result == CCryptoDERAnalyzer::Result::endOctet;
        if (result == CCryptoDERAnalyzer::Result::failure)
            level.failed = !fail(analyzer.reason(), header.start);
        if (result != CCryptoDERAnalyzer::Result::element)
            return level;

        ElementNodePtr node = decodeElement(analyzer, header, position, depth, probing);
        if (node == nullptr) {
            level.failed = true;
            return level;
        }
        last = last == nullptr ? (level.nodes = std::move(node)).get() : last->set(LinkKind::sibling, std::move(node));
    }
}

ElementNodePtr CCryptoDERParser::decodeElement(CCryptoDERAnalyzer& analyzer, const DerHeader& header, std::uint32_t& position,
                                               std::uint32_t depth, bool probing)
{
    const ElementType type = header.type();
    const bool known = type != ElementType::none && header.tagNumber() != derTagNumberMask;
    const bool lenient = options_.lenient && !probing;
    if (!known && !lenient) {
        fail("An unknown tag", header.start);
        return nullptr;
    }
    // Only what DER writes the same may become a tree in place of a value's bytes.
    if (probing && !header.canonical) {
        fail("A length that is not as DER writes it", header.start);
        return nullptr;
    }

    ElementNodePtr node = elementNode::Make(known ? type : ElementType::none);
    if (!known || IsTagClass(type))
        node->set(LinkKind::brackets, element(header.tagNumber()));
    if (header.constructed() || header.indefinite)
        return decodeConstructed(analyzer, header, *node, position, depth, probing) ? std::move(node) : nullptr;
    position = header.valueStart + header.length;
    decodePrimitive(analyzer, header, *node, depth);
    return node;
}

bool CCryptoDERParser::decodeConstructed(CCryptoDERAnalyzer& analyzer, const DerHeader& header, elementNode& node,
                                         std::uint32_t& position, std::uint32_t depth, bool probing)
{
    const std::uint32_t end = header.valueStart + header.length;
    position = end;
    Level level;
    if (depth + 1 >= deepestLevel)
        level.failed = !fail("The data is nested more than 128 levels deep", header.start);
    else
        level = decodeLevel(analyzer, header.valueStart, end, depth + 1, probing);

    if (header.indefinite && !level.failed) {
        const auto rest = analyzer.input().subspan(level.end, end - level.end);
        if (rest.size() >= 2 && rest[0] == 0 && rest[1] == 0)
            position = level.end + 2;
        else
            level.failed = !fail("An indefinite length without end-of-contents octets", header.start);
    }
    if (probing && level.endedByOctet)
        level.failed = !fail("Padding inside a value", level.end);

    const bool failed = level.failed;
    node.set(LinkKind::content, std::move(level.nodes));
    if (failed && (!options_.lenient || probing)) {
        const bool isProbe = options_.insideOctetStrings || options_.insideBitStrings;
        if (!isProbe && depth == 0)
            WriteLog_G("Invalid TLV found inside constructed element; Forced to 'IMPLICIT'");
        return false;
    }
    const elementNode* const first = node.content();
    if (failed)
        node.append(LinkKind::brackets, elementNode::Make(ElementType::implicit));
    else if (first == nullptr || !IsAsn1Type(first->type()))
        node.append(LinkKind::brackets, elementNode::Make(ElementType::constructed));
    if (failed && first == nullptr && header.length != 0)
        AttachValue(node, element(analyzer.value(header).data(), header.length));
    return true;
}

void CCryptoDERParser::decodePrimitive(CCryptoDERAnalyzer& analyzer, const DerHeader& header, elementNode& node,
                                       std::uint32_t depth)
{
    if (header.length == 0)
        return;
    const std::uint32_t end = header.valueStart + header.length;
    const ElementType type = node.type();
    if (type == ElementType::bitString) {
        decodeBitString(analyzer, header, node, depth);
        return;
    }
    const bool mayHoldMore =
        type == ElementType::octetString && options_.insideOctetStrings && header.length >= leastInsideOctetString;
    if (!mayHoldMore || !decodeInside(analyzer, header.valueStart, end, node, depth))
        AttachValue(node, ValueOf(type, analyzer.value(header)));
}

void CCryptoDERParser::decodeBitString(CCryptoDERAnalyzer& analyzer, const DerHeader& header, elementNode& node,
                                       std::uint32_t depth)
{
    const std::span<const std::uint8_t> value = analyzer.value(header);
    node.set(LinkKind::brackets, element(std::uint32_t{value[0]}));
    if (value.size() == 1) {
        node.set(LinkKind::shortValue, element(std::uint32_t{1}));
        return;
    }
    const bool mayHoldMore = options_.insideBitStrings && header.length >= leastInsideBitString;
    if (!mayHoldMore || !decodeInside(analyzer, header.valueStart + 1, header.valueStart + header.length, node, depth))
        AttachValue(node, element(value.data() + 1, static_cast<std::uint32_t>(value.size() - 1)));
}

bool CCryptoDERParser::decodeInside(CCryptoDERAnalyzer& analyzer, std::uint32_t start, std::uint32_t end, elementNode& node,
                                    std::uint32_t depth)
{
    if (depth + 1 >= deepestLevel)
        return false;
    Level level = decodeLevel(analyzer, start, end, depth + 1, true);
    if (level.failed || level.endedByOctet || level.nodes == nullptr)
        return false;
    node.set(LinkKind::content, std::move(level.nodes));
    node.append(LinkKind::brackets, elementNode::Make(ElementType::primitive));
    return true;
}
