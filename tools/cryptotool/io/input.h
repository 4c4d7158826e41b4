#pragma once

#include "asn1/der/pem.h"
#include "core/text/element.h"
#include "tools/cryptotool/cli/console.h"
#include "tools/cryptotool/cli/host.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ccrypto {

/// What is read into memory as a whole is refused beyond this many bytes.
constexpr std::uint64_t maxInput = std::uint64_t{256} << 20;

/// A file, or standard input for "-", from front to back.
class InputStream {
public:
    explicit InputStream(Console& console) : console_(console) {}

    /// \return false with reason() set.
    bool open(const std::string& name);
    /// \return how many bytes came, 0 at the end; -1 with reason() set.
    std::int64_t read(std::span<std::uint8_t> target);
    /// -1 when it is not known beforehand.
    std::int64_t size() const { return isConsole_ ? -1 : file_.size(); }
    const std::string& reason() const { return reason_; }

private:
    Console& console_;
    SequentialFile file_;
    bool isConsole_ = false;
    std::string reason_;
};

/// The whole of a file or of standard input. \return false with `reason`.
bool ReadWhole(Console& console, const std::string& name, element& bytes, std::string& reason);

/// Whether there are no control characters but those of plain text: DER has others within its first bytes.
bool IsText(std::string_view bytes);
/// Text of UTF-8 without the mark that some programs put in front of it.
std::string_view WithoutByteOrderMark(std::string_view text);

/// The DER of an input: every block of PEM, the bytes of base64 or hexadecimal text, or the bytes unchanged. \return false with
/// `reason`.
bool ReadBlocks(Console& console, const std::string& name, std::vector<DataBlock>& blocks, std::string& reason);

/// The same for bytes at hand, which are taken over.
bool SplitBlocks(element bytes, std::vector<DataBlock>& blocks, std::string& reason);

} // namespace ccrypto
