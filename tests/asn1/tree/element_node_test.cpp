#include "asn1/der/der_parser.h"
#include "asn1/parser/parser.h"
#include "asn1/tree/element_node.h"
#include "asn1/tree/node_pool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace ccrypto;

namespace {

constexpr std::array slots = {LinkKind::modifiers, LinkKind::brackets, LinkKind::shortValue,
                              LinkKind::operation, LinkKind::content,  LinkKind::sibling};

element Token(LinkKind kind)
{
    return element(std::to_string(static_cast<int>(kind)));
}

TEST(ElementNode, HoldsItsSlotsInWhateverOrderTheyAreFilledAndEmptied)
{
    std::array<LinkKind, slots.size()> order = slots;
    do {
        const ElementNodePtr node = elementNode::Make(element("node"));
        for (const LinkKind kind : order) {
            EXPECT_EQ(node->slot(kind), nullptr);
            node->set(kind, element("replaced"));
            node->set(kind, Token(kind));
        }
        EXPECT_EQ(node->value(), node->content());
        LinkKind before = LinkKind::none;
        for (const elementNode* part = node->firstPart(); part != nullptr; part = part->nextPart()) {
            EXPECT_LT(before, part->linkKind());
            before = part->linkKind();
        }
        const ElementNodePtr copy = node->clone(true);
        for (std::size_t index = 0; index < order.size(); ++index) {
            const LinkKind kind = order[index];
            ASSERT_NE(node->slot(kind), nullptr);
            EXPECT_EQ(node->slot(kind)->token(), Token(kind));
            EXPECT_EQ(node->slot(kind)->parent(), node.get());
            ASSERT_NE(copy->slot(kind), nullptr);
            EXPECT_EQ(copy->slot(kind)->token(), Token(kind));
            const ElementNodePtr released = index % 2 == 0 ? node->release(kind) : node->slot(kind)->detach();
            EXPECT_EQ(released->parent(), nullptr);
            EXPECT_EQ(node->slot(kind), nullptr);
        }
    } while (std::ranges::next_permutation(order).found);
}

/// A list of `count` items from one pool, each with a value.
ElementNodePtr List(std::uint32_t count)
{
    NodePool pool;
    ElementNodePtr first = pool.make(ElementType::asn1Integer);
    elementNode* last = first.get();
    for (std::uint32_t index = 0; index < count; ++index) {
        last->set(LinkKind::shortValue, pool.make(element(index)));
        if (index + 1 < count)
            last = last->set(LinkKind::sibling, pool.make(ElementType::asn1Integer));
    }
    return first;
}

TEST(NodePool, NodesOutliveItAndMixWithThoseOfOthers)
{
    constexpr std::uint32_t count = 5000;
    ElementNodePtr mixed = List(count);
    ElementNodePtr other = List(count);
    // Every second value changes places between the trees, and some nodes come from no pool.
    elementNode* there = other.get();
    std::uint32_t index = 0;
    for (elementNode* here = mixed.get(); here != nullptr; here = here->next(), there = there->next(), ++index) {
        if (index % 2 == 0)
            here->set(LinkKind::shortValue, there->release(LinkKind::shortValue));
        else if (index % 3 == 0)
            there->set(LinkKind::shortValue, element(index));
    }
    other = nullptr;
    index = 0;
    for (const elementNode* here = mixed.get(); here != nullptr; here = here->next(), ++index)
        ASSERT_EQ(here->shortValue()->token().toWord32(), index);
    EXPECT_EQ(index, count);
}

TEST(NodePool, OpensBlocksOfTheExpectedSize)
{
    struct Step {
        std::size_t expected;
        std::uint32_t taken;
        std::uint64_t made;
    };
    // A block that was too small by a few is followed by a small one.
    for (const auto& steps : {std::vector<Step>{{91, 91, 91}, {4, 4, 99}, {0, 5, 107}},
                              {{0, 8, 8}, {16, 1, 24}},
                              {{100000, 700, 700}, {100000, 1, 1400}}}) {
        NodePool pool;
        std::vector<ElementNodePtr> nodes;
        for (const Step& step : steps) {
            pool.expect(step.expected);
            for (std::uint32_t count = 0; count < step.taken; ++count)
                nodes.push_back(pool.make(ElementType::asn1Null));
            EXPECT_EQ(pool.made(), step.made);
        }
    }
}

TEST(NodePool, DoublesItsBlocksUnlessTheirSizeIsExpected)
{
    NodePool pool;
    std::vector<ElementNodePtr> nodes;
    for (const auto& [taken, made] : {std::pair{8u, 8u}, {1u, 24u}, {16u, 56u}, {32u, 120u}}) {
        for (std::uint32_t count = 0; count < taken; ++count)
            nodes.push_back(pool.make(ElementType::asn1Null));
        EXPECT_EQ(pool.made(), made);
    }
}

TEST(NodePool, ThreadsDestroyNodesOfOneBlock)
{
    constexpr std::uint32_t count = 20000;
    ElementNodePtr list = List(count);
    std::array<ElementNodePtr, 4> shares;
    for (std::uint32_t index = 0; list != nullptr; ++index) {
        ElementNodePtr rest = list->release(LinkKind::sibling);
        ElementNodePtr& share = shares[index % shares.size()];
        list->set(LinkKind::sibling, std::move(share));
        share = std::move(list);
        list = std::move(rest);
    }
    std::vector<std::thread> threads;
    for (ElementNodePtr& share : shares)
        threads.emplace_back([&share] { share = nullptr; });
    for (std::thread& thread : threads)
        thread.join();
    // The address sanitizer reports what leaks or is freed twice.
    for (const ElementNodePtr& share : shares)
        EXPECT_EQ(share, nullptr);
}

TEST(NodePool, UsesTheStorageOfAFailedProbeAgain)
{
    // Octet strings that begin as DER and do not end so: each is decoded, and the nodes are given up.
    std::string value = "\x30\x12";
    for (int element = 0; element < 5; ++element)
        value += "\x02\x01\x05";
    value += "\x02\x7F\x05";
    std::string body;
    constexpr std::uint32_t count = 3000;
    for (std::uint32_t index = 0; index < count; ++index)
        body += std::string("\x04") + static_cast<char>(value.size()) + value;
    const ElementNodePtr tree =
        CCryptoDERParser({.insideOctetStrings = true}).Decode({reinterpret_cast<const std::uint8_t*>(body.data()), body.size()});
    ASSERT_NE(tree, nullptr);
    std::uint32_t found = 0;
    for (const elementNode* item = tree.get(); item != nullptr; item = item->next(), ++found)
        ASSERT_EQ(item->value()->token().view(), value);
    EXPECT_EQ(found, count);
    EXPECT_EQ(CCryptoParser::ToDer(tree.get()).view(), body);
}

} // namespace
