#pragma once

#include "core/text/element.h"
#include "tests/crypto/base/vector_file.h"

#include <initializer_list>
#include <memory>
#include <random>

// The bytes of the tests as the library takes and gives them.

namespace ccrypto {

inline element ElementOf(const Bytes& bytes)
{
    return element(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

inline Bytes BytesOf(const element& value)
{
    return {value.data(), value.data() + value.length()};
}

inline Bytes Joined(std::initializer_list<Bytes> parts)
{
    Bytes all;
    for (const Bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

inline std::string HexOf(const element& value)
{
    return Hex(BytesOf(value));
}

/// Ends the life of an object and says whether its memory still holds the bytes. The object came of `new`.
template <typename Object>
bool HoldsAfterItsEnd(std::unique_ptr<Object> object, const Bytes& bytes)
{
    Object* const place = object.release();
    std::destroy_at(place);
    const bool holds = Holds(*place, Hex(bytes));
    ::operator delete(place);
    return holds;
}

/// The same for the same state of the engine, on every machine.
inline Bytes RandomBytes(std::mt19937& random, std::size_t length)
{
    Bytes bytes(length);
    for (std::uint8_t& byte : bytes)
        byte = static_cast<std::uint8_t>(random());
    return bytes;
}

} // namespace ccrypto
