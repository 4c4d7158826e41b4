#include "tests/crypto/base/vector_file.h"

#include <gtest/gtest.h>

#include <fstream>

using namespace ccrypto;

namespace {

std::string Trimmed(const std::string& text)
{
    const std::size_t first = text.find_first_not_of(" \t\r");
    return first == std::string::npos ? std::string{} : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

Bytes FromHex(const std::string& text, const std::string& place)
{
    Bytes bytes;
    EXPECT_EQ(text.size() % 2, 0u) << place << ": half a byte";
    for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
        EXPECT_TRUE(std::isxdigit(static_cast<unsigned char>(text[i])) && std::isxdigit(static_cast<unsigned char>(text[i + 1])))
            << place << ": not hexadecimal: " << text;
        bytes.push_back(static_cast<std::uint8_t>(std::strtoul(text.substr(i, 2).c_str(), nullptr, 16)));
    }
    return bytes;
}

} // namespace

namespace ccrypto {

std::string TestVector::text(const std::string& name) const
{
    const auto found = fields_.find(name);
    if (found == fields_.end()) {
        ADD_FAILURE() << place_ << ": has no " << name;
        return {};
    }
    return found->second;
}

Bytes TestVector::bytes(const std::string& name) const
{
    std::string value = text(name);
    std::size_t times = 1;
    if (const std::size_t repeat = value.rfind(" x "); repeat != std::string::npos) {
        times = std::stoul(value.substr(repeat + 3));
        value = Trimmed(value.substr(0, repeat));
    }
    const bool quoted = value.size() >= 2 && value.front() == '"' && value.back() == '"';
    const Bytes once = quoted ? Bytes(value.begin() + 1, value.end() - 1) : FromHex(value, place_);
    Bytes all;
    all.reserve(once.size() * times);
    for (std::size_t i = 0; i < times; ++i)
        all.insert(all.end(), once.begin(), once.end());
    return all;
}

std::uint64_t TestVector::number(const std::string& name) const
{
    return std::stoull(text(name));
}

std::vector<TestVector> ReadVectors(const std::string& file)
{
    std::ifstream stream(std::string(VECTOR_DIR) + "/" + file);
    EXPECT_TRUE(stream.is_open()) << file;
    std::vector<TestVector> vectors;
    std::map<std::string, std::string> section;
    TestVector next;
    const auto end = [&] {
        if (!next.fields_.empty()) {
            next.fields_.insert(section.begin(), section.end());
            vectors.push_back(std::move(next));
        }
        next = TestVector();
    };

    std::string line;
    for (std::size_t number = 1; std::getline(stream, line); ++number) {
        line = Trimmed(line);
        const std::string place = file + ":" + std::to_string(number);
        if (line.empty()) {
            end();
            continue;
        }
        if (line.front() == '#')
            continue;
        const bool whole = line.front() == '[' && line.back() == ']';
        if (whole) {
            end();
            line = line.substr(1, line.size() - 2);
        }
        const std::size_t equals = line.find('=');
        if (equals == std::string::npos) {
            ADD_FAILURE() << place << ": not understood: " << line;
            continue;
        }
        if (!whole && next.fields_.empty())
            next.place_ = place;
        (whole ? section : next.fields_)[Trimmed(line.substr(0, equals))] = Trimmed(line.substr(equals + 1));
    }
    end();
    EXPECT_FALSE(vectors.empty()) << file << " holds no vector";
    return vectors;
}

std::string Hex(const Bytes& bytes)
{
    std::string text;
    for (const std::uint8_t byte : bytes) {
        constexpr char digits[] = "0123456789abcdef";
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

} // namespace ccrypto
