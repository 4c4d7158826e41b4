// Encrypts a file with a password by AES-256-GCM, or decrypts one that was.
//
//     encrypt_file encrypt|decrypt PASSWORD IN OUT
//
// A real program asks for the password: others can see a command line. The encrypted file is a salt, the initialisation vector, and
// the ciphertext with its tag.

#include "core/core.h"
#include "crypto/crypto.h"

#include <array>
#include <cstdio>

namespace {

using ccrypto::algorithm::Id;

constexpr std::uint32_t saltBytes = 16;
constexpr std::uint32_t ivBytes = 12;
constexpr std::uint32_t iterations = 600'000;

element KeyOf(std::string_view password, std::span<const std::uint8_t> salt)
{
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(password.data()), password.size());
    return CCryptoKeyDerivation::PBKDF2(Id::hmacSha256, bytes, salt, iterations, 32);
}

bool Encrypt(std::string_view password, const element& text, element& sealed)
{
    std::array<std::uint8_t, saltBytes + ivBytes> fresh;
    if (!ICryptoRandom::Instance().generate(fresh))
        return false;
    const auto salt = std::span(fresh).first<saltBytes>();
    const auto iv = std::span(fresh).last<ivBytes>();
    const auto cipher = ICryptoCipher::Create(Id::aes256Gcm);
    element ciphertext;
    if (!cipher->encrypt(KeyOf(password, salt).bytes(), iv, text.bytes(), ciphertext))
        return false;
    sealed = element(fresh.data(), static_cast<std::uint32_t>(fresh.size()));
    sealed.append(ciphertext.data(), ciphertext.length());
    return true;
}

bool Decrypt(std::string_view password, const element& sealed, element& text)
{
    if (sealed.length() < saltBytes + ivBytes)
        return false;
    const auto salt = sealed.bytes().first(saltBytes);
    const auto iv = sealed.bytes().subspan(saltBytes, ivBytes);
    const auto cipher = ICryptoCipher::Create(Id::aes256Gcm);
    return cipher->decrypt(KeyOf(password, salt).bytes(), iv, sealed.bytes().subspan(saltBytes + ivBytes), text);
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 5) {
        std::fputs("usage: encrypt_file encrypt|decrypt PASSWORD IN OUT\n", stderr);
        return 2;
    }
    const std::string_view password = arguments[2];
    CCryptoFile in(CCryptoString(arguments[3]), CCryptoFile::Mode::read);
    element given;
    element made;
    bool good = in.isOpen() && in.Read(0, static_cast<std::uint32_t>(in.Size()), given);
    if (good)
        good = arguments[1] == std::string_view("encrypt") ? Encrypt(password, given, made) : Decrypt(password, given, made);
    CCryptoFile out;
    if (!good || !out.Open(CCryptoString(arguments[4]), CCryptoFile::Mode::write) || !out.Write(made.bytes(), 0)) {
        const ccrypto::Failure failure = ccrypto::LastFailure().value_or(ccrypto::Failure{});
        std::fprintf(stderr, "%s: %s\n", failure.operation.c_str(), failure.text.c_str());
        return 1;
    }
    std::printf("%u bytes\n", made.length());
    return 0;
}
