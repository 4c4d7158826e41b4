#pragma once

#include "asn1/tree/item_list.h"
#include "core/text/element.h"
#include "core/text/string.h"

#include <cstdint>

namespace ccrypto {

/// What the parsers of JSON and XML share: the tokens of a text, of which one is read ahead, a count of the nodes made of them, and
/// the reason of a failure. Operations that return false have set the reason.
template <typename Lexer>
class TokenReader {
protected:
    TokenReader() = default;
    ~TokenReader() = default;

    /// Reads the first token. \param lexer not owned; must outlive the parse.
    bool start(Lexer& lexer)
    {
        lexer_ = &lexer;
        itemsLeft_ = maxItems;
        return advance();
    }

    bool advance()
    {
        if (lexer_->scan(lookAhead_))
            return true;
        reason_ = lexer_->cursor().reason();
        return false;
    }

    /// \return false when the text holds more than `maxItems`.
    bool countItem()
    {
        itemsLeft_ -= itemsLeft_ != 0 ? 1 : 0;
        return itemsLeft_ != 0 || fail(tooManyItems);
    }

    /// The token read ahead is not expected here. \return false.
    bool unexpected()
    {
        reason_ = lexer_->cursor().notExpected(lookAhead_);
        return false;
    }

    /// Keeps the message with the place of that token. \return false.
    bool fail(const CCryptoString& message)
    {
        reason_ = lexer_->cursor().withPlace(message);
        return false;
    }

    Lexer* lexer_ = nullptr;
    element lookAhead_;
    std::uint32_t itemsLeft_ = 0;
    CCryptoString reason_;
};

} // namespace ccrypto
