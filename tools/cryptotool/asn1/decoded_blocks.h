#pragma once

#include "asn1/der/pem.h"
#include "asn1/parser/parser.h"
#include "tools/cryptotool/cli/invocation.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace ccrypto {

/// One block of an input and the tree decoded from it.
struct DecodedBlock {
    DataBlock data;
    CCryptoParser tree;
    std::string problem; ///< why there is no tree

    const elementNode* root() const { return tree.root(); }
};

/// Whether DER begins with a tag above 30, whose number stands in further octets (X.690, 8.1.2.4). It is read as if it were 31.
bool HasLongTag(std::span<const std::uint8_t> octets);

/// The options "inside" and "lenient" of a call.
DerOptions DecodingOptions(const Arguments& arguments);

/// What becomes of a block that does not decode.
enum class BrokenBlocks { refused, kept };

/// Reads an input and decodes every block of it. A block that is text is never kept. \return false with `reason`.
bool ReadDecoded(Console& console, const std::string& name, const DerOptions& options, BrokenBlocks broken,
                 std::vector<DecodedBlock>& blocks, std::string& reason);

/// All blocks, one at least, as the items of one tree; the blocks' own trees are empty afterwards.
CCryptoParser JoinBlocks(std::vector<DecodedBlock>& blocks);

/// "PEM block 1 (CERTIFICATE): " in front of what is said of one of several blocks. Empty for one block alone.
std::string BlockPrefix(const std::vector<DecodedBlock>& blocks, std::size_t index);
/// "-- CERTIFICATE (1 of 3)" with its line end, in front of each of several blocks; a comment in template text. Empty for one block
/// alone.
std::string BlockHeading(const std::vector<DecodedBlock>& blocks, std::size_t index);
/// The label as JSON, null where there is none.
std::string BlockLabelJson(const DecodedBlock& block);

/// Turns what lies below the first `levels` levels of decoded data back into bytes. The tree encodes to the same DER as before.
void LimitDepth(elementNode* first, std::uint32_t levels);

} // namespace ccrypto
