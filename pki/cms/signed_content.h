#pragma once

#include "core/base/algorithm.h"
#include "core/text/element.h"

#include <map>
#include <optional>
#include <span>

namespace ccrypto {

/// What a message was signed over: its octets, or digests of them that were made elsewhere.
class SignedContent {
public:
    /// The octets must outlive the object.
    explicit SignedContent(std::span<const std::uint8_t> octets) : octets_(octets) {}
    /// A signature without signed attributes cannot be verified so: whether the content is not itself a set of attributes must be
    /// known.
    SignedContent(algorithm::Id hash, element digest) { digests_[hash] = std::move(digest); }

    [[nodiscard]] const std::optional<std::span<const std::uint8_t>>& octets() const { return octets_; }
    /// Made once for each hash. Empty when only the digests of others are known.
    [[nodiscard]] const element& digest(algorithm::Id hash);

    /// Whether it is `octets`, or its digests are theirs.
    [[nodiscard]] bool isMadeOf(std::span<const std::uint8_t> octets) const;

    /// Whether the octets are a SET of attributes, as signers sign in place of the content: a signature over one would be taken for
    /// a signature over the other.
    [[nodiscard]] bool isSetOfAttributes() const;

private:
    std::optional<std::span<const std::uint8_t>> octets_;
    std::map<algorithm::Id, element> digests_;
};

} // namespace ccrypto
