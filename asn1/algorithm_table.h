#pragma once

#include <cstdint>
#include <span>
#include <string_view>

/// The library's own numbers for algorithms, on which other code switches. They are fixed: there is none for SHA-384 with RSA nor
/// for ECDSA with SHA-224.
namespace algorithm {

enum Id : std::uint32_t {
    none = 0,
    pkcs12Sha1Rc4_128 = 1,
    pkcs12Sha1Rc4_40 = 2,
    pkcs12Sha1TripleDes3Key = 3,
    pkcs12Sha1TripleDes2Key = 4,
    pkcs12Sha1Rc2_128 = 5,
    pkcs12Sha1Rc2_40 = 6,
    sha1 = 100,
    md5 = 101,
    md5Sha1 = 106,
    sha256 = 102,
    sha384 = 103,
    sha512 = 104,
    sha224 = 105,
    rc2Cbc = 200,
    rc4 = 201,
    tripleDesCbc = 202,
    rc5CbcPad = 203,
    desCdmf = 204,
    aesArc = 205,
    aes128Ecb = 300,
    aes128Cbc = 301,
    aes128Ofb = 302,
    aes128Cfb = 303,
    aes192Ecb = 304,
    aes192Cbc = 305,
    aes192Ofb = 306,
    aes192Cfb = 307,
    aes256Ecb = 308,
    aes256Cbc = 309,
    aes256Ofb = 310,
    aes256Cfb = 311,
    aes128Gcm = 312,
    aes192Gcm = 313,
    aes256Gcm = 314,
    rsadsiArc = 400,
    pkcs1Arc = 401,
    md5WithRsa = 500,
    sha1WithRsa = 501,
    sha256WithRsa = 503,
    sha512WithRsa = 505,
    sha224WithRsa = 502,
    ecdsaWithSha1 = 506,
    ecdsaWithSha256 = 508,
    ecdsaWithSha384 = 509,
    ecdsaWithSha512 = 510,
    hmacSha1 = 600,
    hmacSha224 = 601,
    hmacSha256 = 602,
    hmacSha384 = 603,
    hmacSha512 = 604,
    pbkdf2 = 700,
    pbes2 = 701,
    passwordBasedMac = 800,
    reserved900 = 900,
    reserved1000 = 1000,
    rsaEncryption = 1100,
    ecPublicKey = 1101,
    reserved1102 = 1102,
    secp112r1 = 1103,
    secp160r1 = 1104,
    prime192v1 = 1105,
    prime256v1 = 1106,
    secp384r1 = 1107,
    secp521r1 = 1108,
    brainpoolP160r1 = 1109,
    brainpoolP256r1 = 1110,
    brainpoolP384r1 = 1111,
    x25519 = 1112,
    x448 = 1113,
};

} // namespace algorithm

struct AlgorithmRow {
    std::uint32_t id;
    const char* oid; ///< dotted; empty for a reserved id
};

/// Every algorithm, in the order of look-up.
std::span<const AlgorithmRow> AlgorithmTable();

/// The id of the first row of exactly this dotted text; 0 for none and for empty text.
std::uint32_t AlgorithmOfOid(std::string_view oid);

/// Empty for an id that the table does not have.
const char* OidOfAlgorithm(std::uint32_t id);
