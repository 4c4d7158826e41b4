#include "pki/validation/name_forms.h"

#include "pki/x509/name.h"

#include <algorithm>
#include <charconv>

namespace ccrypto {

namespace {

constexpr std::size_t maxHostLabel = 63;
constexpr std::size_t maxHostName = 253;
constexpr std::size_t maxShownName = 160;

constexpr bool IsDecimal(char character)
{
    return character >= '0' && character <= '9';
}

constexpr char LowerAscii(char character)
{
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

constexpr bool IsHostCharacter(char lower)
{
    return (lower >= 'a' && lower <= 'z') || IsDecimal(lower) || lower == '-' || lower == '_';
}

/// The characters between the quotes, each after a backslash as it is. \return none when the quotes do not end with the text.
std::optional<std::string> Unquoted(std::string_view text)
{
    std::string characters;
    for (std::size_t at = 1; at < text.size(); ++at) {
        if (text[at] == '"')
            return at + 1 == text.size() ? std::optional(characters) : std::nullopt;
        if (text[at] == '\\' && ++at == text.size())
            return std::nullopt;
        characters += text[at];
    }
    return std::nullopt;
}

/// \return none for a local part that is neither quoted nor free of what must be.
std::optional<std::string> ReadLocalPart(std::string_view text)
{
    constexpr std::string_view specials = "()<>[]:;@\\,\"";
    const auto isPlain = [&](char character) {
        return character > ' ' && character < 0x7F && specials.find(character) == std::string_view::npos;
    };
    if (text.starts_with('"')) {
        std::optional<std::string> local = Unquoted(text);
        return local && std::ranges::all_of(*local, [](char character) { return character >= ' ' && character < 0x7F; })
                   ? local
                   : std::nullopt;
    }
    return !text.empty() && std::ranges::all_of(text, isPlain) ? std::optional(std::string(text)) : std::nullopt;
}

std::optional<std::vector<std::uint8_t>> ReadIp4Address(std::string_view text)
{
    std::vector<std::uint8_t> octets;
    const char* at = text.data();
    const char* const end = at + text.size();
    while (octets.size() < 4) {
        std::uint8_t octet = 0;
        const auto [stop, error] = std::from_chars(at, end, octet);
        // Some read a leading zero as the sign of an octal number.
        if (error != std::errc() || (*at == '0' && stop != at + 1))
            return std::nullopt;
        octets.push_back(octet);
        at = stop;
        if (octets.size() < 4 && (at == end || *at++ != '.'))
            return std::nullopt;
    }
    return at == end ? std::optional(octets) : std::nullopt;
}

/// Units of an IPv6 address with colons between; the last ones may be an IPv4 address. Empty text is no units.
std::optional<std::vector<std::uint8_t>> ReadIp6Units(std::string_view text, bool mayEndWithIp4)
{
    std::vector<std::uint8_t> octets;
    while (!text.empty()) {
        const std::size_t colon = std::min(text.find(':'), text.size());
        const std::string_view unit = text.substr(0, colon);
        const bool isLast = colon == text.size();
        if (isLast && mayEndWithIp4 && unit.find('.') != std::string_view::npos) {
            const auto tail = ReadIp4Address(unit);
            if (!tail)
                return std::nullopt;
            octets.insert(octets.end(), tail->begin(), tail->end());
            return octets;
        }
        std::uint16_t value = 0;
        const auto [stop, error] = std::from_chars(unit.data(), unit.data() + unit.size(), value, 16);
        if (error != std::errc() || stop != unit.data() + unit.size() || unit.size() > 4)
            return std::nullopt;
        octets.insert(octets.end(), {static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)});
        text.remove_prefix(isLast ? colon : colon + 1);
        if (!isLast && text.empty())
            return std::nullopt;
    }
    return octets;
}

std::optional<std::vector<std::uint8_t>> ReadIp6Address(std::string_view text)
{
    constexpr std::size_t size = 16;
    const std::size_t gap = text.find("::");
    if (gap == std::string_view::npos) {
        auto octets = ReadIp6Units(text, true);
        return octets && octets->size() == size ? octets : std::nullopt;
    }
    auto octets = ReadIp6Units(text.substr(0, gap), false);
    const auto tail = ReadIp6Units(text.substr(gap + 2), true);
    if (!octets || !tail || octets->size() + tail->size() > size - 2)
        return std::nullopt;
    octets->resize(size - tail->size());
    octets->insert(octets->end(), tail->begin(), tail->end());
    return octets;
}

bool IsLetterOrDigit(char character)
{
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9');
}

/// RFC 3986, 3.2.1.
bool IsUserInformation(char character)
{
    constexpr std::string_view others = "-._~%!$&'()*+,;=:";
    return IsLetterOrDigit(character) || others.find(character) != std::string_view::npos;
}

/// The "preferred name syntax" (RFC 1034, 3.5; RFC 1123, 2.1).
bool IsPreferredName(std::string_view text)
{
    if (text.ends_with('.') || !ReadHostName(text) || text.find('_') != std::string_view::npos)
        return false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool isEdge = at == 0 || at + 1 == text.size() || text[at - 1] == '.' || text[at + 1] == '.';
        if (isEdge && text[at] != '.' && !IsLetterOrDigit(text[at]))
            return false;
    }
    return true;
}

/// The host of an authority (RFC 3986, 3.2), a name or an address.
bool HasHost(std::string_view authority)
{
    std::string_view host = authority.substr(authority.rfind('@') + 1);
    if (host.starts_with('[')) {
        const std::size_t end = host.find(']');
        return end != std::string_view::npos && ReadIp6Address(host.substr(1, end - 1));
    }
    host = host.substr(0, host.find(':'));
    return ReadHostName(host).has_value();
}

/// "scheme:" and something after it (RFC 3986, 3.1), and after "//" a host.
bool IsAbsoluteUri(std::string_view uri)
{
    const std::size_t colon = std::min(uri.find(':'), uri.size());
    const std::string_view scheme = uri.substr(0, colon);
    const std::string_view rest = uri.substr(std::min(colon + 1, uri.size()));
    const auto isOfScheme = [](char character) {
        return IsLetterOrDigit(character) || character == '+' || character == '-' || character == '.';
    };
    const auto isBlank = [](char character) { return character <= ' ' || character == 0x7F; };
    if (scheme.empty() || scheme[0] < 'A' || rest.empty() || !std::ranges::all_of(scheme, isOfScheme) ||
        std::ranges::any_of(rest, isBlank))
        return false;
    return !rest.starts_with("//") || HasHost(rest.substr(2, rest.find_first_of("/?#", 2) - 2));
}

CCryptoString TextOf(const GeneralName& name)
{
    using enum GeneralName::Kind;
    switch (name.kind) {
    case email:
    case dns:
    case uri: {
        std::string shown(name.value.view());
        std::ranges::replace_if(
            shown, [](char character) { return character < ' ' || character >= 0x7F; }, '?');
        return CCryptoString(std::string_view(shown));
    }
    case directory:
        return NameText(name.value.bytes());
    case ipAddress: {
        const std::span<const std::uint8_t> octets = name.value.bytes();
        if (octets.size() != 4)
            return name.value.toString();
        std::string shown;
        for (const std::uint8_t octet : octets)
            shown += (shown.empty() ? "" : ".") + std::to_string(octet);
        return CCryptoString(std::string_view(shown));
    }
    case registeredId:
        return Oid(name.value.bytes()).dotted();
    default:
        return {};
    }
}

const char* KindText(GeneralName::Kind kind)
{
    constexpr const char* words[] = {
        "otherName", "rfc822Name",  "dNSName", "x400Address", "directoryName", "ediPartyName", "uniformResourceIdentifier",
        "iPAddress", "registeredID"};
    return words[static_cast<std::size_t>(kind)];
}

} // namespace

