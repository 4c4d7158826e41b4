#pragma once

#include "pki/keys/key_pair.h"
#include "pki/validation/name_constraints.h"
#include "pki/x509/signature.h"
#include "pki/x509/x509_base.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <utility>

namespace ccrypto {

/// What one validation has spent and may still spend, whatever its input is. Signatures are remembered, so that each object and key
/// is checked once. The objects and keys that it is given must live as long.
class ValidationWork {
public:
    static constexpr std::uint32_t maxSteps = 1'000;
    static constexpr std::uint32_t maxSignatures = 200;
    static constexpr std::uint32_t maxPathLength = 64;
    /// Names of distribution points that are looked for among those of lists.
    static constexpr std::uint32_t maxScopeChecks = 1'000'000;

    /// Each counts as one certificate that is put on a path. \return false when there are none left.
    [[nodiscard]] bool takeStep() { return take(steps_, 1, maxSteps); }
    [[nodiscard]] bool takeSignatures(std::uint32_t count) { return take(signatures_, count, maxSignatures); }
    [[nodiscard]] bool takeScopeChecks(std::uint32_t count) { return take(scopeChecks_, count, maxScopeChecks); }
    /// More was asked for than there was.
    [[nodiscard]] bool isExceeded() const { return exceeded_; }
    void exceed() { exceeded_ = true; }

    /// Whether the owner of `key` signed `object`. \return none when there are no signatures left.
    [[nodiscard]] std::optional<SignatureResult> check(const CCrypto_X509_Base& object, const SignatureAlgorithm& algorithm,
                                                       ICryptoKeyPair& key);
    /// What check() found out before.
    [[nodiscard]] std::optional<SignatureResult> checked(const CCrypto_X509_Base& object, const ICryptoKeyPair& key) const;
    /// The key of a certificate whose issuer has the key `issuer`, with what it inherits; the same object for the same two. Null,
    /// logged, when there is nothing to inherit.
    [[nodiscard]] std::shared_ptr<ICryptoKeyPair> completed(const std::shared_ptr<ICryptoKeyPair>& key,
                                                            const std::shared_ptr<ICryptoKeyPair>& issuer);

    [[nodiscard]] std::uint32_t steps() const { return steps_; }
    [[nodiscard]] std::uint32_t signatures() const { return signatures_; }
    [[nodiscard]] NameWork& names() { return names_; }

private:
    [[nodiscard]] bool take(std::uint32_t& spent, std::uint32_t count, std::uint32_t limit);

    std::uint32_t steps_ = 0;
    std::uint32_t signatures_ = 0;
    std::uint32_t scopeChecks_ = 0;
    bool exceeded_ = false;
    NameWork names_;
    std::map<std::pair<const void*, const void*>, SignatureResult> results_;
    std::map<std::pair<const void*, const void*>, std::shared_ptr<ICryptoKeyPair>> completed_;
};

} // namespace ccrypto
