#include "tools/guiserver/request_report.h"

#include "tools/text/safe_text.h"

#include <cstdio>

namespace ccrypto {

namespace {

std::string Formatted(const char* format, unsigned value)
{
    char text[32];
    std::snprintf(text, sizeof text, format, value);
    return text;
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
        return '"' + OneLine(item.bytes.view()) + '"';
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
        json += "\"name\":" + JsonString(item.name);
        if (item.kind == ReceivedItem::Kind::integer)
            json += ",\"integer\":" + std::to_string(item.integer);
        if (item.kind == ReceivedItem::Kind::text)
            json += ",\"text\":" + JsonString(item.bytes.view());
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
        text += "    " + OneLine(file) + "\n";
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
                       ",\"name\":" + JsonString(Name(request)) + ",\"status\":" + std::to_string(request.status) +
                       ",\"bodyLength\":" + std::to_string(request.body.size()) +
                       ",\"wellFormed\":" + (request.wellFormed ? "true" : "false") + ",\"items\":" + JsonItems(request.items);
    if (request.known != nullptr && request.known->type == GuiRequestType::setPdfDocumentToSign) {
        std::string files;
        for (const std::string_view file : SplitFiles(request.files))
            files += (files.empty() ? "" : ",") + JsonString(file);
        json += ",\"files\":[" + files + "]";
    }
    if (hex)
        json += ",\"body\":\"" + HexText(request.body) + '"';
    if (answer.sent)
        json += ",\"answer\":{\"status\":" + std::to_string(answer.status) + ",\"items\":" + JsonItems(answer.items) + "}";
    return json + "}\n";
}

} // namespace ccrypto
