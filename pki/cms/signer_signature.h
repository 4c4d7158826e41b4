#pragma once

#include "core/system/date_time.h"
#include "pki/cms/signed_content.h"
#include "pki/cms/signed_data.h"
#include "pki/cms/signing_certificate.h"
#include "pki/validation/verdict.h"
#include "pki/x509/signature.h"

#include <optional>
#include <string_view>

namespace ccrypto {

/// The order in which signed attributes were hashed.
enum class AttributeOrder {
    none,    ///< there are none
    encoded, ///< as they stand in the message
    sorted,  ///< as DER has a SET OF, where the message does not
};

/// What is wrong; nothing for Reason::none.
struct SignerFault {
    Reason reason = Reason::none;
    CCryptoString detail;

    [[nodiscard]] bool isNone() const { return reason == Reason::none; }
};

/// The detail, with Reason::malformed, of a signer whose content is neither in the message nor given.
inline constexpr std::string_view contentIsDetached = "The content is detached";

/// What a signer signed, read and compared with the content, before any certificate is known.
struct SignerStatement {
    algorithm::Id hash = algorithm::none;
    SignatureAlgorithm algorithm;
    CCryptoDateTime signingTime; ///< by the signer's own word; invalid when it is not given
    /// Of both versions of the attribute.
    std::vector<CertificateReferences> signingCertificates;

    /// Reads the algorithms and the attributes: the content type and the message digest stand there exactly once, with one value
    /// each, and are those of the content; without attributes the content is data and not itself a set of attributes. An
    /// attribute of algorithm protection says the same as the signer's description (RFC 6211). Attributes that must be signed are
    /// not among the unsigned ones, nor a countersignature among the signed ones (RFC 5652, 11).
    /// \param content null when it is not at hand.
    [[nodiscard]] SignerFault read(const CCryptoPKCS7SignerInfo& signer, const Oid& contentType, SignedContent* content);
};

/// What messages are hashed with; none for what is not supported, and for parameters other than NULL.
[[nodiscard]] algorithm::Id ReadMessageHash(const CCryptoAlgorithmIdentifier& identifier);

/// Whether the signature is that of the key, over the attributes as they are encoded, else as they are sorted, or over the content.
[[nodiscard]] SignerFault VerifySigner(const CCryptoPKCS7SignerInfo& signer, const SignerStatement& statement, ICryptoKeyPair& key,
                                       SignedContent& content, AttributeOrder& order);

} // namespace ccrypto