std::optional<std::string> ReadHostName(std::string_view text)
{
    if (text.ends_with('.'))
        text.remove_suffix(1);
    if (text.empty() || text.size() > maxHostName)
        return std::nullopt;
    std::string host;
    std::size_t label = 0;
    for (const char character : text) {
        const char lower = LowerAscii(character);
        const bool isDot = lower == '.';
        if (isDot ? label == 0 : !IsHostCharacter(lower) || label == maxHostLabel)
            return std::nullopt;
        label = isDot ? 0 : label + 1;
        host += lower;
    }
    return label != 0 ? std::optional(host) : std::nullopt;
}

std::optional<DnsPattern> ReadDnsPattern(std::string_view text)
{
    const bool isWildcard = text.starts_with("*.");
    std::optional<std::string> host = ReadHostName(isWildcard ? text.substr(2) : text);
    if (!host)
        return std::nullopt;
    return DnsPattern{isWildcard, std::move(*host)};
}

std::optional<Mailbox> ReadMailbox(std::string_view text)
{
    const std::size_t at = text.rfind('@');
    if (at == std::string_view::npos)
        return std::nullopt;
    std::optional<std::string> local = ReadLocalPart(text.substr(0, at));
    std::optional<std::string> host = ReadHostName(text.substr(at + 1));
    if (!local || !host)
        return std::nullopt;
    return Mailbox{std::move(*local), std::move(*host)};
}

