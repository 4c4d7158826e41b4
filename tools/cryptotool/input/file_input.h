#pragma once

#include "core/text/element.h"
#include "tools/cryptotool/cli/console.h"
#include "tools/cryptotool/cli/host.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>

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

/// Hands a file, or standard input for "-", to `take` piece by piece, with a progress bar where it takes long. \return false with
/// `reason`.
bool StreamFile(Console& console, const std::string& name, const std::function<void(std::span<const std::uint8_t>)>& take,
                std::string& reason);

} // namespace ccrypto
