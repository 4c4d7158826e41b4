#pragma once

#include "core/text/string.h"
#include "pki/x509/x509_value.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace ccrypto {

/// A distinguished name in the form in which names are compared (RFC 5280, 7.1): case is folded and blanks are compressed in
/// the values that are PrintableString, UTF8String, TeletexString, BMPString, UniversalString or IA5String; other values are their
/// octets. Two names are the same when these are equal. The values of one relative name may come in any order.
///
/// Text is prepared by RFC 4518, 2.2 and 2.6, without normalisation: an accented letter and the letter with a combining accent are
/// different. Controls, soft hyphens, zero-width characters and marks of direction are left out; all separators of Unicode are
/// blanks. Case is folded in Latin (Latin-1, Extended-A and Extended Additional, full-width), Greek, Cyrillic and Armenian letters;
/// sharp s is "ss".
class ComparableName {
public:
    ComparableName() = default;
    /// \param der the SEQUENCE of the name. \return none for what is not a name.
    [[nodiscard]] static std::optional<ComparableName> Read(std::span<const std::uint8_t> der);

    [[nodiscard]] bool isEmpty() const { return relativeNames_.empty(); }
    /// Whether the first relative names are those of `base` (RFC 5280, 4.2.1.10).
    [[nodiscard]] bool isWithin(const ComparableName& base) const;
    bool operator==(const ComparableName& other) const = default;
    auto operator<=>(const ComparableName& other) const = default;

private:
    std::vector<std::string> relativeNames_;
};

/// A name as text: "CN=Signer, O=Example, C=FI": the last relative name first, values of one relative name joined by "+", short
/// names of RFC 4514 and the usual others, dotted OIDs with "#" and hexadecimal digits for what is not text. Escaped as RFC 4514,
/// 2.4, says; control characters and those that change the direction of text are escaped, too.
[[nodiscard]] CCryptoString NameText(const CCrypto_X509_ValueList& name);
/// \param der the SEQUENCE of the name. Empty for what is not a name, and for the empty name.
[[nodiscard]] CCryptoString NameText(std::span<const std::uint8_t> der);

/// The twelve attributes that the name builder knows. Empty ones add nothing.
struct NameStrings {
    CCryptoString country = {};
    CCryptoString state = {};
    CCryptoString locality = {};
    CCryptoString serialNumber = {};
    CCryptoString organisation = {};
    CCryptoString organisationalUnit = {};
    CCryptoString surname = {};
    CCryptoString givenName = {};
    CCryptoString email = {};
    CCryptoString commonName = {};
    CCryptoString title = {};
    CCryptoString pseudonym = {};
};

/// The attributes in the fixed order country, state, locality, organisation, organisational unit, pseudonym, title, serial
/// number, given name, surname, e-mail, common name; each is a relative name. \return false, logged, `name` empty, for a text that
/// no string type holds.
[[nodiscard]] bool BuildName(const NameStrings& strings, CCrypto_X509_ValueList& name);

/// \param typeWord "UTF8String", …; empty: a text with "@" is an IA5String, one of printable characters a PrintableString, any
/// other a UTF8String. \return false, logged, for a text that the type does not hold.
[[nodiscard]] bool AddTextAttribute(CCrypto_X509_ValueList& name, const Oid& oid, const CCryptoString& text,
                                    std::string_view typeWord = {});

} // namespace ccrypto
