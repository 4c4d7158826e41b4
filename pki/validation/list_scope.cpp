#include "pki/validation/list_scope.h"

#include "asn1/der/der_cursor.h"
#include "pki/x509/der_tags.h"
#include "pki/x509/template_filling.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <utility>

namespace ccrypto {

namespace {

std::span<const std::uint8_t> WithoutZeros(const element& number)
{
    std::span<const std::uint8_t> octets = number.bytes();
    while (!octets.empty() && octets.front() == 0)
        octets = octets.subspan(1);
    return octets;
}

element DirectoryValue(const CCrypto_X509_ValueList& name)
{
    return name.GetDerEncodedElement();
}

/// The whole names of a point: a relative one is appended to the name of the issuer of the list.
GeneralNames FullNames(const DistributionPointName& name, std::span<const std::uint8_t> issuerDer)
{
    if (name.relativeName.isEmpty())
        return name.fullName;
    const auto issuer = OnlyValue(issuerDer, der_tag::sequence);
    if (!issuer || issuer->size() + name.relativeName.length() > 0xFFFF)
        return {};
    element names(issuer->data(), static_cast<std::uint32_t>(issuer->size()));
    names.append(name.relativeName.data(), name.relativeName.length());
    return {{GeneralName::Kind::directory, SequenceOfItems(names)}};
}

std::vector<ComparableName> DirectoryNames(const GeneralNames& names)
{
    std::vector<ComparableName> directoryNames;
    for (const GeneralName& name : names)
        if (name.kind == GeneralName::Kind::directory)
            if (std::optional<ComparableName> directoryName = ComparableName::Read(name.value.bytes()))
                directoryNames.push_back(std::move(*directoryName));
    return directoryNames;
}

std::string_view ContentOf(const KnownList& list, const Oid& oid, element& storage)
{
    const CCrypto_X509_Value* value = list.list->extensions().find(oid);
    storage = value != nullptr ? value->content() : element();
    return storage.view();
}

bool HaveSameExtension(const KnownList& first, const KnownList& second, const Oid& oid)
{
    std::array<element, 2> contents;
    return ContentOf(first, oid, contents[0]) == ContentOf(second, oid, contents[1]);
}

/// In milliseconds. What a caller gives may be as long as it likes: this is longer than any two times are apart.
std::int64_t Milliseconds(std::int64_t seconds)
{
    constexpr std::int64_t maxSeconds = 1'000'000'000'000;
    return std::clamp(seconds, -maxSeconds, maxSeconds) * 1000;
}

/// Whether `time`, moved by `milliseconds`, is before `at`. Times that cannot be counted are.
bool IsEarlier(const CCryptoDateTime& time, std::int64_t milliseconds, const CCryptoDateTime& at)
{
    const std::optional<std::int64_t> first = time.toMilliseconds();
    const std::optional<std::int64_t> second = at.toMilliseconds();
    return !first || !second || *first + milliseconds < *second;
}

} // namespace

ScopeNames::ScopeNames(const GeneralNames& names)
{
    for (const GeneralName& name : names) {
        std::optional<ComparableName> directory;
        if (name.kind == GeneralName::Kind::directory)
            directory = ComparableName::Read(name.value.bytes());
        if (directory)
            directories_.insert(std::move(*directory));
        else
            others_.emplace(name.kind, name.value.view());
    }
}

bool ScopeNames::hasAnyOf(const ScopeNames& names) const
{
    return std::ranges::any_of(names.directories_, [&](const ComparableName& name) { return directories_.contains(name); }) ||
           std::ranges::any_of(names.others_, [&](const auto& name) { return others_.contains(name); });
}

std::unique_ptr<KnownList> KnownList::Read(CrlPtr list)
{
    if (list == nullptr || !list->isLoaded() || !list->isDer() || !list->algorithmsAgree() || list->hasUnknownCriticalEntry())
        return nullptr;
    std::optional<ComparableName> issuer = ComparableName::Read(list->issuer().GetDerEncodedElement().bytes());
    const std::optional<SignatureAlgorithm> signedBy = ReadSignatureAlgorithm(list->signatureAlgorithm());
    auto known = std::make_unique<KnownList>();
    known->extensions = ReadAllExtensions(list->extensions(), ExtensionOwner::list);
    if (!issuer || !signedBy || known->extensions.isMalformed || known->extensions.hasUnknownCritical)
        return nullptr;
    known->issuer = std::move(*issuer);
    known->signedBy = *signedBy;
    if (const auto& scope = known->extensions.issuingDistributionPoint; scope && scope->name)
        known->pointNames = ScopeNames(FullNames(*scope->name, DirectoryValue(list->issuer()).bytes()));
    known->list = std::move(list);
    return known;
}

std::vector<StatusPoint> StatusPointsOf(const KnownCertificate& certificate)
{
    const element issuerDer = DirectoryValue(certificate.certificate->issuer());
    std::vector<StatusPoint> points;
    if (certificate.extensions.distributionPoints) {
        for (const DistributionPoint& published : *certificate.extensions.distributionPoints) {
            StatusPoint point;
            point.reasons = published.reasons.value_or(allReasons) & allReasons;
            point.namesIssuer = !published.crlIssuer.empty();
            point.issuers = point.namesIssuer ? DirectoryNames(published.crlIssuer) : std::vector{certificate.issuer};
            if (published.name) {
                element relativeTo = issuerDer;
                for (const GeneralName& name : published.crlIssuer)
                    if (name.kind == GeneralName::Kind::directory)
                        relativeTo = name.value;
                point.names = ScopeNames(FullNames(*published.name, relativeTo.bytes()));
            } else {
                point.names = ScopeNames(published.crlIssuer);
            }
            points.push_back(std::move(point));
        }
    }

    StatusPoint implied;
    implied.names = ScopeNames({{GeneralName::Kind::directory, issuerDer}});
    implied.issuers = {certificate.issuer};
    points.push_back(std::move(implied));
    return points;
}

std::optional<ReasonFlags> ReasonsInScope(const KnownList& list, const StatusPoint& point, const KnownCertificate& certificate,
                                          ValidationWork& work)
{
    if (point.namesIssuer && !list.isIndirect() && list.issuer != certificate.issuer)
        return ReasonFlags{0};
    if (!list.extensions.issuingDistributionPoint)
        return point.reasons;

    const IssuingDistributionPoint& scope = *list.extensions.issuingDistributionPoint;
    const bool isCa = certificate.extensions.basicConstraints && certificate.extensions.basicConstraints->isCa;
    if (scope.onlyAttributeCertificates || (isCa && scope.onlyUserCertificates) || (!isCa && scope.onlyCaCertificates))
        return ReasonFlags{0};
    if (list.pointNames) {
        if (!work.takeScopeChecks(static_cast<std::uint32_t>(point.names.size())))
            return std::nullopt;
        if (!list.pointNames->hasAnyOf(point.names))
            return ReasonFlags{0};
    }
    return static_cast<ReasonFlags>(point.reasons & scope.onlySomeReasons.value_or(allReasons));
}

bool IsDeltaOf(const KnownList& delta, const KnownList& base)
{
    const ReadExtensions& changed = delta.extensions;
    return changed.deltaCrlIndicator && changed.crlNumber && base.extensions.crlNumber && delta.issuer == base.issuer &&
           !IsGreaterNumber(*changed.deltaCrlIndicator, *base.extensions.crlNumber) &&
           IsGreaterNumber(*changed.crlNumber, *base.extensions.crlNumber) &&
           HaveSameExtension(delta, base, oids::issuingDistributionPoint) &&
           HaveSameExtension(delta, base, oids::authorityKeyIdentifier);
}

std::optional<RevokedEntry> EntryOf(const KnownList& list, const KnownCertificate& certificate)
{
    std::optional<RevokedEntry> removed;
    // One name may hold for all entries, and is compared once.
    const std::uint8_t* compared = nullptr;
    bool isOfIssuer = list.issuer == certificate.issuer;
    for (RevokedEntry& entry : list.list->find(certificate.certificate->serialNumber().bytes())) {
        if (!entry.certificateIssuer.empty() && entry.certificateIssuer.data() != compared) {
            compared = entry.certificateIssuer.data();
            const std::optional<GeneralNames> names = ReadGeneralNames(entry.certificateIssuer);
            const std::vector<ComparableName> issuers = names ? DirectoryNames(*names) : std::vector<ComparableName>();
            isOfIssuer = std::find(issuers.begin(), issuers.end(), certificate.issuer) != issuers.end();
        }
        if (!isOfIssuer)
            continue;
        if (entry.reason != RevocationReason::removeFromCrl)
            return std::move(entry);
        removed = std::move(entry);
    }
    return removed;
}

bool IsGreaterNumber(const element& first, const element& second)
{
    const std::span<const std::uint8_t> a = WithoutZeros(first);
    const std::span<const std::uint8_t> b = WithoutZeros(second);
    return a.size() != b.size() ? a.size() > b.size() : std::lexicographical_compare(b.begin(), b.end(), a.begin(), a.end());
}

Freshness FreshnessOf(const CCrypto_X509_CRL& list, const ValidationOptions& options)
{
    const std::int64_t skew = Milliseconds(options.clockSkewSeconds);
    if (IsEarlier(options.at, skew, list.thisUpdate()))
        return Freshness::early;
    const bool hasEnd = list.nextUpdate().isValid();
    const CCryptoDateTime& start = hasEnd ? list.nextUpdate() : list.thisUpdate();
    const std::int64_t age = hasEnd ? 0 : Milliseconds(options.maxAgeSeconds);
    return IsEarlier(start, age + skew, options.at) ? Freshness::stale : Freshness::fresh;
}

} // namespace ccrypto
