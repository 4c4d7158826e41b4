#include "asn1/der/der_parser.h"

#include "asn1/der/object_identifier.h"
#include "asn1/tree/node_pool.h"
#include "core/diagnostics/auto_logger.h"
#include "core/log/log_writers.h"

#include <algorithm>

using namespace ccrypto;

namespace {

constexpr std::uint32_t minText = 2;
constexpr std::uint32_t maxText = 511;
constexpr std::uint32_t minInsideOctetString = 3;
constexpr std::uint32_t minInsideBitString = 4;
constexpr std::uint8_t utf8LeadOfLatinLetters = 0xC3;

/// Whether bytes without a type of their own look like text, and of which kind.
ElementType DetectText(std::span<const std::uint8_t> value)
{
    if (value.size() < minText || value.size() > maxText)
        return ElementType::bytes;
    bool hasLead = false;
    for (const std::uint8_t byte : value) {
        if (byte < 0x20 || (byte >= 0x7F && byte < 0xA0))
            return ElementType::bytes;
        hasLead |= byte == utf8LeadOfLatinLetters;
    }
    return hasLead ? ElementType::utf8Text : ElementType::text;
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

/// Puts the value of an element of this type into an empty element.
void ReadValue(ElementType type, std::span<const std::uint8_t> value, element& token)
{
    if (type == ElementType::objectIdentifier) {
        if (DottedFromDer(value, token))
            return;
        token = element();
    } else {
        token.setType(KindOf(type, value));
        token.setNegative(type == ElementType::asn1Integer && value[0] >= 0x80);
    }
    token.append(value.data(), static_cast<std::uint32_t>(value.size()));
}

/// Where a value of so many bytes goes.
LinkKind SlotFor(std::uint32_t length)
{
    return length < CCryptoDERParser::shortValueLimit ? LinkKind::shortValue : LinkKind::content;
}

} // namespace

/// Decodes one input.
class CCryptoDERParser::Decoder {
public:
    Decoder(CCryptoDERParser& parser, std::span<const std::uint8_t> input)
        : parser_(parser), options_(parser.options_), analyzer_(input, parser.options_.lenient), pool_(input.size() / bytesPerNode)
    {
    }

    struct Level {
        ElementNodePtr nodes;
        std::uint32_t end = 0; ///< the offset after what was decoded
        bool endedByOctet = false;
        bool failed = false;
    };

    Level decodeLevel(std::uint32_t position, std::uint32_t end, std::uint32_t depth, bool probing);
    /// Notes what is left out from `position`, where a level ended, up to the end of its octets.
    void checkPadding(std::uint32_t position, std::uint32_t end);
    bool fail(const char* reason, std::uint32_t offset);
    bool keepsOctets() const { return keepsOctets_; }

private:
    static constexpr std::size_t bytesPerNode = 10;
    /// Later blocks of nodes are for what the first did not hold.
    static constexpr std::size_t bytesPerFurtherNode = 8;
    /// Some 4 GB of nodes; a revocation list of 300 MB has fewer.
    static constexpr std::uint64_t maxNodes = 50000000;

    /// \return null on failure; `position` moves past the element.
    ElementNodePtr decodeElement(const DerHeader& header, std::uint32_t& position, std::uint32_t depth, bool probing);
    bool decodeConstructed(const DerHeader& header, elementNode& node, std::uint32_t& position, std::uint32_t depth, bool probing);
    std::uint32_t afterContents(std::uint32_t position, std::uint32_t end) const;
    void decodePrimitive(const DerHeader& header, elementNode& node, std::uint32_t depth);
    void decodeBitString(const DerHeader& header, elementNode& node, std::uint32_t depth);
    /// Decodes a part of a value into the content slot. \return false, the node unchanged, unless all of it decodes.
    bool decodeInside(std::uint32_t start, std::uint32_t end, elementNode& node, std::uint32_t depth);
    void attachNumber(elementNode& node, LinkKind kind, std::uint8_t number);
    void attachValue(elementNode& node, std::span<const std::uint8_t> value);
    void attachBytes(elementNode& node, std::span<const std::uint8_t> bytes);

