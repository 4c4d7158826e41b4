#include "pki/validation/identity.h"

#include "pki/validation/name_forms.h"

#include <algorithm>

namespace ccrypto {

namespace {

/// \param text what was asked for. \param isMeant of an alternative name of this kind.
template <typename Predicate>
Finding AnyAlternativeName(const ReadExtensions& extensions, GeneralName::Kind kind, std::string_view text, Predicate isMeant)
{
    GeneralName asked;
    asked.kind = kind;
    asked.value = element(text);
    if (!extensions.subjectAlternativeName)
        return {Reason::name, "no alternative names"};
    const auto isOne = [&](const GeneralName& name) { return name.kind == kind && isMeant(name.value); };
    if (std::ranges::any_of(*extensions.subjectAlternativeName, isOne))
        return {};
    return {Reason::name, CCryptoString("no alternative name is ", GeneralNameText(asked))};
}

Finding NotAsked(const char* what)
{
    return {Reason::name, CCryptoString("what was asked for is ", what)};
}

bool AnswersFor(const DnsPattern& pattern, std::string_view host)
{
    if (!pattern.isWildcard)
        return pattern.host == host;
    const std::size_t dot = host.find('.');
    return dot != std::string_view::npos && pattern.host.find('.') != std::string::npos && host.substr(dot + 1) == pattern.host;
}

} // namespace

Finding CheckHost(const ReadExtensions& extensions, std::string_view host)
{
    const std::optional<std::string> asked = ReadHostName(host);
    if (!asked)
        return NotAsked("not a DNS name");
    if (ReadIpAddress(*asked))
        return NotAsked("an address, not a DNS name");
    return AnyAlternativeName(extensions, GeneralName::Kind::dns, *asked, [&](const element& value) {
        // The final dot is part of a name that is looked up, and not of one in a certificate.
        const std::optional<DnsPattern> pattern = value.view().ends_with('.') ? std::nullopt : ReadDnsPattern(value.view());
        return pattern && AnswersFor(*pattern, *asked);
    });
}

Finding CheckIpAddress(const ReadExtensions& extensions, std::string_view address)
{
    const auto octets = ReadIpAddress(address);
    if (!octets)
        return NotAsked("not an IP address");
    const std::string_view asked(reinterpret_cast<const char*>(octets->data()), octets->size());
    return AnyAlternativeName(extensions, GeneralName::Kind::ipAddress, asked,
                              [&](const element& value) { return value.view() == asked; });
}

Finding CheckEmail(const ReadExtensions& extensions, std::string_view address)
{
    const std::optional<Mailbox> asked = ReadMailbox(address);
    if (!asked)
        return NotAsked("not a mailbox");
    return AnyAlternativeName(extensions, GeneralName::Kind::email, address,
                              [&](const element& value) { return ReadMailbox(value.view()) == asked; });
}

} // namespace ccrypto
