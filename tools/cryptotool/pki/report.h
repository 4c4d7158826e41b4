#pragma once

#include "core/system/date_time.h"
#include "tools/cryptotool/cli/color.h"

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>
#include <string_view>
#include <vector>

namespace ccrypto {

/// What a command says about an object, once for both of its forms: aligned lines for a person, and JSON. Texts may come from
/// hostile input; both forms escape them.
class Report {
public:
    Report() = default;

    /// The members of an object, in the order of the calls. Each returns the new member, which stays where it is.
    Report& add(std::string_view name, std::string_view text);
    Report& addNumber(std::string_view name, std::uint64_t number);
    Report& addTruth(std::string_view name, bool truth);
    /// No line, and null in JSON.
    Report& addNothing(std::string_view name);
    /// An invalid time is nothing.
    Report& addTime(std::string_view name, const CCryptoDateTime& time);
    /// A line each, the first one beside the name.
    Report& addTexts(std::string_view name, const std::vector<std::string>& texts);
    Report& addGroup(std::string_view name);
    /// For addItem().
    Report& addList(std::string_view name);
    /// A group in a list. \param heading stands above its lines.
    Report& addItem(std::string_view heading);
    /// Leaves the member out of the lines.
    void inJsonOnly() { isInText_ = false; }
    /// Leaves the name out of the lines.
    void withoutName() { isNamedInText_ = false; }

    [[nodiscard]] bool isEmpty() const { return members_.empty(); }
    /// Lines, indented by the depth.
    [[nodiscard]] std::string text(const Paint& paint) const;
    /// One JSON value without a line end; the members of the outermost object begin lines.
    [[nodiscard]] std::string json() const;

private:
    enum class Kind { object, list, text, bare };

    Report& addMember(std::string_view name, Kind kind);
    void printTexts(std::string& text, const Paint& paint, std::size_t indent) const;
    void printLines(std::string& text, const Paint& paint, std::size_t depth) const;
    void printJson(std::string& text, std::string_view separator) const;

    Kind kind_ = Kind::object;
    bool isInText_ = true;
    bool isNamedInText_ = true;
    std::string name_;
    std::string value_; ///< of text and bare; the heading of an item
    std::string shown_; ///< what the lines have in place of value_
    std::list<Report> members_;
};

} // namespace ccrypto
