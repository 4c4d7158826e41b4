#pragma once

#include "tools/cryptotool/cli/invocation.h"
#include "tools/cryptotool/sums/file_digests.h"
#include "tools/cryptotool/sums/sum_line.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace ccrypto {

/// Checks the files that lists of sums name. "#" begins a comment; empty lines are ignored.
class HashCheck {
public:
    HashCheck(Invocation& invocation, FileDigests& digests, SumOutput& output);

    /// \return false only when the output cannot be written.
    [[nodiscard]] bool list(const std::string& list);
    /// After the last list: what JSON ends with, and the summary on standard error. \return false as above.
    [[nodiscard]] bool finish();
    int code() const { return code_; }

private:
    enum class Finding { right, wrong, missing, unreadable };

    bool isOurs(const SumLine& sum) const;
    Finding find(const SumLine& sum, std::string& reason);
    bool line(const SumLine& sum);
    bool report(const std::string& file, Finding finding);
    std::string summary() const;

    Invocation& invocation_;
    FileDigests& digests_;
    SumOutput& output_;
    bool isJson_;
    bool ignoresMissing_;
    std::size_t counts_[4] = {}; ///< by Finding
    std::size_t malformed_ = 0;  ///< lines
    std::size_t reported_ = 0;
    int code_ = exitDone;
};

} // namespace ccrypto
