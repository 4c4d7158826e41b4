#include "tools/cryptotool/pki/name_input.h"

#include "core/base/ascii.h"
#include "core/text/hex.h"
#include "pki/x509/name.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/pki/names.h"

#include <algorithm>
#include <vector>

namespace ccrypto {

namespace {

struct AttributeType {
    std::string_view name;
    std::string_view dotted;
};
constexpr AttributeType attributeTypes[] = {
    {"CN", "2.5.4.3"},
    {"SN", "2.5.4.4"},
    {"serialNumber", "2.5.4.5"},
    {"C", "2.5.4.6"},
    {"L", "2.5.4.7"},
    {"ST", "2.5.4.8"},
    {"STREET", "2.5.4.9"},
    {"O", "2.5.4.10"},
    {"OU", "2.5.4.11"},
    {"title", "2.5.4.12"},
    {"description", "2.5.4.13"},
    {"name", "2.5.4.41"},
    {"GN", "2.5.4.42"},
    {"initials", "2.5.4.43"},
    {"dnQualifier", "2.5.4.46"},
    {"pseudonym", "2.5.4.65"},
    {"organizationIdentifier", "2.5.4.97"},
    {"emailAddress", "1.2.840.113549.1.9.1"},
    {"UID", "0.9.2342.19200300.100.1.1"},
    {"DC", "0.9.2342.19200300.100.1.25"},
};

struct NamePart {
    Oid type;
    std::string text;
    bool joinsNext = false; ///< the next part belongs to the same relative name
};

/// Reads parts off the front of a text.
class NameReader {
public:
    explicit NameReader(std::string_view text) : rest_(text) {}

    bool atEnd() const { return rest_.empty(); }

    bool read(NamePart& part, std::string& problem)
    {
        const std::size_t equals = rest_.find('=');
        const std::string_view word = Trimmed(rest_.substr(0, equals));
        const auto known =
            std::ranges::find_if(attributeTypes, [=](const AttributeType& row) { return SameInAnyCase(row.name, word); });
        part.type = OidOf(known != std::end(attributeTypes) ? known->dotted : word);
        if (equals == std::string_view::npos || part.type.isNone()) {
            problem = "not an attribute of a name: " + std::string(Trimmed(rest_));
            return false;
        }
        rest_.remove_prefix(equals + 1);
        while (!rest_.empty() && IsBlank(rest_.front()))
            rest_.remove_prefix(1);
        if (readValue(part))
            return true;
        problem = "an escape in a name is broken";
        return false;
    }

private:
    static std::string_view Trimmed(std::string_view text)
    {
        while (!text.empty() && IsBlank(text.front()))
            text.remove_prefix(1);
        while (!text.empty() && IsBlank(text.back()))
            text.remove_suffix(1);
        return text;
    }

    /// To the separator after it, which is taken too.
    bool readValue(NamePart& part)
    {
        std::size_t length = 0; // up to the last character that is not a bare blank
        while (!rest_.empty() && rest_.front() != ',' && rest_.front() != '+') {
            const bool isEscape = rest_.front() == '\\';
            if (isEscape ? !readEscape(part.text) : !takeCharacter(part.text))
                return false;
            if (isEscape || !IsBlank(part.text.back()))
                length = part.text.size();
        }
        part.text.resize(length);
        part.joinsNext = !rest_.empty() && rest_.front() == '+';
        rest_.remove_prefix(rest_.empty() ? 0 : 1);
        return true;
    }

    bool takeCharacter(std::string& text)
    {
        text += rest_.front();
        rest_.remove_prefix(1);
        return true;
    }

    bool readEscape(std::string& text)
    {
        rest_.remove_prefix(1);
        std::uint8_t byte = 0;
        if (rest_.size() >= 2 && HexByte(rest_.substr(0, 2), byte)) {
            text += static_cast<char>(byte);
            rest_.remove_prefix(2);
            return true;
        }
        return !rest_.empty() && takeCharacter(text);
    }

    std::string_view rest_;
};

} // namespace

bool ParseNameText(std::string_view text, CCrypto_X509_ValueList& name, std::string& problem)
{
    name.clear();
    NameReader reader(text);
    std::vector<NamePart> parts;
    while (!reader.atEnd())
        if (!reader.read(parts.emplace_back(), problem))
            return false;
    // The last relative name is written first; its values, whose order does not count, are written backwards as well.
    for (auto part = parts.rbegin(); part != parts.rend(); ++part) {
        StartReason();
        if (!AddTextAttribute(name, part->type, CCryptoString(std::string_view(part->text)))) {
            problem = LastReason("the name cannot be written");
            return false;
        }
        const std::size_t count = name.values().size();
        if (part->joinsNext && count > 1)
            name.values().back()->setRelativeName(name.values()[count - 2]->relativeName());
    }
    return true;
}

} // namespace ccrypto
