#pragma once

#include "asn1/types/algorithm_identifier.h"
#include "core/base/algorithm.h"
#include "pki/keys/key_pair.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace ccrypto {

/// How a signature is made, as the AlgorithmIdentifier beside it says. The fixed algorithm table lacks several of these, so they
/// are found by a table of their own.
struct SignatureAlgorithm {
    enum class Kind {
        rsaPkcs1, ///< RSASSA-PKCS1-v1_5 (RFC 8017, 8.2), parameters NULL or absent
        rsaPss,   ///< RSASSA-PSS with the parameters of RFC 4055, 3.1, whose defaults count
        ecdsa,    ///< RFC 5758, 3.2; parameters absent
        eddsa,    ///< Ed25519 and Ed448 (RFC 8410, 3); parameters absent
        dsa,      ///< FIPS 186-4, parameters absent; only verified
    };

    Kind kind = Kind::rsaPkcs1;
    algorithm::Id hash = algorithm::none;  ///< MD5, SHA-1 or SHA-2; none for eddsa, and for MD2 and MD4
    algorithm::Id curve = algorithm::none; ///< of eddsa: ed25519 or ed448
    SCryptoPadding padding = {};           ///< of RSA

    /// MD2, MD4 or MD5, with which collisions are made at will. Such signatures are named, so that a caller can say what is wrong
    /// with them, but never verified.
    [[nodiscard]] bool isBroken() const { return hash == algorithm::md5 || (hash == algorithm::none && kind != Kind::eddsa); }
    /// SHA-1, and what is broken.
    [[nodiscard]] bool isWeak() const { return hash == algorithm::sha1 || isBroken(); }
};

/// \return none, logged, for an algorithm that is not supported and for parameters that are not allowed.
[[nodiscard]] std::optional<SignatureAlgorithm> ReadSignatureAlgorithm(const CCryptoAlgorithmIdentifier& identifier);
/// The same of the octets of an AlgorithmIdentifier, which must be DER.
[[nodiscard]] std::optional<SignatureAlgorithm> ReadSignatureAlgorithm(std::span<const std::uint8_t> der);

/// The algorithm identifier of a signature with this key and hash (DER): RSA with PKCS#1 padding, or with PSS for a key that is
/// limited to it; ECDSA; or EdDSA, whose `hash` is ignored. The hash is one of SHA-2, SHA-384 with RSA and SHA-224 with ECDSA among
/// them, though the fixed algorithm table lacks both. Empty, logged as "Unsupported hash function", for another hash, SHA-1 among
/// them, and logged for a key that does not sign.
[[nodiscard]] element SignatureAlgorithmFor(const ICryptoKeyPair& key, algorithm::Id hash);

enum class SignatureResult {
    good,
    bad,                  ///< the signature is not the key's over these octets
    unsupportedAlgorithm, ///< or a broken one, or one that does not fit the kind of key
};

/// Whether `signature` is the key's over `octets`, which are hashed here.
[[nodiscard]] SignatureResult VerifySignature(ICryptoKeyPair& key, const SignatureAlgorithm& algorithm,
                                              std::span<const std::uint8_t> octets, std::span<const std::uint8_t> signature);

/// The same for octets of which only the digest, by the hash of the algorithm, is at hand; unsupportedAlgorithm for eddsa.
[[nodiscard]] SignatureResult VerifyDigest(ICryptoKeyPair& key, const SignatureAlgorithm& algorithm,
                                           std::span<const std::uint8_t> digest, std::span<const std::uint8_t> signature);

/// Signs `octets`, which are hashed here, as SignatureAlgorithmFor() says. Empty, logged, where that is, and when the key fails: a
/// card was pulled.
[[nodiscard]] element SignOctets(ICryptoKeyPair& key, algorithm::Id hash, std::span<const std::uint8_t> octets);

} // namespace ccrypto
