#pragma once

#include "tools/guiserver/request_reader.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ccrypto {

/// What the stand-in answered: items by name, the bytes of a secret not among them.
struct GivenAnswer {
    std::int32_t status = 0;
    bool sent = false; ///< false where the operation reads no reply
    std::vector<ReceivedItem> items;
};

/// A block for people: a headline, the items and file names one a line and indented, the answer. UTF-8; bytes that could
/// steer a terminal, or are not UTF-8, are written as \xNN.
std::string DescribeAsText(std::uint32_t number, const ReceivedRequest& request, const GivenAnswer& answer, bool hex);

/// The same as one line of JSON. Half a surrogate pair, which a Windows file name may hold, is written as its \uNNNN; another byte
/// that is not UTF-8 as \u00NN.
std::string DescribeAsJson(std::uint32_t number, const ReceivedRequest& request, const GivenAnswer& answer, bool hex);

/// A line, as JSON or text, that withdraws the answer reported for request `number`.
std::string DescribeLostAnswer(std::uint32_t number, bool json);

} // namespace ccrypto
