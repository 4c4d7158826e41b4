#include "pki/validation/name_constraints.h"

#include "pki/validation/name_forms.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace ccrypto {

namespace {

using NameKind = GeneralName::Kind;

/// A set of kinds of names.
using NameKinds = std::uint32_t;
constexpr NameKinds KindBit(NameKind kind)
{
    return 1U << static_cast<unsigned>(kind);
}

/// A name, read as what its form is compared as.
struct NameUnderConstraints {
    NameKind kind = NameKind::otherName;
    ComparableName directory;
    DnsPattern host; ///< of dns, email and uri
    std::string localPart;
    element address;
};

/// \return none for a name that is not one of its form.
std::optional<NameUnderConstraints> ReadNameUnderConstraints(const GeneralName& name)
{
    NameUnderConstraints read;
    read.kind = name.kind;
    switch (name.kind) {
    case NameKind::directory:
        if (std::optional<ComparableName> directory = ComparableName::Read(name.value.bytes())) {
            read.directory = std::move(*directory);
            return read;
        }
        return std::nullopt;
    case NameKind::dns:
        if (std::optional<DnsPattern> pattern = ReadDnsPattern(name.value.view())) {
            read.host = std::move(*pattern);
            return read;
        }
        return std::nullopt;
    case NameKind::email:
        if (std::optional<Mailbox> mailbox = ReadMailbox(name.value.view())) {
            read.localPart = std::move(mailbox->local);
            read.host.host = std::move(mailbox->host);
            return read;
        }
        return std::nullopt;
    case NameKind::uri:
        if (std::optional<std::string> host = ReadUriHost(name.value.view())) {
            read.host.host = std::move(*host);
            return read;
        }
        return std::nullopt;
    case NameKind::ipAddress:
        read.address = name.value;
        return name.value.length() == 4 || name.value.length() == 16 ? std::optional(std::move(read)) : std::nullopt;
    default:
        return std::nullopt;
    }
}

/// The base of a subtree, read as what names are compared with.
struct NameSubtree {
    ComparableName directory;
    std::string domain; ///< of dns, email and uri; empty for all of them
    bool isMailbox = false;
    std::string localPart;          ///< of a mailbox
    bool isSubdomainsAlone = false; ///< the domain was written with a dot before it
    element addressAndMask;
};

bool IsAddressRange(std::span<const std::uint8_t> octets)
{
    if (octets.size() != 8 && octets.size() != 32)
        return false;
    bool hasEnded = false;
    for (const std::uint8_t octet : octets.last(octets.size() / 2))
        for (unsigned bit = 0x80; bit != 0; bit >>= 1) {
            if (hasEnded && (octet & bit) != 0)
                return false;
            hasEnded = (octet & bit) == 0;
        }
    return true;
}

std::optional<NameSubtree> ReadDomainSubtree(std::string_view base)
{
    NameSubtree subtree;
    if (base.empty())
        return subtree;
    subtree.isSubdomainsAlone = base.starts_with('.');
    std::optional<std::string> domain = ReadHostName(subtree.isSubdomainsAlone ? base.substr(1) : base);
    if (!domain)
        return std::nullopt;
    subtree.domain = std::move(*domain);
    return subtree;
}

std::optional<NameSubtree> ReadMailboxSubtree(std::string_view base)
{
    std::optional<Mailbox> mailbox = ReadMailbox(base);
    if (!mailbox)
        return std::nullopt;
    NameSubtree subtree;
    subtree.isMailbox = true;
    subtree.localPart = std::move(mailbox->local);
    subtree.domain = std::move(mailbox->host);
    return subtree;
}

/// \param base of a form that is compared. \return none for what is no base of that form.
std::optional<NameSubtree> ReadNameSubtree(const GeneralName& base)
{
    NameSubtree subtree;
    switch (base.kind) {
    case NameKind::directory:
        if (std::optional<ComparableName> directory = ComparableName::Read(base.value.bytes())) {
            subtree.directory = std::move(*directory);
            return subtree;
        }
        return std::nullopt;
    case NameKind::ipAddress:
        subtree.addressAndMask = base.value;
        return IsAddressRange(base.value.bytes()) ? std::optional(std::move(subtree)) : std::nullopt;
    case NameKind::email:
        return base.value.view().find('@') != std::string_view::npos ? ReadMailboxSubtree(base.value.view())
                                                                     : ReadDomainSubtree(base.value.view());
    default:
        return ReadDomainSubtree(base.value.view());
    }
}

bool IsBelowDomain(std::string_view host, std::string_view domain)
{
    return host.size() > domain.size() && host.ends_with(domain) && host[host.size() - domain.size() - 1] == '.';
}

/// Whether all hosts that the name stands for are within the subtree. A host that the wildcard stands for is below the domains
/// above the wildcard, whatever its label is.
bool IsDnsWithin(const DnsPattern& name, const NameSubtree& subtree)
{
    if (subtree.domain.empty() || IsBelowDomain(name.host, subtree.domain))
        return true;
    return name.host == subtree.domain && (name.isWildcard || !subtree.isSubdomainsAlone);
}

/// Whether any host that the name stands for is within the subtree. RFC 5280 does not say what a dot before the domain means;
/// to be on the safe side the domain itself is excluded as well.
bool MayDnsBeWithin(const DnsPattern& name, const NameSubtree& subtree)
{
    if (subtree.domain.empty() || name.host == subtree.domain || IsBelowDomain(name.host, subtree.domain))
        return true;
    return name.isWildcard && subtree.domain.substr(subtree.domain.find('.') + 1) == name.host;
}

/// Of mailboxes and URIs: a domain with a dot before it is all hosts below, and one without is that host alone.
bool IsHostWithin(const std::string& host, const NameSubtree& subtree)
{
    if (subtree.domain.empty())
        return true;
    return subtree.isSubdomainsAlone ? IsBelowDomain(host, subtree.domain) : host == subtree.domain;
}

bool IsAddressWithin(std::span<const std::uint8_t> address, std::span<const std::uint8_t> addressAndMask)
{
    if (addressAndMask.size() != 2 * address.size())
        return false;
    const auto mask = addressAndMask.subspan(address.size());
    for (std::size_t index = 0; index < address.size(); ++index)
        if (((address[index] ^ addressAndMask[index]) & mask[index]) != 0)
            return false;
    return true;
}

bool IsNameWithin(const NameUnderConstraints& name, const NameSubtree& subtree, bool isExclusion)
{
    switch (name.kind) {
    case NameKind::directory:
        return name.directory.isWithin(subtree.directory);
    case NameKind::dns:
        return isExclusion ? MayDnsBeWithin(name.host, subtree) : IsDnsWithin(name.host, subtree);
    case NameKind::email:
        if (subtree.isMailbox)
            return name.localPart == subtree.localPart && name.host.host == subtree.domain;
        return IsHostWithin(name.host.host, subtree);
    case NameKind::uri:
        return IsHostWithin(name.host.host, subtree);
    default:
        return IsAddressWithin(name.address.bytes(), subtree.addressAndMask.bytes());
    }
}

constexpr std::size_t nameKindCount = static_cast<std::size_t>(NameKind::registeredId) + 1;
constexpr NameKinds comparedKinds = KindBit(NameKind::directory) | KindBit(NameKind::dns) | KindBit(NameKind::email) |
                                    KindBit(NameKind::uri) | KindBit(NameKind::ipAddress);

/// Subtrees for one kind of name, and what it costs to compare one name with all of them: long ones take longer.
struct NameSubtrees {
    std::vector<NameSubtree> subtrees;
    std::size_t cost = 0;

