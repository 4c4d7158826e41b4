#include "asn1/der/pem.h"

#include "core/base/ascii.h"
#include "core/diagnostics/auto_logger.h"

#include <algorithm>
#include <cstdio>

namespace ccrypto {

namespace {

constexpr std::string_view beginMark = "-----BEGIN ";
constexpr std::string_view endMark = "-----END ";
constexpr std::string_view closeMark = "-----";
constexpr std::size_t lineLength = 64;

bool IsBase64Digit(char character)
{
    return IsAsciiLetter(character) || IsDigit(character) || character == '+' || character == '/';
}

std::string_view WithoutBlanksBehind(std::string_view text)
{
    while (!text.empty() && IsBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

/// Lines one after the other.
class LineReader {
public:
    explicit LineReader(std::string_view text) : rest_(text) {}

    bool next(std::string_view& line)
    {
        if (rest_.empty())
            return false;
        const std::size_t end = std::min(rest_.find('\n'), rest_.size());
        line = WithoutBlanksBehind(rest_.substr(0, end));
        rest_.remove_prefix(std::min(end + 1, rest_.size()));
        return true;
    }

private:
    std::string_view rest_;
};

/// The label of a line "-----BEGIN LABEL-----". \return false for another line.
bool LabelOf(std::string_view line, std::string_view mark, std::string_view& label)
{
    if (!line.starts_with(mark) || !line.ends_with(closeMark) || line.size() < mark.size() + closeMark.size())
        return false;
    label = line.substr(mark.size(), line.size() - mark.size() - closeMark.size());
    return true;
}

/// The base64 of a block, up to its last line. \return what is wrong with the block; empty when nothing is.
std::string ReadBody(LineReader& lines, std::string_view label, element& body)
{
    std::string_view line;
    bool inHeaders = false;
    while (lines.next(line)) {
        std::string_view endLabel;
        if (LabelOf(line, endMark, endLabel))
            return endLabel == label ? "" : "it ends as " + std::string(endLabel);
        if (line.starts_with("-----"))
            break;
        if (line.find(':') != std::string_view::npos && body.isEmpty()) {
            inHeaders = true;
            if (line.starts_with("Proc-Type:") && line.ends_with("ENCRYPTED"))
                return "it is encrypted by its headers (RFC 1421), which is not supported";
        } else if (inHeaders && !line.empty() && (line[0] == ' ' || line[0] == '\t')) {
            continue; // a header that goes on
        } else if (line.empty()) {
            inHeaders = false;
        } else {
            body.append(line);
        }
    }
    return "its END line is missing";
}

/// Why text is not base64; empty when it is.
std::string FaultOfBase64(std::string_view text)
{
    std::size_t digits = 0;
    std::size_t padding = 0;
    for (const char character : text) {
        if (IsBlank(character))
            continue;
        if (character == '=') {
            ++padding;
        } else if (IsBase64Digit(character) && padding == 0) {
            ++digits;
        } else {
            char fault[64];
            std::snprintf(fault, sizeof fault, "base64 holds the byte 0x%02x, which does not belong there",
                          static_cast<unsigned>(static_cast<unsigned char>(character)));
            return fault;
        }
    }
    const bool isCut = digits % 4 == 1 || (padding != 0 && (padding > 2 || (digits + padding) % 4 != 0));
    return isCut ? "base64 ends inside a group" : "";
}

} // namespace

std::string PemBlockName(std::size_t number, std::string_view label)
{
    return "PEM block " + std::to_string(number) + " (" + std::string(label) + ")";
}

bool HasPemBlock(std::string_view text)
{
    return text.starts_with(beginMark) || text.find("\n" + std::string(beginMark)) != std::string_view::npos;
}

bool IsBase64Text(std::string_view text)
{
    return std::ranges::all_of(text,
                               [](char character) { return IsBase64Digit(character) || IsBlank(character) || character == '='; });
}

bool DecodeBase64(std::string_view text, element& bytes)
{
    CCryptoAutoLogger logger("DecodeBase64");
    const std::string reason = FaultOfBase64(text);
    if (!reason.empty())
        return logger.fail(false, "%s", reason.c_str());
    bytes = element::FromBase64(text);
    return logger.setResult(true);
}

bool ReadPem(std::string_view text, std::vector<DataBlock>& blocks)
{
    CCryptoAutoLogger logger("ReadPem");
    LineReader lines(text);
    std::string_view line;
    while (lines.next(line)) {
        std::string_view label;
        if (!LabelOf(line, beginMark, label))
            continue;
        element body(ElementType::text);
        std::string reason = ReadBody(lines, label, body);
        if (reason.empty())
            reason = FaultOfBase64(body.view());
        if (!reason.empty())
            return logger.fail(false, "%s: %s", PemBlockName(blocks.size() + 1, label).c_str(), reason.c_str());
        blocks.push_back({std::string(label), element::FromBase64(body.view())});
    }
    return blocks.empty() ? logger.fail(false, "the BEGIN line of the PEM block is broken") : logger.setResult(true);
}

CCryptoString WritePem(std::string_view label, const element& bytes)
{
    CCryptoString text;
    text.append(beginMark).append(label).append(closeMark).append("\n");
    const element base64 = bytes.toBase64();
    for (std::string_view rest = base64.view(); !rest.empty(); rest.remove_prefix(std::min(lineLength, rest.size())))
        text.append(rest.substr(0, lineLength)).append("\n");
    return text.append(endMark).append(label).append(closeMark).append("\n");
}

bool IsPemLabel(std::string_view label)
{
    const bool isPrintable = std::ranges::all_of(label, [](char character) { return character >= ' ' && character <= '~'; });
    const auto isEdge = [](char character) { return character == '-' || character == ' '; };
    return !label.empty() && isPrintable && !isEdge(label.front()) && !isEdge(label.back()) &&
           label.find("--") == std::string_view::npos;
}

} // namespace ccrypto
