#pragma once

#include "pki/x509/extensions.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <vector>

namespace ccrypto {

/// The certificate policies that a path is valid under, as RFC 9618 has it: a graph with one node per policy and level in place of
/// RFC 5280's tree, whose size doubles with every level of mappings that cross. The certificates are added in the order in which
/// they are validated, the one that the anchor issued first; every function but the first two only reads.
class PolicyGraph {
public:
    /// Nodes and edges of all levels; what exceeds it empties the graph.
    static constexpr std::size_t maxSize = 20'000;

    PolicyGraph();

    /// RFC 5280, 6.1.3 (d) and (e), for the next certificate. \param policies its extension; null when it has none, which empties
    /// the graph. \param anyPolicyCounts whether anyPolicy is not inhibited for this certificate.
    void addCertificate(const std::vector<PolicyInformation>* policies, bool anyPolicyCounts);
    /// RFC 5280, 6.1.4 (b), for the certificate that was added last. \param mappings none of them from or to anyPolicy.
    /// \param mappingCounts whether mapping is not inhibited; if it is, the policies that would be mapped are removed.
    void applyMappings(const std::vector<PolicyMapping>& mappings, bool mappingCounts);

    /// Whether no policy is left: the graph of RFC 5280 is then NULL.
    [[nodiscard]] bool isEmpty() const { return levels_.empty(); }
    /// Whether it is empty because it exceeded maxSize.
    [[nodiscard]] bool isExceeded() const { return exceeded_; }
    /// The authority-constrained policies, in terms of the anchor's domain: anyPolicy alone or among others when it is valid to
    /// the end. Sorted.
    [[nodiscard]] std::vector<Oid> policies() const;
    /// Those of them that the user accepts, who accepts all with an empty `accepted` and with anyPolicy in it. Sorted.
    [[nodiscard]] std::vector<Oid> policies(const std::vector<Oid>& accepted) const;

private:
    struct Node {
        /// By their policies, on the level above.
        std::set<Oid> parents;
        /// The policies of the next certificate that continue this one; those of the node itself unless it was mapped.
        std::set<Oid> expected;
    };
    using Level = std::map<Oid, Node>;

    void addNode(Level& level, const Oid& policy, std::set<Oid> parents);
    void removeChildless();
    void reset();

    /// From the root, which is anyPolicy; each node has a parent, and a child but on the last level.
    std::vector<Level> levels_;
    std::size_t size_ = 0;
    bool exceeded_ = false;
};

} // namespace ccrypto
