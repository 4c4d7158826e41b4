#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace ccrypto {

using Bytes = std::vector<std::uint8_t>;

/// One test vector: what its lines, and the lines of the section it stands in, give names to.
class TestVector {
public:
    /// Where it stands: "sha256.txt:17".
    const std::string& place() const { return place_; }
    bool has(const std::string& name) const { return fields_.contains(name); }
    /// The text after "name ="; a missing name fails the test and gives empty text.
    std::string text(const std::string& name) const;
    /// Hexadecimal digits, quoted text ("abc"), "" for nothing, or either of them repeated: "61 x 1000000".
    Bytes bytes(const std::string& name) const;
    /// Decimal.
    std::uint64_t number(const std::string& name) const;
    /// The word "valid" or "invalid".
    bool valid(const std::string& name = "Result") const { return text(name) == "valid"; }

private:
    friend std::vector<TestVector> ReadVectors(const std::string& file);

    std::string place_;
    std::map<std::string, std::string> fields_;
};

/// The vectors of FILE, of the folder of the test program (tests/data/crypto or pki). A line is "name = value"; "#" begins a
/// comment, and the first one of a file names the source of its figures; a blank line ends a vector. A line "[name = value]" holds
/// for all vectors that follow, until the same name is set again. A file that is missing, has no vector or a line that is none of
/// these fails the test.
std::vector<TestVector> ReadVectors(const std::string& file);

std::string Hex(const Bytes& bytes);

/// Whether these bytes, in hexadecimal digits, stand anywhere in the object itself.
template <typename Object>
bool Holds(const Object& object, const std::string& digits)
{
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(&object);
    return Hex(Bytes(bytes, bytes + sizeof object)).find(digits) != std::string::npos;
}

} // namespace ccrypto
