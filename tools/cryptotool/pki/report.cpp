#include "tools/cryptotool/pki/report.h"

#include "tools/cryptotool/pki/time_text.h"
#include "tools/text/safe_text.h"

namespace ccrypto {

namespace {

constexpr std::size_t nameColumn = 20;
constexpr std::size_t levelIndent = 2;

/// The start of a line, up to the column of values; a name that is too long is followed by two blanks.
std::string NameColumn(const Paint& paint, std::size_t indent, const std::string& name)
{
    const std::size_t gap = name.size() + 2 < nameColumn ? nameColumn - name.size() : 2;
    return std::string(indent, ' ') + paint(Color::name, name) + std::string(gap, ' ');
}

} // namespace

Report& Report::addMember(std::string_view name, Kind kind)
{
    Report& member = members_.emplace_back();
    member.name_ = name;
    member.kind_ = kind;
    return member;
}

Report& Report::add(std::string_view name, std::string_view text)
{
    Report& member = addMember(name, Kind::text);
    member.value_ = text;
    member.shown_ = text;
    return member;
}

Report& Report::addNumber(std::string_view name, std::uint64_t number)
{
    Report& member = addMember(name, Kind::bare);
    member.value_ = std::to_string(number);
    member.shown_ = member.value_;
    return member;
}

Report& Report::addTruth(std::string_view name, bool truth)
{
    Report& member = addMember(name, Kind::bare);
    member.value_ = truth ? "true" : "false";
    member.shown_ = truth ? "yes" : "no";
    return member;
}

Report& Report::addNothing(std::string_view name)
{
    Report& member = addMember(name, Kind::bare);
    member.value_ = "null";
    member.inJsonOnly();
    return member;
}

Report& Report::addTime(std::string_view name, const CCryptoDateTime& time)
{
    if (!time.isValid())
        return addNothing(name);
    Report& member = addMember(name, Kind::text);
    member.value_ = Rfc3339Text(time);
    member.shown_ = ReadableText(time);
    return member;
}

Report& Report::addTexts(std::string_view name, const std::vector<std::string>& texts)
{
    Report& list = addMember(name, Kind::list);
    for (const std::string& text : texts)
        list.add({}, text);
    return list;
}

Report& Report::addGroup(std::string_view name)
{
    return addMember(name, Kind::object);
}

Report& Report::addList(std::string_view name)
{
    return addMember(name, Kind::list);
}

Report& Report::addItem(std::string_view heading)
{
    Report& item = addMember({}, Kind::object);
    item.value_ = heading;
    return item;
}

/// A value, or a list of values.
void Report::printTexts(std::string& text, const Paint& paint, std::size_t indent) const
{
    const std::string name = OneLine(name_);
    if (kind_ != Kind::list) {
        text += NameColumn(paint, indent, name) + OneLine(shown_) + "\n";
        return;
    }
    bool isFirst = true;
    for (const Report& member : members_) {
        text += isNamedInText_ ? NameColumn(paint, indent, isFirst ? name : std::string()) : std::string(indent, ' ');
        text += OneLine(member.shown_) + "\n";
        isFirst = false;
    }
}

void Report::printLines(std::string& text, const Paint& paint, std::size_t depth) const
{
    const std::size_t indent = depth * levelIndent;
    for (const Report& member : members_) {
        const bool isList = member.kind_ == Kind::list;
        const bool isGroup = isList || member.kind_ == Kind::object;
        if (!member.isInText_ || (isGroup && member.members_.empty()))
            continue;
        if (!isGroup || (isList && member.members_.front().kind_ == Kind::text)) {
            member.printTexts(text, paint, indent);
            continue;
        }
        std::string heading = OneLine(member.name_.empty() ? member.value_ : member.name_);
        if (!member.isNamedInText_)
            heading.clear();
        if (!heading.empty())
            text += std::string(indent, ' ') + paint(Color::name, heading) + "\n";
        member.printLines(text, paint, depth + (heading.empty() ? 0 : 1));
    }
}

void Report::printJson(std::string& text, std::string_view separator) const
{
    if (kind_ == Kind::text || kind_ == Kind::bare) {
        text += kind_ == Kind::text ? JsonString(value_) : value_;
        return;
    }
    const bool isObject = kind_ == Kind::object;
    text += isObject ? '{' : '[';
    bool isFirst = true;
    for (const Report& member : members_) {
        text += isFirst ? std::string_view() : separator;
        isFirst = false;
        if (isObject)
            text += JsonString(member.name_) + ":";
        member.printJson(text, member.kind_ == Kind::list && isObject && separator != "," ? ",\n" : ",");
    }
    text += isObject ? '}' : ']';
}

std::string Report::text(const Paint& paint) const
{
    std::string text;
    printLines(text, paint, 0);
    return text;
}

std::string Report::json() const
{
    std::string text;
    printJson(text, ",\n");
    return text;
}

} // namespace ccrypto
