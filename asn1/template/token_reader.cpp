#include "asn1/template/token_reader.h"

#include "asn1/template/syntax_error.h"
#include "asn1/tree/item_list.h"

namespace ccrypto {

bool CTokenReader::start(CCryptoLexicalAnalyzer& lexer)
{
    lexer_ = &lexer;
    itemsLeft_ = mostItems;
    return advance();
}

bool CTokenReader::advance()
{
    if (lexer_->scan(lookAhead_))
        return true;
    reason_ = lexer_->reason();
    return false;
}

bool CTokenReader::countItem()
{
    itemsLeft_ -= itemsLeft_ != 0 ? 1 : 0;
    return itemsLeft_ != 0 || fail(tooManyItems);
}

bool CTokenReader::unexpected()
{
    reason_ = NotExpected(*lexer_, lookAhead_);
    return false;
}

bool CTokenReader::fail(const CCryptoString& message)
{
    reason_ = AtPlaceOf(*lexer_, message);
    return false;
}

} // namespace ccrypto
