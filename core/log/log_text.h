#pragma once

#include <cstdarg>
#include <cstddef>
#include <string_view>

namespace ccrypto {

/// Bytes of one text of the log, terminator included. A longer text is not cut: its writer puts a fixed text in its place.
constexpr std::size_t logTextLimit = 1024;

/// A text of the log built from pieces, in storage of its own, so that threads never share a buffer.
class LogText {
public:
    LogText() { bytes_[0] = '\0'; }

    /// \return false, the text unchanged, when the piece does not fit or cannot be formatted.
    bool append(std::string_view piece);
    [[nodiscard]] bool appendFormatted(const char* format, std::va_list arguments);

    const char* c_str() const { return bytes_; }
    std::string_view view() const { return {bytes_, length_}; }
    std::size_t length() const { return length_; }

private:
    std::size_t length_ = 0;
    char bytes_[logTextLimit];
};

} // namespace ccrypto
