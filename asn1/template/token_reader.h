#pragma once

#include "asn1/template/lexical_analyzer.h"
#include "core/text/string.h"

#include <cstdint>

namespace ccrypto {

/// What the parsers of JSON and XML share: the tokens of a text, of which one is read ahead, a count of the nodes made of them, and
/// the reason of a failure. Operations that return false have set the reason.
class CTokenReader {
protected:
    CTokenReader() = default;
    ~CTokenReader() = default;

    /// Reads the first token. \param lexer not owned; lasts as long as the parse.
    bool start(CCryptoLexicalAnalyzer& lexer);
    bool advance();
    /// \return false when the text holds more than an input may.
    bool countItem();
    /// The token read ahead has no place here. \return false.
    bool unexpected();
    /// Keeps the message with the place of that token. \return false.
    bool fail(const CCryptoString& message);

    CCryptoLexicalAnalyzer* lexer_ = nullptr;
    element lookAhead_;
    std::uint32_t itemsLeft_ = 0;
    CCryptoString reason_;
};

} // namespace ccrypto
