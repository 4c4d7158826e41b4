#include "core/diagnostics/error_descriptions.h"

#include "core/base/never_destroyed.h"
#include "core/diagnostics/auto_logger.h"
#include "core/diagnostics/error_handler.h"
#include "core/platform/file.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstddef>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

using namespace ccrypto;

namespace {

constexpr std::int64_t maxDocument = 1024 * 1024;
constexpr std::size_t maxNesting = 16;
constexpr std::size_t maxDescription = 255;
constexpr std::string_view itemPrefix = "ErrorCode_";

/// Null until a document was loaded.
constinit NeverDestroyed<std::atomic<std::shared_ptr<const ErrorDescriptions>>> loadedDescriptions;

bool IsBlank(std::string_view text)
{
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

enum class MarkupKind { text, start, end, empty, none, broken };

/// A stretch of text, or a tag by its name.
struct Markup {
    MarkupKind kind = MarkupKind::none;
    std::string_view content;
    bool hasAttributes = false;
};

/// Splits a document into tags and the texts between them; comments and processing instructions are ignored.
class MarkupReader {
public:
    explicit MarkupReader(std::string_view document) : rest_(document)
    {
        if (rest_.starts_with("\xEF\xBB\xBF"))
            rest_.remove_prefix(3);
    }

    Markup next()
    {
        while (!rest_.empty()) {
            if (rest_.front() != '<')
                return {MarkupKind::text, take(std::min(rest_.find('<'), rest_.size())), false};
            const bool comment = rest_.starts_with("<!--");
            if (!comment && !rest_.starts_with("<?"))
                return tag();
            const std::string_view closing = comment ? "-->" : "?>";
            const std::size_t end = rest_.find(closing, comment ? 4 : 2);
            if (end == std::string_view::npos)
                return {MarkupKind::broken, {}, false};
            take(end + closing.size());
        }
        return {};
    }

private:
    std::string_view take(std::size_t count)
    {
        const std::string_view taken = rest_.substr(0, count);
        rest_.remove_prefix(count);
        return taken;
    }

    Markup tag()
    {
        const std::size_t end = rest_.find('>');
        if (end == std::string_view::npos || rest_.starts_with("<!"))
            return {MarkupKind::broken, {}, false};
        std::string_view inside = take(end + 1).substr(1, end - 1);
        MarkupKind kind = MarkupKind::start;
        if (inside.starts_with('/')) {
            kind = MarkupKind::end;
            inside.remove_prefix(1);
        } else if (inside.ends_with('/')) {
            kind = MarkupKind::empty;
            inside.remove_suffix(1);
        }
        const std::string_view name = inside.substr(0, inside.find_first_of(" \t\r\n"));
        if (name.empty() || name.find_first_of("<&\"'=/") != std::string_view::npos)
            kind = MarkupKind::broken;
        return {kind, name, !IsBlank(inside.substr(name.size()))};
    }

    std::string_view rest_;
};

void AppendUtf8(std::uint32_t point, std::string& text)
{
    const auto put = [&text](std::uint32_t byte) { text += static_cast<char>(static_cast<unsigned char>(byte)); };
    if (point < 0x80) {
        put(point);
        return;
    }
    if (point < 0x800) {
        put(0xC0 | point >> 6);
    } else {
        if (point < 0x10000) {
            put(0xE0 | point >> 12);
        } else {
            put(0xF0 | point >> 18);
            put(0x80 | (point >> 12 & 0x3F));
        }
        put(0x80 | (point >> 6 & 0x3F));
    }
    put(0x80 | (point & 0x3F));
}

std::optional<std::uint32_t> Number(std::string_view digits, int base)
{
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number, base);
    if (digits.empty() || error != std::errc() || end != digits.data() + digits.size())
        return std::nullopt;
    return number;
}

/// Appends the character that `reference`, the part between "&" and ";", stands for.
bool AppendReferenced(std::string_view reference, std::string& text)
{
    constexpr std::pair<std::string_view, char> named[] = {{"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
    for (const auto& [name, character] : named) {
        if (reference == name) {
            text += character;
            return true;
        }
    }
    if (!reference.starts_with('#'))
        return false;
    const bool hexadecimal = reference.starts_with("#x");
    const std::optional<std::uint32_t> point = Number(reference.substr(hexadecimal ? 2 : 1), hexadecimal ? 16 : 10);
    if (!point || *point == 0 || *point > 0x10FFFF || (*point >= 0xD800 && *point <= 0xDFFF))
        return false;
    AppendUtf8(*point, text);
    return true;
}

/// \return nothing when a character reference makes no sense.
std::optional<std::string> ResolveReferences(std::string_view raw)
{
    std::string text;
    for (;;) {
        const std::size_t start = raw.find('&');
        text += raw.substr(0, start);
        if (start == std::string_view::npos)
            return text;
        const std::size_t end = raw.find(';', start);
        if (end == std::string_view::npos || !AppendReferenced(raw.substr(start + 1, end - start - 1), text))
            return std::nullopt;
        raw.remove_prefix(end + 1);
    }
}

std::optional<std::uint32_t> CodeOf(std::string_view itemName)
{
    const std::string_view code = itemName.substr(itemPrefix.size());
    const bool hexadecimal = code.starts_with("0x") || code.starts_with("0X");
    return Number(hexadecimal ? code.substr(2) : code, hexadecimal ? 16 : 10);
}

/// Follows the tags and collects the items of "settings".
class DescriptionsBuilder {
public:
    explicit DescriptionsBuilder(CCryptoAutoLogger& logger) : logger_(logger) {}

    /// \return false when the document is not well-formed or of another kind.
    bool take(const Markup& markup)
    {
        switch (markup.kind) {
        case MarkupKind::text:
            return takeText(markup.content);
        case MarkupKind::start:
            return begin(markup);
        case MarkupKind::empty:
            return begin(markup) && end(markup.content);
        case MarkupKind::end:
            return end(markup.content);
        default:
            return false;
        }
    }

    bool complete() const { return seenSettings_ && open_.empty(); }
    ErrorDescriptions& descriptions() { return descriptions_; }

private:
    bool takeText(std::string_view content)
    {
        if (open_.size() < 2)
            return IsBlank(content);
        rawText_ += content;
        return true;
    }

    bool begin(const Markup& markup)
    {
        if (open_.size() >= maxNesting)
            return false;
        if (open_.empty() && (seenSettings_ || markup.content != "settings"))
            return false;
        seenSettings_ = true;
        open_.push_back(markup.content);
        if (open_.size() == 2) {
            rawText_.clear();
            plain_ = !markup.hasAttributes;
        } else if (open_.size() > 2) {
            plain_ = false;
        }
        return true;
    }

    bool end(std::string_view name)
    {
        if (open_.empty() || open_.back() != name)
            return false;
        if (open_.size() == 2 && name.starts_with(itemPrefix))
            addItem(name);
        open_.pop_back();
        return true;
    }

    void addItem(std::string_view name)
    {
        const std::optional<std::uint32_t> code = CodeOf(name);
        const std::optional<std::string> text = ResolveReferences(rawText_);
        if (plain_ && code && text && !IsBlank(*text) && text->size() <= maxDescription)
            descriptions_[*code] = *text;
        else
            logger_.WriteError("Incorrect format for error description item: %s", std::string(name.substr(0, 255)).c_str());
    }

    CCryptoAutoLogger& logger_;
    std::vector<std::string_view> open_;
    std::string rawText_;
    ErrorDescriptions descriptions_;
    bool seenSettings_ = false;
    bool plain_ = true;
};

bool ReadDocument(const char* fileName, std::string& document)
{
    platform::File file;
    if (!file.open(fileName, platform::FileMode::read))
        return false;
    const std::int64_t size = file.size();
    if (size < 0 || size > maxDocument)
        return false;
    document.resize(static_cast<std::size_t>(size));
    return file.readAt(0, document.data(), static_cast<std::uint32_t>(size)) == size;
}

} // namespace

namespace ccrypto {

bool ParseErrorDescriptions(std::string_view document, ErrorDescriptions& descriptions)
{
    CCryptoAutoLogger logger("ParseErrorDescriptions", ccrypto::LoggerMode::resultOptional);

    MarkupReader reader(document);
    DescriptionsBuilder builder(logger);
    for (Markup markup = reader.next(); markup.kind != MarkupKind::none; markup = reader.next()) {
        if (!builder.take(markup))
            return logger.fail(false, "Not a well-formed settings document");
    }
    if (!builder.complete())
        return logger.fail(false, "The document holds no complete settings");
    descriptions = std::move(builder.descriptions());
    return logger.setResult(true);
}

void ForgetErrorDescriptions()
{
    loadedDescriptions->store(nullptr);
}

std::string ErrorDescription(std::uint32_t code)
{
    const std::shared_ptr<const ErrorDescriptions> loaded = loadedDescriptions->load();
    if (loaded == nullptr)
        return {};
    const auto found = loaded->find(code);
    return found != loaded->end() ? found->second : std::string();
}

} // namespace ccrypto

bool CCryptoErrorHandler::LoadXmlErrorsDesriptions(const CCryptoString& fileName)
{
    CCryptoAutoLogger logger("CCryptoErrorHandler::LoadXmlErrorsDesriptions", ccrypto::LoggerMode::resultExpected, "%s",
                             fileName.c_str());

    std::string document;
    if (!ReadDocument(fileName.c_str(), document))
        return logger.fail(false, "Cannot read the error descriptions");
    ErrorDescriptions descriptions;
    if (!ParseErrorDescriptions(document, descriptions))
        return logger.fail(false, "No error descriptions found");

    loadedDescriptions->store(std::make_shared<const ErrorDescriptions>(std::move(descriptions)));
    return logger.setResult(true);
}
