#pragma once

#include "pki/pkcs12/pkcs12.h"
#include "tests/pki/test_der.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

// Files of PKCS#12 made by hand.

namespace ccrypto {

inline CCryptoPKCS12::PasswordSource Secret(const std::string& text)
{
    return [text](element& password) {
        password = element(text.data(), static_cast<std::uint32_t>(text.size()));
        return true;
    };
}

inline Bytes ContentInfo(std::string_view type, const Bytes& content)
{
    return Tlv(der::sequence, {OidTlv(type), Tlv(der::Context(0), content)});
}

inline Bytes DataInfo(const Bytes& octets)
{
    return ContentInfo("1.2.840.113549.1.7.1", Tlv(der::octetString, octets));
}

inline Bytes PlainFile(const Bytes& bags, std::uint8_t version = 3)
{
    return Tlv(der::sequence,
               {Tlv(der::integer, Bytes{version}), DataInfo(Tlv(der::sequence, DataInfo(Tlv(der::sequence, bags))))});
}

inline Bytes StoreBag(std::string_view type, const Bytes& value, const Bytes& attributes = {})
{
    return Tlv(der::sequence, {OidTlv("1.2.840.113549.1.12.10.1." + std::string(type)), Tlv(der::Context(0), value),
                               attributes.empty() ? Bytes() : Tlv(der::set, attributes)});
}

inline Bytes StoreAttribute(std::string_view type, const Bytes& value)
{
    return Tlv(der::sequence, {OidTlv(type), Tlv(der::set, value)});
}

inline Bytes SecretBagOf(std::uint8_t octet)
{
    return StoreBag("5", Tlv(der::sequence, {OidTlv("1.2.3"), Tlv(der::Context(0), Tlv(der::octetString, Bytes{octet}))}));
}

inline Bytes StoreCertificate(const Bytes& certificate, const Bytes& attributes = {})
{
    return StoreBag(
        "3", Tlv(der::sequence, {OidTlv("1.2.840.113549.1.9.22.1"), Tlv(der::Context(0), Tlv(der::octetString, certificate))}),
        attributes);
}

inline Bytes KeyId(const Bytes& octets)
{
    return StoreAttribute("1.2.840.113549.1.9.21", Tlv(der::octetString, octets));
}

/// A key that asks for this many iterations.
inline Bytes CostlyKey(std::uint32_t iterations, const Bytes& attributes = {})
{
    const Bytes number = {static_cast<std::uint8_t>(iterations >> 24), static_cast<std::uint8_t>(iterations >> 16),
                          static_cast<std::uint8_t>(iterations >> 8), static_cast<std::uint8_t>(iterations)};
    const Bytes how =
        Tlv(der::sequence, {OidTlv("1.2.840.113549.1.12.1.1"),
                            Tlv(der::sequence, {Tlv(der::octetString, TextBytes("saltsalt")), Tlv(der::integer, number)})});
    return StoreBag("2", Tlv(der::sequence, {how, Tlv(der::octetString, TextBytes("x"))}), attributes);
}

inline PKCS12Outcome OutcomeOf(const Bytes& file, const std::string& password = "secret")
{
    CCryptoPKCS12 store;
    const bool isLoaded = store.Load(file, Secret(password));
    EXPECT_EQ(isLoaded, store.outcome() == PKCS12Outcome::opened);
    EXPECT_TRUE(isLoaded || store.bags().empty());
    return store.outcome();
}

} // namespace ccrypto
