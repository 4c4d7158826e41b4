#pragma once

#include "crypto/hash/hash.h"
#include "tools/cryptotool/cli/console.h"

#include <cstddef>
#include <string>

namespace ccrypto {

/// The digests of files, of which standard input can be one, once.
class FileDigests {
public:
    FileDigests(Console& console, ICryptoHash& hash) : console_(console), hash_(hash) {}

    /// The digest in lower-case digits. \return false with `reason`.
    bool digest(const std::string& file, std::string& digits, std::string& reason);
    /// \return false, with `reason`, when `file` is standard input for a second time.
    bool isReadOnce(const std::string& file, std::string& reason);
    const char* algorithm() const { return hash_.name(); }
    std::size_t digits() const { return std::size_t{2} * hash_.digestSize(); }

private:
    Console& console_;
    ICryptoHash& hash_;
    bool hasReadStandardInput_ = false;
};

} // namespace ccrypto
