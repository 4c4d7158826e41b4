#pragma once

#include "core/log/log_text.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ccrypto {

/// Bytes of an application tag; what is longer is cut.
constexpr std::size_t maxLogTag = 19;

/// What stands before the text of a line.
struct LogLineHead {
    /// The elapsed time of an operation that ends; empty for all other lines.
    std::string_view timingPrefix;
    /// The application tag.
    std::string_view tag;
    /// One "-" for each level of nesting, 30 at most.
    std::uint32_t depth = 0;
    /// The time is written without the date, or is the timing prefix where there is one.
    bool profiling = false;
};

/// One finished line of the log: time, process and thread id, tag, indentation, text.
///
///     2021-05-25 13:45:07:042 1A2C 0F30 pdfmenuhandler --CCryptoPipeClient::OpenPipe - IN
///
/// A line stays one line whatever its text holds, file names and answers of a peer among it: control characters other than the tab
/// are written visibly, "\n" and "\r" by name, others as "\x1b", and so are the line ends of Unicode (U+0085, U+2028 and U+2029 as
/// "\u2028"). All other bytes stand as they are, a backslash too.
class LogLine {
public:
    /// \param text at most logTextLimit; what is longer is cut.
    LogLine(const LogLineHead& head, std::string_view text);
    LogLine(const LogLine&) = delete;
    LogLine& operator=(const LogLine&) = delete;

    /// Without a line end.
    const char* c_str() const { return bytes_; }
    /// With "\n" at the end, which takes the terminator's place: c_str() is no longer of use.
    std::string_view withLineEnd();

private:
    void add(std::string_view bytes);
    void addTime(const LogLineHead& head);
    void addVisibly(std::string_view text);

    /// No byte of a text becomes more than 4.
    static constexpr std::size_t capacity = 128 + 4 * logTextLimit;

    std::size_t length_ = 0;
    char bytes_[capacity];
};

} // namespace ccrypto
