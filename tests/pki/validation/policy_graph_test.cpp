#include "pki/validation/policy_graph.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace ccrypto {
namespace {

/// A policy for each letter; "*" is anyPolicy.
Oid PolicyOf(const std::string& word)
{
    return Oid::FromDotted(word == "*" ? std::string("2.5.29.32.0") : "1.3.6.1.4.1.55555.1." + std::to_string(int{word.front()}));
}

std::vector<std::string> WordsOf(const std::string& text)
{
    std::istringstream stream(text);
    std::vector<std::string> words;
    for (std::string word; stream >> word;)
        words.push_back(word);
    return words;
}

std::vector<Oid> PoliciesOf(const std::string& text)
{
    std::vector<Oid> policies;
    for (const std::string& word : WordsOf(text))
        policies.push_back(PolicyOf(word));
    return policies;
}

/// "A B *"; "-" for a certificate without the extension; "!" before all others where anyPolicy is inhibited.
void AddTo(PolicyGraph& graph, const std::string& text)
{
    std::vector<std::string> words = WordsOf(text);
    const bool inhibited = !words.empty() && words.front() == "!";
    if (inhibited)
        words.erase(words.begin());
    if (words == std::vector<std::string>{"-"}) {
        graph.addCertificate(nullptr, !inhibited);
        return;
    }
    std::vector<PolicyInformation> policies;
    for (const std::string& word : words)
        policies.push_back({PolicyOf(word), {}});
    graph.addCertificate(&policies, !inhibited);
}

/// "A>X B>Y"; "!" before all others where mapping is inhibited.
void MapIn(PolicyGraph& graph, const std::string& text)
{
    std::vector<PolicyMapping> mappings;
    bool counts = true;
    for (const std::string& word : WordsOf(text)) {
        if (word == "!")
            counts = false;
        else
            mappings.push_back({PolicyOf(word.substr(0, 1)), PolicyOf(word.substr(2))});
    }
    if (!mappings.empty())
        graph.applyMappings(mappings, counts);
}

struct PolicyLevel {
    const char* policies;
    const char* mappings = "";
};
struct PolicyCase {
    const char* name;
    std::vector<PolicyLevel> levels;
    const char* authority; ///< what the anchor's domain accepts, as policies() sorts it
    const char* accepted = "";
    const char* user = nullptr; ///< the same as `authority` when null
};

std::vector<Oid> Sorted(std::vector<Oid> policies)
{
    std::sort(policies.begin(), policies.end());
    return policies;
}

class PolicyGraphCases : public ::testing::TestWithParam<PolicyCase> {};

TEST_P(PolicyGraphCases, KeepsThePoliciesThatReachTheEnd)
{
    const PolicyCase& test = GetParam();
    PolicyGraph graph;
    for (const PolicyLevel& level : test.levels) {
        AddTo(graph, level.policies);
        MapIn(graph, level.mappings);
    }
    EXPECT_EQ(graph.policies(), Sorted(PoliciesOf(test.authority)));
    EXPECT_EQ(graph.policies(PoliciesOf(test.accepted)), Sorted(PoliciesOf(test.user != nullptr ? test.user : test.authority)));
    EXPECT_EQ(graph.isEmpty(), std::string(test.authority).empty());
    EXPECT_FALSE(graph.isExceeded());
}

INSTANTIATE_TEST_SUITE_P(
    Paths, PolicyGraphCases,
    ::testing::Values(
        PolicyCase{"the anchor alone", {}, "*", "A", "A"}, PolicyCase{"the same policy all the way", {{"A"}, {"A"}, {"A"}}, "A"},
        PolicyCase{"a certificate without policies", {{"A"}, {"-"}, {"A"}}, ""}, PolicyCase{"another policy", {{"A"}, {"B"}}, ""},
        PolicyCase{"the common ones", {{"A B C"}, {"D C B"}, {"B C E"}}, "B C"},
        PolicyCase{"a branch that ends is removed", {{"A B"}, {"A B"}, {"B"}}, "B"},
        PolicyCase{"a policy that is not the user's", {{"A B"}, {"A B"}}, "A B", "B C", "B"},
        PolicyCase{"none of the user's", {{"A"}, {"A"}}, "A", "B", ""},
        PolicyCase{"a user who accepts any", {{"A"}, {"A"}}, "A", "B *", "A"},
        PolicyCase{"a policy twice in the certificate and in the user's", {{"A A"}, {"A"}}, "A", "A A", "A"},
        PolicyCase{"any policy all the way", {{"*"}, {"*"}}, "*", "A B", "A B"},
        PolicyCase{"any policy, then one", {{"*"}, {"A"}}, "A"}, PolicyCase{"one policy, then any", {{"A"}, {"*"}}, "A"},
        PolicyCase{"any policy beside one", {{"*"}, {"A *"}, {"*"}}, "A *", "B", "B"},
        PolicyCase{"any policy inhibited", {{"A"}, {"! *"}}, ""},
        PolicyCase{"any policy inhibited beside one", {{"A B"}, {"! A *"}}, "A"}, PolicyCase{"mapped", {{"A", "A>X"}, {"X"}}, "A"},
        PolicyCase{"mapped, but the old policy", {{"A", "A>X"}, {"A"}}, ""},
        PolicyCase{"mapped to itself and another", {{"A", "A>A A>X"}, {"X"}, {"X"}}, "A"},
        PolicyCase{"mapped twice on the way", {{"A", "A>X"}, {"X", "X>Y"}, {"Y"}}, "A", "X Y", ""},
        PolicyCase{"two mapped to one", {{"A B", "A>X B>X"}, {"X"}, {"X"}}, "A B", "B", "B"},
        PolicyCase{"swapped", {{"A B", "A>B B>A"}, {"A"}}, "B"},
        PolicyCase{"any policy continues what was mapped", {{"A", "A>X"}, {"*"}, {"X"}}, "A"},
        PolicyCase{"any policy leaves what was mapped", {{"A", "A>X"}, {"*"}, {"A"}}, ""},
        PolicyCase{"a mapping out of any policy", {{"*", "A>X"}, {"X"}}, "A"},
        PolicyCase{"a mapping out of any policy, another policy", {{"*", "A>X"}, {"Y"}}, "Y"},
        PolicyCase{"any policy is not mapped where the policy stands", {{"A *", "A>X"}, {"X"}}, "A"},
        PolicyCase{"a mapping of a policy that is not there", {{"A", "B>X"}, {"X"}}, ""},
        PolicyCase{"mapping inhibited", {{"A", "! A>X"}, {"X"}}, ""},
        PolicyCase{"mapping inhibited removes the policy", {{"A", "! A>X"}, {"A"}}, ""},
        PolicyCase{"mapping inhibited leaves the others", {{"A B", "! A>X"}, {"A B X"}}, "B"},
        PolicyCase{"mapping inhibited removes what led there alone", {{"A B"}, {"A B", "! A>X"}, {"B"}}, "B"},
        PolicyCase{"mapping inhibited, any policy stays", {{"*", "! A>X"}, {"X"}}, "X"}),
    [](const auto& instance) {
        std::string name = instance.param.name;
        std::replace_if(
            name.begin(), name.end(), [](char character) { return std::isalnum(static_cast<unsigned char>(character)) == 0; }, '_');
        return name;
    });

/// Every policy of a level is mapped to all of the next: a tree of these has `width` to the power of the depth leaves.
TEST(PolicyGraph, GrowsWithTheCertificatesAndNotWithTheirPaths)
{
    PolicyGraph graph;
    for (std::uint32_t depth = 0; depth < 60; depth++) {
        AddTo(graph, "A B C D *");
        MapIn(graph, "A>A A>B A>C A>D B>A B>B B>C B>D C>A C>B C>C C>D D>A D>B D>C D>D");
    }
    AddTo(graph, "C");
    EXPECT_FALSE(graph.isExceeded());
    EXPECT_EQ(graph.policies(), Sorted(PoliciesOf("A B C D")));
}

TEST(PolicyGraph, EndsAtItsLimit)
{
    const auto levelOf = [](std::size_t count) {
        std::vector<PolicyInformation> policies;
        for (std::size_t number = 0; number < count; number++)
            policies.push_back({Oid::FromDotted("1.3.6.1.4.1.55555.2." + std::to_string(number)), {}});
        return policies;
    };
    // Each node has an edge to the root, which is a node, too.
    const std::size_t fitting = (PolicyGraph::maxSize - 1) / 2;
    for (const std::size_t count : {fitting, fitting + 1}) {
        PolicyGraph graph;
        const std::vector<PolicyInformation> policies = levelOf(count);
        graph.addCertificate(&policies, true);
        EXPECT_EQ(graph.isExceeded(), count > fitting);
        EXPECT_EQ(graph.isEmpty(), count > fitting);
    }
}

} // namespace
} // namespace ccrypto