    [[nodiscard]] bool hold(const NameUnderConstraints& name, bool isExclusion) const
    {
        return std::ranges::any_of(subtrees, [&](const NameSubtree& tree) { return IsNameWithin(name, tree, isExclusion); });
    }
};
using SubtreesOfKinds = std::array<NameSubtrees, nameKindCount>;

constexpr std::size_t IndexOf(NameKind kind)
{
    return static_cast<std::size_t>(kind);
}

/// \return false for a base that is not one of its form.
bool ReadSubtrees(const GeneralNames& bases, SubtreesOfKinds& target)
{
    constexpr std::size_t octetsOfOneComparison = 64;
    for (const GeneralName& base : bases) {
        if ((comparedKinds & KindBit(base.kind)) == 0)
            continue;
        std::optional<NameSubtree> subtree = ReadNameSubtree(base);
        if (!subtree)
            return false;
        NameSubtrees& ofKind = target[IndexOf(base.kind)];
        ofKind.subtrees.push_back(std::move(*subtree));
        ofKind.cost += 1 + base.value.length() / octetsOfOneComparison;
    }
    return true;
}

NameKinds KindsOf(const GeneralNames& names)
{
    NameKinds kinds = 0;
    for (const GeneralName& name : names)
        kinds |= KindBit(name.kind);
    return kinds;
}

Finding WithName(const CCryptoString& name, Finding finding)
{
    if (finding.reason == Reason::nameConstraints)
        finding.detail = name + finding.detail;
    return finding;
}

Finding TooMuchWork()
{
    return {Reason::limit, "names under constraints"};
}

} // namespace

