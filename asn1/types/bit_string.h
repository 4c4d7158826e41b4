#pragma once

#include "asn1/types/asn1_object.h"

#include <cstdint>

namespace ccrypto {

/// A BIT STRING (X.690, 8.6). Bit 0 is the most significant bit of the first byte.
class bitString : public CCryptoASN1Object {
public:
    bitString();
    explicit bitString(const elementNode* node);
    /// \param unusedBits the number of unused low bits in the last byte, 0 to 7.
    bitString(const element& bits, std::uint32_t unusedBits);

    bool BuildNode() override;
    /// False, as BuildNode, when more than seven bits are unused, or any of no bits.
    bool ParseNode() override;

    /// Grows the buffer to the byte that holds the bit; new bits are clear. An unused bit, and those before it, become used.
    void SetBit(std::uint32_t bit, bool value);
    /// False past the end.
    bool GetBit(std::uint32_t bit) const;

    const element& bits() const { return bits_; }
    std::uint32_t unusedBits() const { return unusedBits_; }

protected:
    void ClearFields() override;

private:
    element bits_;
    std::uint32_t unusedBits_ = 0;
};

} // namespace ccrypto
