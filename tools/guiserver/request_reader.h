#pragma once

#include "core/text/element.h"
#include "ipc/gui_request.h"
#include "ipc/pipe_request_data.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ccrypto {

/// One item as it was received. The bytes of a secret are not kept; those of an item that was meant as one, and stood in the wrong
/// place, are wiped with it.
struct ReceivedItem {
    enum class Kind { integer, text, bytes, secret, empty };

    std::string name;
    Kind kind = Kind::empty;
    std::uint32_t integer = 0;
    element bytes;            ///< of a text, without its terminator
    std::uint32_t length = 0; ///< of the payload
};

/// A request taken apart, with the names its table row gives to the items.
struct ReceivedRequest {
    std::uint32_t type = 0;
    std::int32_t status = 0;
    const GuiRequest* known = nullptr; ///< null for a number that is not an operation
    std::vector<ReceivedItem> items;
    bool wellFormed = false; ///< the items are those of the table, not too many, and nothing is left; false for an unknown type
    std::string files;       ///< of a request with file names, "*" between them
    std::string body;        ///< as it was received, every byte of a secret an 'x'
};

/// Takes apart the message just received. Any bytes are survived; of more than 100016 items the first ones are kept.
ReceivedRequest ReadGuiRequest(CCryptoPipeRequestData& message);

} // namespace ccrypto