struct NameConstraintState::Layer {
    SubtreesOfKinds permitted;
    SubtreesOfKinds excluded;
    NameKinds kinds = 0; ///< of both, and of those that are not compared

    /// The detail of the finding lacks the name.
    [[nodiscard]] Finding check(const NameUnderConstraints& name, NameWork& work) const
    {
        const NameSubtrees& permittedOnes = permitted[IndexOf(name.kind)];
        const NameSubtrees& excludedOnes = excluded[IndexOf(name.kind)];
        if (!work.spend(permittedOnes.cost + excludedOnes.cost))
            return TooMuchWork();
        if (!permittedOnes.subtrees.empty() && !permittedOnes.hold(name, false))
            return {Reason::nameConstraints, " is not permitted"};
        if (excludedOnes.hold(name, true))
            return {Reason::nameConstraints, " is excluded"};
        return {};
    }
};

bool NameWork::spend(std::size_t comparisons)
{
    if (comparisons > left_) {
        left_ = 0;
        return false;
    }
    left_ -= comparisons;
    return true;
}

Finding NameConstraintState::add(const NameConstraints& constraints)
{
    if (constraints.permitted.size() + constraints.excluded.size() > maxNames)
        return TooMuchWork();
    const auto layer = std::make_shared<Layer>();
    if (!ReadSubtrees(constraints.permitted, layer->permitted) || !ReadSubtrees(constraints.excluded, layer->excluded))
        return {Reason::malformed, "a name constraint is not of its form"};
    layer->kinds = KindsOf(constraints.permitted) | KindsOf(constraints.excluded);
    if (layer->kinds != 0)
        layers_.push_back(layer);
    return {};
}

Finding NameConstraintState::check(const KnownCertificate& certificate, NameWork& work) const
{
    if (isEmpty())
        return {};
    GeneralNames names;
    if (certificate.extensions.subjectAlternativeName)
        names = *certificate.extensions.subjectAlternativeName;
    if ((KindsOf(names) & KindBit(NameKind::email)) == 0)
        for (const auto& value : certificate.certificate->subject().values())
            if (value->oid() == oids::emailAddress)
                names.push_back({NameKind::email, value->text().data()});
    return check(certificate.subject, names, work);
}

Finding NameConstraintState::check(const ComparableName& subject, const GeneralNames& names, NameWork& work) const
{
    if (isEmpty())
        return {};
    if (names.size() > maxNames || !work.spend(names.size() + 1))
        return TooMuchWork();

    NameKinds kinds = 0;
    for (const auto& layer : layers_)
        kinds |= layer->kinds;
    const auto checkInLayers = [&](const NameUnderConstraints& name) {
        Finding finding;
        for (std::size_t index = 0; index < layers_.size() && finding.passed(); ++index)
            finding = layers_[index]->check(name, work);
        return finding;
    };

    if ((kinds & KindBit(NameKind::directory)) != 0 && !subject.isEmpty()) {
        NameUnderConstraints name;
        name.kind = NameKind::directory;
        name.directory = subject;
        if (Finding finding = checkInLayers(name); !finding.passed())
            return WithName("the subject", std::move(finding));
    }
    for (const GeneralName& name : names) {
        if ((kinds & KindBit(name.kind)) == 0)
            continue;
        const std::optional<NameUnderConstraints> read = ReadNameUnderConstraints(name);
        Finding finding = read ? checkInLayers(*read) : Finding{Reason::nameConstraints, " cannot be compared with constraints"};
        if (!finding.passed())
            return WithName(GeneralNameText(name), std::move(finding));
    }
    return {};
}

} // namespace ccrypto
