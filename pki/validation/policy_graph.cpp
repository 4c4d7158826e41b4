#include "pki/validation/policy_graph.h"

#include <algorithm>
#include <utility>

namespace ccrypto {

namespace {

const Oid& AnyPolicy()
{
    static const Oid oid = Oid::FromDotted("2.5.29.32.0");
    return oid;
}

} // namespace

PolicyGraph::PolicyGraph() : levels_(1)
{
    addNode(levels_.front(), AnyPolicy(), {});
}

void PolicyGraph::addCertificate(const std::vector<PolicyInformation>* policies, bool anyPolicyCounts)
{
    if (isEmpty())
        return;
    if (policies == nullptr) {
        reset();
        return;
    }

    std::map<Oid, std::set<Oid>> parentsByExpected;
    for (const auto& [policy, node] : levels_.back())
        for (const Oid& expected : node.expected)
            parentsByExpected[expected].insert(policy);

    const bool anyPolicyAbove = levels_.back().contains(AnyPolicy());
    Level level;
    bool hasAnyPolicy = false;
    for (const PolicyInformation& information : *policies) {
        if (information.policy == AnyPolicy())
            hasAnyPolicy = true;
        else if (const auto found = parentsByExpected.find(information.policy); found != parentsByExpected.end())
            addNode(level, information.policy, found->second);
        else if (anyPolicyAbove)
            addNode(level, information.policy, {AnyPolicy()});
    }
    if (hasAnyPolicy && anyPolicyCounts) {
        for (const auto& [expected, parents] : parentsByExpected)
            addNode(level, expected, parents);
    }

    levels_.push_back(std::move(level));
    removeChildless();
}

void PolicyGraph::applyMappings(const std::vector<PolicyMapping>& mappings, bool mappingCounts)
{
    if (isEmpty())
        return;

    std::map<Oid, std::set<Oid>> mapped;
    for (const PolicyMapping& mapping : mappings)
        mapped[mapping.issuerDomain].insert(mapping.subjectDomain);

    Level& level = levels_.back();
    if (!mappingCounts) {
        for (const auto& [issuerDomain, subjectDomains] : mapped)
            level.erase(issuerDomain);
        removeChildless();
        return;
    }

    const bool hasAnyPolicy = level.contains(AnyPolicy());
    for (auto& [issuerDomain, subjectDomains] : mapped) {
        auto node = level.find(issuerDomain);
        if (node == level.end()) {
            if (!hasAnyPolicy)
                continue;
            addNode(level, issuerDomain, {AnyPolicy()});
            node = level.find(issuerDomain);
        }
        size_ += subjectDomains.size();
        node->second.expected = std::move(subjectDomains);
    }
    removeChildless();
}

std::vector<Oid> PolicyGraph::policies() const
{
    if (isEmpty())
        return {};

    // A policy of the anchor's domain is one that anyPolicy led to; what it was mapped to later is of other domains.
    std::set<Oid> valid;
    for (const Level& level : levels_)
        for (const auto& [policy, node] : level)
            if (policy != AnyPolicy() && node.parents.contains(AnyPolicy()))
                valid.insert(policy);
    if (levels_.back().contains(AnyPolicy()))
        valid.insert(AnyPolicy());
    return {valid.begin(), valid.end()};
}

std::vector<Oid> PolicyGraph::policies(const std::vector<Oid>& accepted) const
{
    std::vector<Oid> valid = policies();
    std::vector<Oid> sorted = accepted;
    std::sort(sorted.begin(), sorted.end());
    sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
    if (sorted.empty() || std::binary_search(sorted.begin(), sorted.end(), AnyPolicy()))
        return valid;
    if (std::binary_search(valid.begin(), valid.end(), AnyPolicy()))
        return sorted;

    std::erase_if(valid, [&](const Oid& policy) { return !std::binary_search(sorted.begin(), sorted.end(), policy); });
    return valid;
}

void PolicyGraph::addNode(Level& level, const Oid& policy, std::set<Oid> parents)
{
    const auto [position, isNew] = level.try_emplace(policy);
    if (!isNew)
        return;
    size_ += 1 + parents.size();
    position->second.parents = std::move(parents);
    position->second.expected.insert(policy);
}

void PolicyGraph::removeChildless()
{
    if (size_ > maxSize) {
        reset();
        exceeded_ = true;
        return;
    }

    for (std::size_t below = levels_.size() - 1; below > 0; below--) {
        std::set<Oid> needed;
        for (const auto& [policy, node] : levels_[below])
            needed.insert(node.parents.begin(), node.parents.end());
        Level& level = levels_[below - 1];
        const std::size_t removed = std::erase_if(level, [&](const auto& node) { return !needed.contains(node.first); });
        // The levels above had a child for every node before; they still do when none went.
        if (removed == 0)
            break;
    }
    if (levels_.back().empty() || levels_.front().empty())
        reset();
}

void PolicyGraph::reset()
{
    levels_.clear();
}

} // namespace ccrypto
