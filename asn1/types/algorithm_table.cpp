#include "asn1/types/algorithm_table.h"

#include <algorithm>

namespace ccrypto {

namespace {

constexpr AlgorithmRow rows[] = {
    {algorithm::none, ""},
    {algorithm::pkcs12Sha1Rc4_128, "1.2.840.113549.1.12.1.1"},
    {algorithm::pkcs12Sha1Rc4_40, "1.2.840.113549.1.12.1.2"},
    {algorithm::pkcs12Sha1TripleDes3Key, "1.2.840.113549.1.12.1.3"},
    {algorithm::pkcs12Sha1TripleDes2Key, "1.2.840.113549.1.12.1.4"},
    {algorithm::pkcs12Sha1Rc2_128, "1.2.840.113549.1.12.1.5"},
    {algorithm::pkcs12Sha1Rc2_40, "1.2.840.113549.1.12.1.6"},
    {algorithm::sha1, "1.3.14.3.2.26"},
    {algorithm::md5, "1.2.840.113549.2.5"},
    {algorithm::md5Sha1, ""},
    {algorithm::sha256, "2.16.840.1.101.3.4.2.1"},
    {algorithm::sha384, "2.16.840.1.101.3.4.2.2"},
    {algorithm::sha512, "2.16.840.1.101.3.4.2.3"},
    {algorithm::sha224, "2.16.840.1.101.3.4.2.4"},
    {algorithm::rc2Cbc, "1.2.840.113549.3.2"},
    {algorithm::rc4, "1.2.840.113549.3.4"},
    {algorithm::tripleDesCbc, "1.2.840.113549.3.7"},
    {algorithm::rc5CbcPad, "1.2.840.113549.3.9"},
    {algorithm::desCdmf, "1.2.840.113549.3.10"},
    {algorithm::aesArc, "2.16.840.1.101.3.4.1"},
    {algorithm::aes128Ecb, "2.16.840.1.101.3.4.1.1"},
    {algorithm::aes128Cbc, "2.16.840.1.101.3.4.1.2"},
    {algorithm::aes128Ofb, "2.16.840.1.101.3.4.1.3"},
    {algorithm::aes128Cfb, "2.16.840.1.101.3.4.1.4"},
    {algorithm::aes192Ecb, "2.16.840.1.101.3.4.1.21"},
    {algorithm::aes192Cbc, "2.16.840.1.101.3.4.1.22"},
    {algorithm::aes192Ofb, "2.16.840.1.101.3.4.1.23"},
    {algorithm::aes192Cfb, "2.16.840.1.101.3.4.1.24"},
    {algorithm::aes256Ecb, "2.16.840.1.101.3.4.1.41"},
    {algorithm::aes256Cbc, "2.16.840.1.101.3.4.1.42"},
    {algorithm::aes256Ofb, "2.16.840.1.101.3.4.1.43"},
    {algorithm::aes256Cfb, "2.16.840.1.101.3.4.1.44"},
    {algorithm::aes128Gcm, "2.16.840.1.101.3.4.1.6"},
    {algorithm::aes192Gcm, "2.16.840.1.101.3.4.1.26"},
    {algorithm::aes256Gcm, "2.16.840.1.101.3.4.1.46"},
    {algorithm::rsadsiArc, "1.2.840.113549"},
    {algorithm::pkcs1Arc, "1.2.840.113549.1.1"},
    {algorithm::md5WithRsa, "1.2.840.113549.1.1.4"},
    {algorithm::sha1WithRsa, "1.2.840.113549.1.1.5"},
    {algorithm::sha256WithRsa, "1.2.840.113549.1.1.11"},
    {algorithm::sha512WithRsa, "1.2.840.113549.1.1.13"},
    {algorithm::sha224WithRsa, "1.2.840.113549.1.1.14"},
    {algorithm::ecdsaWithSha1, "1.2.840.10045.4.1"},
    {algorithm::ecdsaWithSha256, "1.2.840.10045.4.3.2"},
    {algorithm::ecdsaWithSha384, "1.2.840.10045.4.3.3"},
    {algorithm::ecdsaWithSha512, "1.2.840.10045.4.3.4"},
    {algorithm::hmacSha1, "1.3.6.1.5.5.8.1.2"},
    {algorithm::hmacSha224, "1.2.840.113549.2.8"},
    {algorithm::hmacSha256, "1.2.840.113549.2.9"},
    {algorithm::hmacSha384, "1.2.840.113549.2.10"},
    {algorithm::hmacSha512, "1.2.840.113549.2.11"},
    {algorithm::pbkdf2, "1.2.840.113549.1.5.12"},
    {algorithm::pbes2, "1.2.840.113549.1.5.13"},
    {algorithm::passwordBasedMac, "1.2.840.113533.7.66.13"},
    {algorithm::reserved900, ""},
    {algorithm::reserved1000, ""},
    {algorithm::rsaEncryption, "1.2.840.113549.1.1.1"},
    {algorithm::ecPublicKey, "1.2.840.10045.2.1"},
    {algorithm::reserved1102, ""},
    {algorithm::secp112r1, "1.3.132.0.6"},
    {algorithm::secp160r1, "1.3.132.0.8"},
    {algorithm::prime192v1, "1.2.840.10045.3.1.1"},
    {algorithm::prime256v1, "1.2.840.10045.3.1.7"},
    {algorithm::secp384r1, "1.3.132.0.34"},
    {algorithm::secp521r1, "1.3.132.0.35"},
    {algorithm::brainpoolP160r1, "1.3.36.3.3.2.8.1.1.1"},
    {algorithm::brainpoolP256r1, "1.3.36.3.3.2.8.1.1.7"},
    {algorithm::brainpoolP384r1, "1.3.36.3.3.2.8.1.1.11"},
    {algorithm::x25519, "1.3.101.110"},
    {algorithm::x448, "1.3.101.111"},
};

static_assert(std::size(rows) == 70);

/// Algorithms beside the table, looked up after it.
constexpr AlgorithmRow rowsBeside[] = {
    {algorithm::sha3_224, "2.16.840.1.101.3.4.2.7"},
    {algorithm::sha3_256, "2.16.840.1.101.3.4.2.8"},
    {algorithm::sha3_384, "2.16.840.1.101.3.4.2.9"},
    {algorithm::sha3_512, "2.16.840.1.101.3.4.2.10"},
    {algorithm::shake128, "2.16.840.1.101.3.4.2.11"},
    {algorithm::shake256, "2.16.840.1.101.3.4.2.12"},
    {algorithm::hmacSha3_224, "2.16.840.1.101.3.4.2.13"},
    {algorithm::hmacSha3_256, "2.16.840.1.101.3.4.2.14"},
    {algorithm::hmacSha3_384, "2.16.840.1.101.3.4.2.15"},
    {algorithm::hmacSha3_512, "2.16.840.1.101.3.4.2.16"},
    {algorithm::dsa, "1.2.840.10040.4.1"},
    {algorithm::dsaWithSha1, "1.2.840.10040.4.3"},
    {algorithm::dsaWithSha224, "2.16.840.1.101.3.4.3.1"},
    {algorithm::dsaWithSha256, "2.16.840.1.101.3.4.3.2"},
    {algorithm::secp224r1, "1.3.132.0.33"},
    {algorithm::secp256k1, "1.3.132.0.10"},
    {algorithm::brainpoolP224r1, "1.3.36.3.3.2.8.1.1.5"},
    {algorithm::brainpoolP320r1, "1.3.36.3.3.2.8.1.1.9"},
    {algorithm::brainpoolP384t1, "1.3.36.3.3.2.8.1.1.12"},
    {algorithm::brainpoolP512r1, "1.3.36.3.3.2.8.1.1.13"},
    {algorithm::ed25519, "1.3.101.112"},
    {algorithm::ed448, "1.3.101.113"},
};

/// Other OIDs of algorithms that have a row, accepted on reading.
constexpr AlgorithmRow alternativeOids[] = {
    {algorithm::hmacSha1, "1.2.840.113549.2.7"}, // RFC 8018, B.1.1
};

} // namespace

std::span<const AlgorithmRow> AlgorithmTable()
{
    return rows;
}

std::span<const AlgorithmRow> AlgorithmsBesideTable()
{
    return rowsBeside;
}

algorithm::Id AlgorithmOfOid(std::string_view oid)
{
    for (const std::span<const AlgorithmRow> list :
         {AlgorithmTable(), AlgorithmsBesideTable(), std::span<const AlgorithmRow>(alternativeOids)}) {
        const auto found = std::ranges::find_if(list, [oid](const AlgorithmRow& row) { return row.oid == oid; });
        if (found != list.end())
            return found->id;
    }
    return algorithm::none;
}

const char* OidOfAlgorithm(algorithm::Id id)
{
    for (const std::span<const AlgorithmRow> list : {AlgorithmTable(), AlgorithmsBesideTable()}) {
        const auto found = std::ranges::find(list, id, &AlgorithmRow::id);
        if (found != list.end())
            return found->oid;
    }
    return "";
}

} // namespace ccrypto
