#include "tools/cryptotool/asn1/outline.h"

namespace ccrypto {

namespace {

constexpr std::uint32_t endOfContentsLength = 2;

using Octets = std::span<const std::uint8_t>;

class Walk {
public:
    Walk(std::span<const std::uint8_t> input, bool lenient, std::uint32_t levels,
         const std::function<void(const OutlineElement&)>& visit)
        : analyzer_(input, lenient), input_(input), levels_(levels), visit_(visit)
    {
    }

    /// \return the offset after the last element.
    std::uint32_t list(const elementNode* first, std::uint32_t position, std::uint32_t end, std::uint32_t depth, Octets extension);
    void rest(std::uint32_t position, std::uint32_t end, std::uint32_t depth);
    void cut(const DerOptions& options);

private:
    std::uint32_t whole(const DerOptions& options, std::uint32_t position, std::uint32_t depth, DerHeader& next);
    std::uint32_t inside(const elementNode* first, const DerHeader& header, std::uint32_t depth, Octets extension);
    void visit(const OutlineElement& line)
    {
        if (levels_ == 0 || line.depth < levels_)
            visit_(line);
    }

    CCryptoDERAnalyzer analyzer_;
    std::span<const std::uint8_t> input_;
    std::uint32_t levels_;
    const std::function<void(const OutlineElement&)>& visit_;
};

/// The elements that were decoded from inside a node; null where there is a value.
const elementNode* ElementsOf(const elementNode& node)
{
    const elementNode* const first = node.content();
    return first != nullptr && (IsAsn1Type(first->type()) || first->type() == ElementType::none) ? first : nullptr;
}

std::uint32_t Walk::list(const elementNode* first, std::uint32_t position, std::uint32_t end, std::uint32_t depth, Octets extension)
{
    Octets identifier;
    for (const elementNode* node = first; node != nullptr; node = node->next()) {
        OutlineElement line;
        if (analyzer_.read(position, end, line.header) != CCryptoDERAnalyzer::Result::element)
            break;
        const elementNode* const elements = ElementsOf(*node);
        const bool isConstructed = line.header.constructed() || line.header.indefinite;
        line.depth = depth;
        line.isOpen = elements != nullptr || isConstructed;
        line.value = analyzer_.value(line.header);
        line.extension = extension;
        visit(line);
        if (line.header.type() == ElementType::objectIdentifier)
            identifier = line.value;
        const bool isExtension = line.header.type() == ElementType::octetString && !identifier.empty();
        position = line.isOpen ? inside(elements, line.header, depth + 1, isExtension ? identifier : extension)
                               : line.header.valueStart + line.header.length;
    }
    return position;
}

std::uint32_t Walk::inside(const elementNode* first, const DerHeader& header, std::uint32_t depth, Octets extension)
{
    const std::uint32_t end = header.valueStart + header.length;
    const bool hasUnusedBits = header.type() == ElementType::bitString && !header.constructed();
    const std::uint32_t position = list(first, header.valueStart + (hasUnusedBits ? 1 : 0), end, depth, extension);
    const bool isEnded = header.indefinite && end - position >= endOfContentsLength && input_[position] == 0;
    if (!isEnded) {
        rest(position, end, depth);
        return end;
    }
    OutlineElement line;
    line.kind = OutlineElement::Kind::endOfContents;
    line.depth = depth;
    line.header.start = position;
    line.header.valueStart = position + endOfContentsLength;
    visit(line);
    return line.header.valueStart;
}

void Walk::rest(std::uint32_t position, std::uint32_t end, std::uint32_t depth)
{
    if (position >= end)
        return;
    OutlineElement line;
    line.kind = OutlineElement::Kind::notDecoded;
    line.depth = depth;
    line.header.start = position;
    line.header.valueStart = position;
    line.header.length = end - position;
    line.value = input_.subspan(position, end - position);
    visit(line);
}

/// Visits the whole elements that follow each other. \return the offset after them, with the header that was read there.
std::uint32_t Walk::whole(const DerOptions& options, std::uint32_t position, std::uint32_t depth, DerHeader& next)
{
    const std::uint32_t start = position;
    const auto end = static_cast<std::uint32_t>(input_.size());
    while (analyzer_.read(position, end, next) == CCryptoDERAnalyzer::Result::element)
        position = next.valueStart + next.length;
    CCryptoDERParser parser(options);
    const ElementNodePtr decoded = parser.Decode(input_.subspan(start, position - start));
    return list(decoded.get(), start, position, depth, {});
}

void Walk::cut(const DerOptions& options)
{
    const auto end = static_cast<std::uint32_t>(input_.size());
    std::uint32_t position = 0;
    std::uint32_t depth = 0;
    for (bool isOpen = true; isOpen && depth < CCryptoDERParser::maxLevel; ++depth) {
        OutlineElement line;
        position = whole(options, position, depth, line.header);
        if (line.header.start != position || line.header.length <= end - line.header.valueStart)
            break;
        isOpen = line.header.constructed();
        line.depth = depth;
        line.isOpen = isOpen;
        line.value = input_.subspan(line.header.valueStart);
        visit(line);
        position = isOpen ? line.header.valueStart : end;
    }
    rest(position, end, depth);
}

} // namespace

std::string_view OutlineElement::typeName() const
{
    if (kind == Kind::endOfContents)
        return "END_OF_CONTENTS";
    if (kind == Kind::notDecoded)
        return "NOT_DECODED";
    const char* const name = header.type() != ElementType::none ? TokenText(header.type()) : nullptr;
    return name != nullptr ? name : "UNIVERSAL";
}

std::string_view OutlineElement::className() const
{
    switch (header.type()) {
    case ElementType::application:
        return "application";
    case ElementType::contextSpecific:
        return "context-specific";
    case ElementType::privateClass:
        return "private";
    default:
        return "universal";
    }
}

void WalkOutline(std::span<const std::uint8_t> input, const elementNode* decoded, const DerOptions& options, std::uint32_t levels,
                 const std::function<void(const OutlineElement&)>& visit)
{
    Walk walk(input, options.lenient, levels, visit);
    const auto end = static_cast<std::uint32_t>(input.size());
    if (decoded != nullptr)
        walk.rest(walk.list(decoded, 0, end, 0, {}), end, 0);
    else
        walk.cut(options);
}

} // namespace ccrypto