    CCryptoDERParser& parser_;
    const DerOptions options_;
    CCryptoDERAnalyzer analyzer_;
    NodePool pool_;
    /// Encoding what was decoded so far gives the octets it was decoded from.
    bool keepsOctets_ = true;
};

ElementNodePtr CCryptoDERParser::Decode(std::span<const std::uint8_t> input)
{
    CCryptoAutoLogger logger("CCryptoDERParser::Decode");
    reason_ = "";
    reasonOffset_ = 0;
    isDer_ = false;
    leavesOctets_ = false;
    if (input.size() > UINT32_MAX)
        return logger.fail(ElementNodePtr(), "The data is longer than 4 GiB");

    Decoder decoder(*this, input);
    Decoder::Level level = decoder.decodeLevel(0, static_cast<std::uint32_t>(input.size()), 0, false);
    decoder.checkPadding(level.end, static_cast<std::uint32_t>(input.size()));
    if (!level.failed && level.nodes == nullptr)
        level.failed = !decoder.fail("The data holds no element", 0);
    if (level.failed) {
        logger.fail(false, "%s (offset %u)", reason_, reasonOffset_);
        return nullptr;
    }
    isDer_ = decoder.keepsOctets();
    // A probe inside a string may have left its reason.
    reason_ = "";
    reasonOffset_ = 0;
    logger.setResult(true);
    return std::move(level.nodes);
}

void CCryptoDERParser::Decoder::checkPadding(std::uint32_t position, std::uint32_t end)
{
    const auto isPadding = [](std::uint8_t octet) { return octet == 0x00 || octet == 0xFF; };
    parser_.leavesOctets_ |= !std::ranges::all_of(analyzer_.input().subspan(position, end - position), isPadding);
}

bool CCryptoDERParser::Decoder::fail(const char* reason, std::uint32_t offset)
{
    parser_.reason_ = reason;
    parser_.reasonOffset_ = offset;
    return false;
}

void CCryptoDERParser::Decoder::attachNumber(elementNode& node, LinkKind kind, std::uint8_t number)
{
    node.set(kind, pool_.make(ElementType::integer))->token().append(number);
}

void CCryptoDERParser::Decoder::attachValue(elementNode& node, std::span<const std::uint8_t> value)
{
    ElementNodePtr held = pool_.make(ElementType::bytes);
    ReadValue(node.type(), value, held->token());
    const LinkKind kind = SlotFor(held->token().length());
    node.set(kind, std::move(held));
}

void CCryptoDERParser::Decoder::attachBytes(elementNode& node, std::span<const std::uint8_t> bytes)
{
    const auto length = static_cast<std::uint32_t>(bytes.size());
    node.set(SlotFor(length), pool_.make(ElementType::bytes))->token().append(bytes.data(), length);
}

CCryptoDERParser::Decoder::Level CCryptoDERParser::Decoder::decodeLevel(std::uint32_t position, std::uint32_t end,
                                                                        std::uint32_t depth, bool probing)
{
    Level level;
    elementNode* last = nullptr;
    for (;;) {
        DerHeader header;
        const CCryptoDERAnalyzer::Result result = analyzer_.read(position, end, header);
        level.end = position;
        level.endedByOctet = result == CCryptoDERAnalyzer::Result::endOctet;
        keepsOctets_ &= !level.endedByOctet;
        if (result == CCryptoDERAnalyzer::Result::failure)
            level.failed = !fail(analyzer_.reason(), header.start);
        if (result != CCryptoDERAnalyzer::Result::element)
            return level;

        ElementNodePtr node = decodeElement(header, position, depth, probing);
        if (node == nullptr) {
            level.failed = true;
            return level;
        }
        last = last == nullptr ? (level.nodes = std::move(node)).get() : last->set(LinkKind::sibling, std::move(node));
    }
}

ElementNodePtr CCryptoDERParser::Decoder::decodeElement(const DerHeader& header, std::uint32_t& position, std::uint32_t depth,
                                                        bool probing)
{
    const ElementType type = header.type();
    const bool known = type != ElementType::none;
    if (!known && (!options_.lenient || probing)) {
        fail("An unknown tag", header.start);
        return nullptr;
    }
    const bool isWrittenSame = known && header.canonical && header.tagNumber() != derTagNumberMask &&
                               (type != ElementType::asn1Null || header.length == 0);
    // Only what is written the same may become a tree in place of a value's bytes.
    if (probing && !isWrittenSame) {
        fail("An element that is not as DER writes it", header.start);
        return nullptr;
    }
    keepsOctets_ &= isWrittenSame;
    if (pool_.made() >= maxNodes) {
        fail("The data holds too many elements", header.start);
        return nullptr;
    }

    pool_.expect((analyzer_.input().size() - header.start) / bytesPerFurtherNode);
    ElementNodePtr node = pool_.make(known ? type : ElementType::none);
    if (!known || IsTagClass(type))
        attachNumber(*node, LinkKind::brackets, static_cast<std::uint8_t>(header.tagNumber()));
    if (header.constructed() || header.indefinite)
        return decodeConstructed(header, *node, position, depth, probing) ? std::move(node) : nullptr;
    if (IsListType(type))
        node->set(LinkKind::brackets, pool_.make(ElementType::primitive));
    position = header.valueStart + header.length;
    decodePrimitive(header, *node, depth);
    return node;
}

/// The offset after end-of-contents octets at `position`, or after one that the data ends with. Other octets end the level around,
/// too.
std::uint32_t CCryptoDERParser::Decoder::afterContents(std::uint32_t position, std::uint32_t end) const
{
    const auto rest = analyzer_.input().subspan(position, end - position);
    if (rest.empty() || rest[0] != 0 || (rest.size() > 1 && rest[1] != 0))
        return position;
    return position + (rest.size() > 1 ? 2 : 1);
}

bool CCryptoDERParser::Decoder::decodeConstructed(const DerHeader& header, elementNode& node, std::uint32_t& position,
                                                  std::uint32_t depth, bool probing)
{
    const std::uint32_t end = header.valueStart + header.length;
    position = end;
    Level level;
    if (depth + 1 >= maxLevel)
        level.failed = !fail("The data is nested more than 128 levels deep", header.start);
    else
        level = decodeLevel(header.valueStart, end, depth + 1, probing);

    if (header.indefinite && !level.failed)
        position = afterContents(level.end, end);
    else if (level.endedByOctet && !probing)
        checkPadding(level.end, end);
    if (probing && level.endedByOctet)
        level.failed = !fail("Padding inside a value", level.end);

    const bool failed = level.failed;
    keepsOctets_ &= !failed;
    node.set(LinkKind::content, std::move(level.nodes));
    if (failed && (!options_.lenient || probing)) {
        const bool isProbe = options_.insideOctetStrings || options_.insideBitStrings;
        if (!isProbe && depth == 0)
            WriteLog_G("Invalid TLV found inside constructed element; Forced to 'IMPLICIT'");
        return false;
    }
    const elementNode* const first = node.content();
    if (failed)
        node.append(LinkKind::brackets, pool_.make(ElementType::implicit));
    else if (first == nullptr || !IsAsn1Type(first->type()))
        node.append(LinkKind::brackets, pool_.make(ElementType::constructed));
    if (failed && first == nullptr && header.length != 0)
        attachBytes(node, analyzer_.value(header));
    return true;
}

void CCryptoDERParser::Decoder::decodePrimitive(const DerHeader& header, elementNode& node, std::uint32_t depth)
{
    if (header.length == 0)
        return;
    const std::uint32_t end = header.valueStart + header.length;
    const ElementType type = node.type();
    if (type == ElementType::bitString) {
        decodeBitString(header, node, depth);
        return;
    }
    const bool mayHoldMore =
        type == ElementType::octetString && options_.insideOctetStrings && header.length >= minInsideOctetString;
    if (!mayHoldMore || !decodeInside(header.valueStart, end, node, depth))
        attachValue(node, analyzer_.value(header));
}

void CCryptoDERParser::Decoder::decodeBitString(const DerHeader& header, elementNode& node, std::uint32_t depth)
{
    const std::span<const std::uint8_t> value = analyzer_.value(header);
    attachNumber(node, LinkKind::brackets, value[0]);
    if (value.size() == 1) {
        attachNumber(node, LinkKind::shortValue, 1);
        return;
    }
    const bool mayHoldMore = options_.insideBitStrings && header.length >= minInsideBitString;
    if (!mayHoldMore || !decodeInside(header.valueStart + 1, header.valueStart + header.length, node, depth))
        attachBytes(node, value.subspan(1));
}

bool CCryptoDERParser::Decoder::decodeInside(std::uint32_t start, std::uint32_t end, elementNode& node, std::uint32_t depth)
{
    if (depth + 1 >= maxLevel)
        return false;
    const NodePool::Mark mark = pool_.mark();
    const bool keptOctets = keepsOctets_;
    Level level = decodeLevel(start, end, depth + 1, true);
    if (level.failed || level.endedByOctet || level.nodes == nullptr) {
        level.nodes = nullptr;
        pool_.rewind(mark);
        keepsOctets_ = keptOctets;
        return false;
    }
    node.set(LinkKind::content, std::move(level.nodes));
    node.append(LinkKind::brackets, pool_.make(ElementType::primitive));
    return true;
}