std::optional<std::string> ReadUriHost(std::string_view uri)
{
    const std::size_t scheme = uri.find(':');
    if (scheme == 0 || scheme == std::string_view::npos || !uri.substr(scheme + 1).starts_with("//"))
        return std::nullopt;
    const std::string_view rest = uri.substr(scheme + 3);
    std::string_view host = rest.substr(0, rest.find_first_of("/?#"));
    if (const std::size_t user = host.find('@'); user != std::string_view::npos) {
        // Some programs end the host at other characters than RFC 3986 does.
        if (!std::ranges::all_of(host.substr(0, user), IsUserInformation))
            return std::nullopt;
        host.remove_prefix(user + 1);
    }
    if (const std::size_t colon = host.find(':'); colon != std::string_view::npos) {
        if (!std::ranges::all_of(host.substr(colon + 1), IsDecimal))
            return std::nullopt;
        host = host.substr(0, colon);
    }
    std::optional<std::string> name = ReadHostName(host);
    // The host must be a fully qualified domain name (RFC 5280, 4.2.1.10). No top domain begins with a digit, but some programs
    // take "0x7f.1" or "127.1" for an address.
    if (!name || name->find('.') == std::string::npos || IsDecimal((*name)[name->rfind('.') + 1]))
        return std::nullopt;
    return name;
}

std::optional<std::vector<std::uint8_t>> ReadIpAddress(std::string_view text)
{
    return text.find(':') == std::string_view::npos ? ReadIp4Address(text) : ReadIp6Address(text);
}

bool IsConformingName(const GeneralName& name)
{
    const std::string_view text = name.value.view();
    switch (name.kind) {
    case GeneralName::Kind::email:
        return ReadMailbox(text).has_value();
    case GeneralName::Kind::dns:
        return IsPreferredName(text.starts_with("*.") ? text.substr(2) : text);
    case GeneralName::Kind::uri:
        return IsAbsoluteUri(text);
    case GeneralName::Kind::ipAddress:
        return text.size() == 4 || text.size() == 16;
    case GeneralName::Kind::directory:
        return text.size() > 2;
    default:
        return !text.empty();
    }
}

CCryptoString GeneralNameText(const GeneralName& name)
{
    const CCryptoString text = TextOf(name);
    CCryptoString shown(KindText(name.kind));
    if (!text.isEmpty()) {
        shown += " ";
        shown.append(text.view().substr(0, maxShownName));
        if (text.length() > maxShownName)
            shown += "...";
    }
    return shown;
}

} // namespace ccrypto
