#include "asn1/der/ber_tlv.h"
#include "asn1/der/der_analyzer.h"
#include "asn1/parser/parser.h"
#include "asn1/template/template_match.h"
#include "tests/asn1/parser/text_forms.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

using namespace ccrypto;

// What docs/template-language.md says of a template, held against the library: every row of its tables and every block of text.

namespace {

std::vector<std::string> DocumentLines()
{
    const std::filesystem::path path = TEST_DATA_DIR "/../../../docs/template-language.md";
    std::ifstream file(path.lexically_normal());
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        std::erase(line, '\r');
        lines.push_back(line);
    }
    EXPECT_FALSE(lines.empty()) << path;
    return lines;
}

/// The cells of a row; those that are code without their backquotes.
std::vector<std::string> Cells(const std::string& line)
{
    std::vector<std::string> cells;
    std::istringstream rest(line.substr(1));
    for (std::string cell; std::getline(rest, cell, '|');) {
        const std::size_t first = cell.find_first_not_of(' ');
        cell = first == std::string::npos ? "" : cell.substr(first, cell.find_last_not_of(' ') + 1 - first);
        if (cell.starts_with('`') && cell.ends_with('`'))
            cell = cell.substr(1, cell.size() - 2);
        cells.push_back(cell);
    }
    return cells;
}

/// By the names of the columns.
using Row = std::map<std::string, std::string>;

/// The rows of the tables that have all of these columns.
std::vector<Row> RowsWith(std::initializer_list<const char*> columns)
{
    std::vector<Row> rows;
    std::vector<std::string> names;
    for (const std::string& line : DocumentLines()) {
        if (!line.starts_with('|')) {
            names.clear();
            continue;
        }
        const std::vector<std::string> cells = Cells(line);
        if (names.empty()) {
            names = cells;
            continue;
        }
        EXPECT_EQ(cells.size(), names.size()) << line;
        const auto isThere = [&names](const char* column) { return std::ranges::find(names, column) != names.end(); };
        if (line.starts_with("|---") || cells.size() != names.size() || !std::ranges::all_of(columns, isThere))
            continue;
        Row& row = rows.emplace_back();
        for (std::size_t index = 0; index < cells.size(); ++index)
            row[names[index]] = cells[index];
    }
    return rows;
}

/// The text of every block in this language.
std::vector<std::string> Blocks(std::string_view language)
{
    std::vector<std::string> blocks;
    bool isInside = false;
    for (const std::string& line : DocumentLines()) {
        const bool isFence = line.starts_with("```");
        if (isFence && !isInside && line.substr(3) == language)
            blocks.emplace_back();
        if (isFence)
            isInside = !isInside && line.substr(3) == language;
        else if (isInside)
            blocks.back() += line + "\n";
    }
    return blocks;
}

CCryptoParser Template(const std::string& text)
{
    CCryptoParser parser;
    EXPECT_TRUE(parser.Load_ASCII_Memory(text)) << text;
    return parser;
}

ElementNodePtr Decoded(const std::string& octets, bool areDataObjects)
{
    const element bytes = FromHex(octets);
    return areDataObjects ? DecodeBerTlv(bytes.bytes())
                          : CCryptoDERParser({.insideOctetStrings = true, .insideBitStrings = true}).Decode(bytes.bytes());
}

/// Whether a name was bound to what it had been given: a value, the type of an element, or elements.
void ExpectBound(const CCryptoTemplateMatch& match, const elementNode& given)
{
    const std::string name(given.token().view());
    const TemplateBinding* const binding = match.find(name);
    ASSERT_TRUE(binding != nullptr && binding->node != nullptr) << name;
    if (given.content() != nullptr) {
        EXPECT_EQ(Hex(CCryptoParser::ToDer(binding->withSiblings ? binding->node : binding->node->clone().get())),
                  Hex(CCryptoParser::ToDer(given.content())))
            << name;
    } else if (IsAsn1Type(given.shortValue()->type())) {
        EXPECT_EQ(binding->node->type(), given.shortValue()->type()) << name;
    } else if (given.shortValue()->type() == ElementType::integer) {
        EXPECT_EQ(binding->node->token().toWord64(), given.shortValue()->token().toWord64()) << name;
    } else if (!IsDataObject(*binding->node)) {
        EXPECT_EQ(Hex(binding->node->token()), Hex(given.shortValue()->token())) << name;
    }
}

