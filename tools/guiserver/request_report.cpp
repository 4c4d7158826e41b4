#include "tools/guiserver/request_report.h"

#include <cstdio>
#include <utility>

namespace ccrypto {

namespace {

constexpr std::uint32_t noCharacter = 0xFFFFFFFF;

/// The character at the front of `text` and its length in bytes; `noCharacter` and 1 for a byte that is no UTF-8. Surrogates are
/// let through, overlong forms are not.
std::pair<std::uint32_t, std::size_t> FrontCharacter(std::string_view text)
{
    const auto lead = static_cast<unsigned char>(text[0]);
    if (lead < 0x80)
        return {lead, 1};
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length)
        return {noCharacter, 1};
    std::uint32_t character = lead & (0xFFU >> (length + 1));
    for (std::size_t index = 1; index < length; ++index) {
        const auto next = static_cast<unsigned char>(text[index]);
        if ((next & 0xC0) != 0x80)
            return {noCharacter, 1};
        character = character << 6 | (next & 0x3FU);
    }
    constexpr std::uint32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
    if (character < least[length] || character > 0x10FFFF)
        return {noCharacter, 1};
    return {character, length};
}

std::string Formatted(const char* format, unsigned value)
{
    char text[32];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

bool IsSurrogate(std::uint32_t character)
{
    return character >= 0xD800 && character <= 0xDFFF;
}

/// Control characters, C1 among them, and those that turn the direction of writing.
bool SteersTerminal(std::uint32_t character)
{
    return character < 0x20 || (character >= 0x7F && character < 0xA0) || character == 0x061C ||
           (character >= 0x200E && character <= 0x200F) || (character >= 0x202A && character <= 0x202E) ||
           (character >= 0x2066 && character <= 0x2069);
}

std::string Shown(std::string_view text)
{
    std::string shown;
    while (!text.empty()) {
        const auto [character, length] = FrontCharacter(text);
        if (character == noCharacter || IsSurrogate(character) || SteersTerminal(character)) {
            for (std::size_t index = 0; index < length; ++index)
                shown += Formatted("\\x%02X", static_cast<unsigned char>(text[index]));
        } else {
            shown += text.substr(0, length);
        }
        text.remove_prefix(length);
    }
    return shown;
}

std::string HexText(std::string_view bytes)
{
    std::string text;
    for (const char byte : bytes)
        text += Formatted("%02x", static_cast<unsigned char>(byte));
    return text;
}

std::string HexRows(std::string_view bytes)
{
    std::string rows;
    for (std::size_t start = 0; start < bytes.size(); start += 16) {
        const std::string_view row = bytes.substr(start, 16);
        rows += "    " + Formatted("%06x ", static_cast<unsigned>(start));
        std::string characters;
        for (std::size_t index = 0; index < 16; ++index) {
            const char byte = index < row.size() ? row[index] : ' ';
            rows += index < row.size() ? Formatted(" %02x", static_cast<unsigned char>(byte)) : "   ";
            characters += byte >= ' ' && byte <= '~' ? byte : '.';
        }
        rows += "  " + characters.substr(0, row.size()) + "\n";
    }
    return rows;
}

/// The names that "*" joins; an empty one where a separator has nothing beside it.
std::vector<std::string_view> SplitFiles(std::string_view files)
{
    std::vector<std::string_view> names;
    if (files.empty())
        return names;
    std::size_t end = 0;
    while ((end = files.find('*')) != std::string_view::npos) {
        names.push_back(files.substr(0, end));
        files.remove_prefix(end + 1);
    }
    names.push_back(files);
    return names;
}

std::string ShownItem(const ReceivedItem& item)
{
    switch (item.kind) {
    case ReceivedItem::Kind::integer:
        return std::to_string(item.integer);
    case ReceivedItem::Kind::text:
        return '"' + Shown(item.bytes.view()) + '"';
    case ReceivedItem::Kind::bytes:
        return HexText(item.bytes.view());
    case ReceivedItem::Kind::secret:
        return "(secret, " + std::to_string(item.length) + " bytes)";
    case ReceivedItem::Kind::empty:
        break;
    }
    return "(empty)";
}

std::string JsonItems(const std::vector<ReceivedItem>& items)
{
    std::string json = "[";
    for (const ReceivedItem& item : items) {
        json += json.size() > 1 ? ",{" : "{";
        json += "\"name\":" + JsonText(item.name);
        if (item.kind == ReceivedItem::Kind::integer)
            json += ",\"integer\":" + std::to_string(item.integer);
        if (item.kind == ReceivedItem::Kind::text)
            json += ",\"text\":" + JsonText(item.bytes.view());
        if (item.kind == ReceivedItem::Kind::bytes)
            json += ",\"bytes\":\"" + HexText(item.bytes.view()) + '"';
        if (item.kind == ReceivedItem::Kind::secret)
            json += ",\"secretLength\":" + std::to_string(item.length);
        json += '}';
    }
    return json + "]";
}

const char* Name(const ReceivedRequest& request)
{
    return request.known != nullptr ? request.known->name : "Unknown";
}

} // namespace

std::string JsonText(std::string_view text)
{
    std::string json = "\"";
    while (!text.empty()) {
        const auto [character, length] = FrontCharacter(text);
        if (character == noCharacter)
            json += Formatted("\\u%04x", static_cast<unsigned char>(text[0]));
        else if (IsSurrogate(character) || SteersTerminal(character))
            json += Formatted("\\u%04x", character);
        else if (character == '"' || character == '\\')
            json += {'\\', static_cast<char>(character)};
        else
            json += text.substr(0, length);
        text.remove_prefix(length);
    }
    return json + '"';
}

std::string DescribeLostAnswer(std::uint32_t number, bool json)
{
    const std::string which = std::to_string(number);
    return json ? "{\"number\":" + which + ",\"answerLost\":true}\n" : "[" + which + "] the client did not take the answer\n";
}

std::string DescribeAsText(std::uint32_t number, const ReceivedRequest& request, const GivenAnswer& answer, bool hex)
{
    std::string text = "[" + std::to_string(number) + "] " + std::to_string(request.type) + " " + Name(request) + ", " +
                       std::to_string(request.body.size()) + " bytes\n";
    if (request.status != 0)
        text += "    status " + std::to_string(request.status) + "\n";
    for (const ReceivedItem& item : request.items) {
        if (request.known != nullptr && request.known->items[0].kind == GuiItemKind::fileNames && &item == &request.items[0])
            continue;
        text += "    " + item.name + " = " + ShownItem(item) + "\n";
    }
    for (const std::string_view file : SplitFiles(request.files))
        text += "    " + Shown(file) + "\n";
    if (!request.wellFormed)
        text += "    malformed\n";
    if (hex)
        text += HexRows(request.body);

    text += answer.sent ? "  answered with status " + std::to_string(answer.status) : "  not answered";
    for (const ReceivedItem& item : answer.items)
        text += ", " + item.name + " = " + ShownItem(item);
    return text + "\n";
}

std::string DescribeAsJson(std::uint32_t number, const ReceivedRequest& request, const GivenAnswer& answer, bool hex)
{
    std::string json = "{\"number\":" + std::to_string(number) + ",\"type\":" + std::to_string(request.type) +
                       ",\"name\":" + JsonText(Name(request)) + ",\"status\":" + std::to_string(request.status) +
                       ",\"bodyLength\":" + std::to_string(request.body.size()) +
                       ",\"wellFormed\":" + (request.wellFormed ? "true" : "false") + ",\"items\":" + JsonItems(request.items);
    if (request.known != nullptr && request.known->type == GuiRequestType::setPdfDocumentToSign) {
        std::string files;
        for (const std::string_view file : SplitFiles(request.files))
            files += (files.empty() ? "" : ",") + JsonText(file);
        json += ",\"files\":[" + files + "]";
    }
    if (hex)
        json += ",\"body\":\"" + HexText(request.body) + '"';
    if (answer.sent)
        json += ",\"answer\":{\"status\":" + std::to_string(answer.status) + ",\"items\":" + JsonItems(answer.items) + "}";
    return json + "}\n";
}

} // namespace ccrypto
