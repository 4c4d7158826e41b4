#include "asn1/der/object_identifier.h"
#include "asn1/oid/oid_names.h"
#include "asn1/types/algorithm_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>

using namespace ccrypto;

namespace {

using std::string_view_literals::operator""sv;

/// The whole table as the texts it is made of.
const std::vector<std::string>& Rows()
{
    static const std::vector<std::string> rows = [] {
        std::vector<std::string> texts;
        for (const OidName& row : FindOidsByName(""))
            texts.push_back(std::string(row.dotted) + ' ' + row.name);
        return texts;
    }();
    return rows;
}

/// What a scan from the first row to the last answers, by the texts it answers at all: the beginning of a row up to any of its
/// blanks, where the first row that has it counts.
const std::map<std::string, std::string>& ScanAnswers()
{
    static const std::map<std::string, std::string> answers = [] {
        std::map<std::string, std::string> built;
        for (const std::string& row : Rows()) {
            for (std::size_t blank = row.find(' '); blank != row.npos; blank = row.find(' ', blank + 1))
                built.emplace(row.substr(0, blank), row.substr(blank + 1));
        }
        return built;
    }();
    return answers;
}

::testing::AssertionResult AnswersAsAScan(const std::string& text)
{
    const auto scanned = ScanAnswers().find(text);
    const char* const found = FindOidName(text);
    if (scanned == ScanAnswers().end() ? found == nullptr : found != nullptr && found == scanned->second)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << '"' << text << "\" gives " << (found != nullptr ? found : "nothing");
}

std::vector<std::uint64_t> Arcs(std::string_view dotted)
{
    std::vector<std::uint64_t> arcs(1);
    for (const char character : dotted) {
        if (character == '.')
            arcs.push_back(0);
        else
            arcs.back() = arcs.back() * 10 + static_cast<std::uint64_t>(character - '0');
    }
    return arcs;
}

TEST(OidNameTable, EveryRowIsFoundBothWays)
{
    const std::vector<OidName> rows = FindOidsByName("");
    EXPECT_EQ(rows.size(), 3140u);
    EXPECT_TRUE(std::ranges::is_sorted(rows, {}, [](const OidName& row) { return Arcs(row.dotted); }));
    for (const OidName& row : rows)
        EXPECT_EQ(FindOidName(row.dotted), row.name) << row.dotted;
    // A search by name reads the whole table, so some rows stand for all.
    for (std::size_t index = 0; index < rows.size(); index += 16) {
        const auto isRow = [&row = rows[index]](const OidName& found) { return found.name == row.name; };
        EXPECT_TRUE(std::ranges::any_of(FindOidsByName(rows[index].name), isRow)) << rows[index].dotted;
    }
}

TEST(OidNameTable, EveryRowCanBeEncoded)
{
    for (const OidName& row : FindOidsByName("")) {
        SCOPED_TRACE(row.dotted);
        element octets, dotted;
        const bool isRoot = row.dotted.size() == 1;
        EXPECT_EQ(DerFromDotted(row.dotted, octets), !isRoot);
        EXPECT_EQ(DottedFromDer({octets.data(), octets.length()}, dotted), !isRoot);
        EXPECT_TRUE(isRoot || dotted.view() == row.dotted);
    }
}

TEST(OidNameTable, NamesWhatTheLibraryPrints)
{
    for (const AlgorithmRow& row : AlgorithmTable())
        EXPECT_EQ(FindOidName(row.oid) != nullptr, *row.oid != '\0') << row.oid;
    for (const AlgorithmRow& row : AlgorithmsBesideTable())
        EXPECT_NE(FindOidName(row.oid), nullptr) << row.oid;
    const std::string_view printed[] = {
        "2.5.4.3",
        "2.5.4.4",
        "2.5.4.5",
        "2.5.4.6",
        "2.5.4.7",
        "2.5.4.8",
        "2.5.4.10",
        "2.5.4.11",
        "2.5.4.12",
        "2.5.4.42",
        "2.5.4.65",
        "2.5.29.14",
        "2.5.29.15",
        "2.5.29.17",
        "2.5.29.19",
        "2.5.29.20",
        "2.5.29.21",
        "2.5.29.24",
        "2.5.29.31",
        "2.5.29.32",
        "2.5.29.35",
        "2.5.29.37",
        "1.2.840.113549.1.9.1",
        "1.3.6.1.5.5.7.3.1",
        "1.3.6.1.5.5.7.3.2",
        "1.3.6.1.5.5.7.3.3",
        "1.3.6.1.5.5.7.3.4",
        "1.3.6.1.4.1.311.20.2.2",
        "1.3.6.1.4.1.311.20.2.3",
        "1.3.6.1.4.1.311.2.1.21",
        "1.3.6.1.4.1.311.2.1.22",
        "1.3.6.1.4.1.311.10.3.1",
        "1.3.6.1.4.1.311.21.4",
        "1.3.6.1.5.5.7.48.1",
        "1.3.6.1.5.5.7.48.2",
    };
    for (const std::string_view oid : printed)
        EXPECT_NE(FindOidName(oid), nullptr) << oid;

    EXPECT_STREQ(FindOidName("2.16.840.1.101.3.4.2.1"), "SHA256");
    EXPECT_STREQ(FindOidName("1.2.840.10045.2.1"), "EC Public Key");
    EXPECT_STREQ(FindOidName("1.3.6.1.5.5.7.1.1"), "AIA point (Authority Information Access)");
    EXPECT_STREQ(FindOidName("1.2.840.10045.3.1.7"), "ANSI X9.62: prime256v, same than secp256r1");
}

TEST(FindOidName, AnswersAsAScanOfEveryRowWould)
{
    std::set<std::string> texts = {"", " ", ".", "3", "1.2.", "01.2", "1.2.840.113549.1.1.12", "2.999", std::string(5000, '1')};
    for (const std::string& row : Rows()) {
        const std::string oid = row.substr(0, row.find(' '));
        for (std::size_t length = 1; length <= oid.size(); ++length)
            texts.insert(oid.substr(0, length));
        for (const char* const more : {"0", ".", ".0", ".1", " ", "\n"})
            texts.insert(oid + more);
        texts.insert(oid.substr(1));
        texts.insert(row);
        std::string changed = oid;
        changed.back() = changed.back() == '9' ? '0' : static_cast<char>(changed.back() + 1);
        texts.insert(changed);
    }
    for (const std::string& text : texts)
        ASSERT_TRUE(AnswersAsAScan(text));
    for (const auto& [text, name] : ScanAnswers())
        ASSERT_TRUE(AnswersAsAScan(text));
    EXPECT_EQ(FindOidName("1.2\0"sv), nullptr);
    EXPECT_STRNE(FindOidName("1.2.840.113549.1.1"), FindOidName("1.2.840.113549.1.1.1"));
    EXPECT_EQ(FindOidName("1.2.840.113549.1.1."), nullptr);
}

TEST(FindOidsByName, ListsTheRowsThatContainThePart)
{
    const auto oids = [](std::string_view part) {
        std::string list;
        for (const OidName& row : FindOidsByName(part))
            list.append(row.dotted).append(" ");
        return list;
    };
    EXPECT_EQ(oids("prime256V, SAME"), "1.2.840.10045.3.1.7 ");
    EXPECT_EQ(oids("PBKDF"), "1.2.840.113549.1.5.12 ");
    EXPECT_EQ(oids("codesigning: "), "1.3.6.1.5.5.7.3.3 ");
    EXPECT_EQ(oids("brainpoolp160"), "1.3.36.3.3.2.8.1.1.1 1.3.36.3.3.2.8.1.1.2 ");
    EXPECT_EQ(oids("no such name"), "");
    EXPECT_EQ(oids("1.2.840.10045"), "") << "the dotted text is not part of the name";
    EXPECT_NE(oids("szOID_CTL"), "");
    EXPECT_EQ(oids("szOID\177CTL"), "") << "only letters have two cases";
}

} // namespace