/// "name = value" and "name { items }", given to the template; it then writes these octets, and they give all names back.
void ExpectWrites(const Row& row, bool areDataObjects)
{
    const std::string octets = row.at(areDataObjects ? "octets" : "DER");
    const bool hasGiven = row.contains("given") && !row.at("given").empty();
    const CCryptoParser given = Template(hasGiven ? row.at("given") : "");
    CCryptoParser filled = Template(row.at("template"));
    const CCryptoParser pattern = Template(row.at("template"));
    for (const elementNode* name = given.root(); hasGiven && name != nullptr; name = name->next()) {
        const bool isFilled = name->content() != nullptr ? filled.fill_tree(name->token().view(), name->content())
                                                         : filled.fill(name->token().view(), name->shortValue()->token());
        EXPECT_TRUE(isFilled) << name->token().toString().c_str();
    }
    EXPECT_EQ(Hex(filled.ToDer()), octets);

    const ElementNodePtr data = Decoded(octets, areDataObjects);
    CCryptoTemplateMatch match;
    if (data == nullptr)
        return;
    EXPECT_TRUE(match.Match(pattern.root(), data.get())) << match.failedStep().c_str();
    for (const elementNode* name = given.root(); hasGiven && name != nullptr; name = name->next())
        ExpectBound(match, *name);
}

TEST(TemplateDocumentation, TemplatesWriteAndReadWhatTheTablesSay)
{
    for (const auto& [column, areDataObjects, minRows] : {std::tuple("DER", false, 40u), std::tuple("octets", true, 8u)}) {
        const std::vector<Row> rows = RowsWith({"template", column});
        EXPECT_GE(rows.size(), minRows);
        for (const Row& row : rows) {
            SCOPED_TRACE(row.at("template"));
            ExpectWrites(row, areDataObjects);
        }
    }
}

TEST(TemplateDocumentation, DataMatchesOrSaysWhyNot)
{
    const std::vector<Row> rows = RowsWith({"template", "data", "result"});
    EXPECT_GE(rows.size(), 10u);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.at("template"));
        const CCryptoParser pattern = Template(row.at("template"));
        CCryptoTemplateMatch match;
        const bool matches = match.Match(pattern.root(), Decoded(row.at("data"), false).get());
        EXPECT_EQ(matches ? "matches" : std::string(match.failedStep().view()), row.at("result"));
    }
}

TEST(TemplateDocumentation, TextsMeanTheSameAndPrintAsShown)
{
    const std::vector<Row> same = RowsWith({"text", "is the same as"});
    EXPECT_GE(same.size(), 8u);
    for (const Row& row : same)
        EXPECT_EQ(Template(row.at("text")).ToText().view(), Template(row.at("is the same as")).ToText().view()) << row.at("text");
    const std::vector<Row> printed = RowsWith({"DER", "prints"});
    EXPECT_GE(printed.size(), 7u);
    for (const Row& row : printed)
        EXPECT_EQ(std::string(CCryptoParser::ToText(Decoded(row.at("DER"), false).get()).view()), row.at("prints") + "\n");
    const std::vector<Row> json = RowsWith({"JSON", "DER"});
    EXPECT_GE(json.size(), 10u);
    for (const Row& row : json) {
        CCryptoParser parser;
        EXPECT_TRUE(parser.Load_JSON_Memory(row.at("JSON"))) << row.at("JSON");
        EXPECT_EQ(Hex(parser.ToDer()), row.at("DER")) << row.at("JSON");
    }
}

TEST(TemplateDocumentation, BlocksAreOneTreeInThreeForms)
{
    const std::vector<std::string> templates = Blocks("template");
    ASSERT_EQ(templates.size(), 3u);
    CCryptoParser first = Template(templates[0]);
    EXPECT_TRUE(first.fill("type", element("2.5.4.3")) && first.fill("name", element("Ada")));
    EXPECT_EQ(Hex(first.ToDer()), "300a06035504030c03416461");
    EXPECT_EQ(Hex(Template(templates[1]).ToDer()), "0201050500");
    const CCryptoParser shown = Template(templates[2]);
    EXPECT_EQ(Blocks("json"), std::vector{std::string(shown.ToJson().view())});
    EXPECT_EQ(Blocks("xml"), std::vector{std::string(shown.ToXml().view())});
}

} // namespace
