#include "crypto/ec/ecdsa_signature.h"

#include "core/diagnostics/auto_logger.h"

#include <algorithm>

namespace ccrypto {

namespace {

constexpr std::uint8_t sequenceTag = 0x30;
constexpr std::uint8_t integerTag = 0x02;
constexpr std::size_t maxNumberBytes = 72;

using Bytes = std::span<const std::uint8_t>;

/// An INTEGER of these big-endian bytes.
void AppendInteger(element& target, Bytes number)
{
    while (number.size() > 1 && number.front() == 0)
        number = number.subspan(1);
    const bool looksNegative = number.front() >= 0x80;
    target.append(integerTag);
    target.append(static_cast<std::uint8_t>(number.size() + (looksNegative ? 1 : 0)));
    if (looksNegative)
        target.append(std::uint8_t{0});
    target.append(number.data(), static_cast<std::uint32_t>(number.size()));
}

/// Takes a tag and its length off `der`, in the one form DER has for lengths below 256. \return false when it is another.
bool TakeHeader(Bytes& der, std::uint8_t tag, std::size_t& length)
{
    if (der.size() < 2 || der[0] != tag)
        return false;
    length = der[1];
    std::size_t header = 2;
    if (length == 0x81 && der.size() >= 3 && der[2] >= 0x80) {
        length = der[2];
        header = 3;
    } else if (length >= 0x80) {
        return false;
    }
    der = der.subspan(header);
    return length <= der.size();
}

/// Takes an INTEGER that is not negative off `der` and appends it in `length` bytes.
bool TakeInteger(Bytes& der, element& target, std::size_t length)
{
    std::size_t size = 0;
    if (!TakeHeader(der, integerTag, size) || size == 0 || der[0] >= 0x80)
        return false;
    Bytes number = der.first(size);
    der = der.subspan(size);
    if (number[0] == 0 && size > 1) {
        if (number[1] < 0x80)
            return false;
        number = number.subspan(1);
    }
    if (number.size() > length)
        return false;
    target.resize(static_cast<std::uint32_t>(target.length() + length - number.size()));
    target.append(number.data(), static_cast<std::uint32_t>(number.size()));
    return true;
}

} // namespace

element EcdsaPairToDer(Bytes pair)
{
    CCryptoAutoLogger logger("EcdsaPairToDer");
    if (pair.empty() || pair.size() % 2 != 0 || pair.size() > 2 * maxNumberBytes)
        return logger.fail(element(), "A signature of %zu bytes is no pair", pair.size());

    element body;
    AppendInteger(body, pair.first(pair.size() / 2));
    AppendInteger(body, pair.subspan(pair.size() / 2));
    element der;
    der.append(sequenceTag);
    if (body.length() >= 0x80)
        der.append(std::uint8_t{0x81});
    der.append(static_cast<std::uint8_t>(body.length()));
    der.append(body.data(), body.length());
    logger.setResult(true);
    return der;
}

element EcdsaDerToPair(Bytes der, std::uint32_t length)
{
    CCryptoAutoLogger logger("EcdsaDerToPair");
    element pair;
    std::size_t size = 0;
    if (length > maxNumberBytes || !TakeHeader(der, sequenceTag, size) || size != der.size() || !TakeInteger(der, pair, length) ||
        !TakeInteger(der, pair, length) || !der.empty())
        return logger.fail(element(), "Signature is not the DER of two numbers of the order's length");
    logger.setResult(true);
    return pair;
}

element SignaturePair(Bytes signature, SignatureForm form, std::uint32_t length)
{
    CCryptoAutoLogger logger("SignaturePair");
    if (form == SignatureForm::der) {
        element pair = EcdsaDerToPair(signature, length);
        logger.setResult(!pair.isEmpty());
        return pair;
    }
    if (signature.size() != std::size_t{2} * length)
        return logger.fail(element(), "A pair has %u bytes, not %zu", 2 * length, signature.size());
    logger.setResult(true);
    return element(signature.data(), 2 * length);
}

} // namespace ccrypto
