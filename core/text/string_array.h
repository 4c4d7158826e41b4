#pragma once

#include "core/containers/array.h"
#include "core/text/string.h"

#include <string_view>

/// An ordered array of strings, made by splitting one.
class CCryptoStringArray : public CCryptoArray<CCryptoString> {
public:
    CCryptoStringArray() = default;
    /// The parts of `text` between the separators, in order. Text without a separator is one part, empty text is none; an empty
    /// separator splits nothing.
    /// \param separator not a null pointer. \param skipEmpty leaves out empty parts. \param trim takes blanks, tabs and line ends
    /// off both ends of each part, first.
    CCryptoStringArray(const CCryptoString& text, std::string_view separator, bool skipEmpty, bool trim);

    /// The strings with `separator` between them.
    [[nodiscard]] CCryptoString join(std::string_view separator) const;
};
