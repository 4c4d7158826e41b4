#pragma once

#include "pki/validation/certificate_pool.h"
#include "pki/validation/verdict.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace ccrypto {

/// How many comparisons of a name with a constraint one validation may still make, over all paths that it tries.
class NameWork {
public:
    static constexpr std::uint32_t maxComparisons = 1U << 24;

    explicit NameWork(std::uint32_t comparisons = maxComparisons) : left_(comparisons) {}

    /// \return false, and nothing is left, when there are not so many.
    [[nodiscard]] bool spend(std::size_t comparisons);

private:
    std::size_t left_;
};

/// The permitted and excluded subtrees that the certificates of a path have set so far (RFC 5280, 6.1.2 (b) and (c)).
///
/// Subtrees of otherName, x400Address, ediPartyName and registeredID are not compared: a certificate with a name of such a form is
/// refused once a constraint of that form was set. Copies share what was added, so that paths may branch.
class NameConstraintState {
public:
    /// Names of one certificate that is checked, and subtrees of one certificate that sets them.
    static constexpr std::size_t maxNames = 4096;

    /// Of the certificate of an issuer (6.1.4 (g)): the names that are permitted are those that were permitted before and are now;
    /// the names that are excluded are those that were excluded before or are now. \return malformed for a subtree that is not one
    /// of its form: an address whose mask has gaps or does not fit, a domain with a wildcard; limit for more than maxNames.
    [[nodiscard]] Finding add(const NameConstraints& constraints);

    /// Whether the subject, when it is not empty, and every alternative name are within what is permitted and outside what is
    /// excluded (6.1.3 (b) and (c)). Without an alternative name of that form, the e-mail addresses of the subject are checked as
    /// well. Certificates that issued themselves are for the caller to leave out. \return nameConstraints, also for a name that
    /// cannot be read as one of its form when there are constraints of that form; limit when `work` is used up and for more than
    /// maxNames.
    [[nodiscard]] Finding check(const KnownCertificate& certificate, NameWork& work) const;
    /// The same for these names.
    [[nodiscard]] Finding check(const ComparableName& subject, const GeneralNames& names, NameWork& work) const;

    [[nodiscard]] bool isEmpty() const { return layers_.empty(); }

private:
    struct Layer;

    // One for each certificate that set constraints. A name must be within a permitted subtree of each of them that has any of its
    // form, which is what is within the intersection.
    std::vector<std::shared_ptr<const Layer>> layers_;
};

} // namespace ccrypto
