#include "tests/pki/validation/test_names.h"

#include "tests/pki/x509/der_text.h"

#include <gtest/gtest.h>

namespace ccrypto {

GeneralName TestGeneralName(std::string_view text)
{
    using enum GeneralName::Kind;
    struct Word {
        std::string_view word;
        GeneralName::Kind kind;
    };
    constexpr Word words[] = {{"dns:", dns},          {"email:", email},      {"uri:", uri},
                              {"dir:", directory},    {"ip:", ipAddress},     {"other:", otherName},
                              {"x400:", x400Address}, {"edi:", ediPartyName}, {"id:", registeredId}};
    for (const auto& [word, kind] : words) {
        if (!text.starts_with(word))
            continue;
        const std::string_view rest = text.substr(word.size());
        if (kind == directory)
            return {kind, ElementOf(TestName(rest))};
        return {kind, kind == ipAddress ? ElementOf(DerOf(rest)) : element(rest)};
    }
    ADD_FAILURE() << "not a name: " << text;
    return {};
}

GeneralNames TestGeneralNames(std::initializer_list<std::string_view> texts)
{
    GeneralNames names;
    for (const std::string_view text : texts)
        names.push_back(TestGeneralName(text));
    return names;
}

} // namespace ccrypto
