#include "tools/cryptotool/commands/hash_check.h"

#include "tools/cryptotool/input/encoding_detection.h"
#include "tools/cryptotool/input/file_input.h"
#include "tools/text/safe_text.h"

#include <filesystem>

namespace ccrypto {

namespace {

/// Malformed lines that are reported one by one: a file that is not a list has thousands. The summary counts all.
constexpr std::size_t maxReported = 10;

struct FindingWords {
    const char* line;    ///< after the file's name
    const char* summary; ///< after the count
    Color color;
};

/// By Finding.
constexpr FindingWords findingWords[] = {
    {"OK", "OK", Color::good},
    {"FAILED", "failed", Color::bad},
    {"FAILED open or read", "missing", Color::bad},
    {"FAILED open or read", "not readable", Color::bad},
};

bool IsMissing(const std::string& file)
{
    std::error_code error;
    return file != "-" && !std::filesystem::exists(std::filesystem::path(std::u8string(file.begin(), file.end())), error) && !error;
}

/// Takes the first line off the text, without its end.
std::string_view TakeLine(std::string_view& text)
{
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

bool IsComment(std::string_view line)
{
    return line.find_first_not_of(" \t") == std::string_view::npos || line.starts_with('#');
}

} // namespace

HashCheck::HashCheck(Invocation& invocation, FileDigests& digests, SumOutput& output)
    : invocation_(invocation), digests_(digests), output_(output), isJson_(invocation.arguments().has(jsonOption.name)),
      ignoresMissing_(invocation.arguments().has("ignore-missing"))
{
}

bool HashCheck::list(const std::string& list)
{
    element bytes;
    std::string reason;
    if (!digests_.isReadOnce(list, reason) || !ReadWhole(invocation_.console(), list, bytes, reason)) {
        code_ = invocation_.refuse(list, reason);
        return true;
    }
    std::string_view rest = WithoutByteOrderMark(bytes.view());
    bool hasSums = false;
    for (std::size_t number = 1; !rest.empty(); ++number) {
        const std::string_view text = TakeLine(rest);
        if (IsComment(text))
            continue;
        hasSums = true;
        SumLine sum;
        if (sum.read(text) && isOurs(sum)) {
            if (!line(sum))
                return false;
            continue;
        }
        code_ = exitRefused;
        if (++malformed_ <= maxReported)
            invocation_.refuse(list, "line " + std::to_string(number) + " is not a line with a " + digests_.algorithm() + " sum");
    }
    if (!hasSums)
        code_ = invocation_.refuse(list, "it holds no sums");
    return true;
}

bool HashCheck::isOurs(const SumLine& sum) const
{
    if (sum.digits.size() != digests_.digits())
        return false;
    if (sum.algorithm.empty())
        return true;
    const auto named = ICryptoHash::CreateByName(sum.algorithm);
    return named != nullptr && std::string_view(named->name()) == digests_.algorithm();
}

HashCheck::Finding HashCheck::find(const SumLine& sum, std::string& reason)
{
    std::string digits;
    if (digests_.digest(sum.file, digits, reason))
        return digits == sum.digits ? Finding::right : Finding::wrong;
    return IsMissing(sum.file) ? Finding::missing : Finding::unreadable;
}

bool HashCheck::line(const SumLine& sum)
{
    std::string reason;
    const Finding finding = find(sum, reason);
    if (finding == Finding::missing && ignoresMissing_)
        return true;
    ++counts_[static_cast<std::size_t>(finding)];
    if (finding != Finding::right)
        code_ = exitRefused;
    if (!reason.empty())
        invocation_.refuse(sum.file, reason);
    return report(sum.file, finding);
}

bool HashCheck::report(const std::string& file, Finding finding)
{
    const FindingWords& words = findingWords[static_cast<std::size_t>(finding)];
    if (isJson_)
        return output_.Output::write((reported_++ == 0 ? "{\"files\":[\n{\"file\":" : ",\n{\"file\":") + JsonString(file) +
                                     ",\"status\":" + JsonString(words.summary) + "}");
    if (finding == Finding::right && invocation_.console().isQuiet())
        return true;
    return output_.write(file, words.line, words.color);
}

std::string HashCheck::summary() const
{
    std::string text;
    for (std::size_t index = 0; index < std::size(counts_); ++index)
        if (counts_[index] != 0 || index == 0)
            text += (index == 0 ? "" : ", ") + std::to_string(counts_[index]) + " " + findingWords[index].summary;
    if (malformed_ != 0)
        text += ", " + std::to_string(malformed_) + (malformed_ == 1 ? " malformed line" : " malformed lines");
    return text;
}

bool HashCheck::finish()
{
    if (counts_[0] == 0 && code_ == exitDone)
        code_ = invocation_.refuse({}, "no file was checked");
    invocation_.remark({}, summary());
    return !isJson_ || output_.Output::write(reported_ == 0 ? "{\"files\":[]}\n" : "\n]}\n");
}

} // namespace ccrypto
