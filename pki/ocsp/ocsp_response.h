#pragma once

#include "pki/ocsp/basic_response.h"

#include <cstdint>

namespace CCryptoOCSP {

/// OCSPResponseStatus (RFC 6960, 4.2.1); 4 is not used.
enum class ResponseStatus : std::uint8_t {
    successful = 0,
    malformedRequest = 1,
    internalError = 2,
    tryLater = 3,
    sigRequired = 5,
    unauthorized = 6,
};
/// "successful", "malformedRequest", …; null for numbers without a name.
[[nodiscard]] const char* ResponseStatusName(ResponseStatus status);

/// ResponseBytes: a response and its type.
class COCSPResponseBytes : public CStructure {
public:
    COCSPResponseBytes();
    explicit COCSPResponseBytes(const elementNode* node);

    /// \return false, logged, for a type that is not supported ("Unsupported response type") and for a basic response that does not
    /// load. Of the other types the octets alone are kept.
    bool ParseNode() override;
    /// A basic response that is signed takes the place of type and octets.
    bool SetTemplateValues() override;

    CCryptoString responseType; ///< dotted
    element response;
    CBasicOCSPResponse basicResponse; ///< empty for the other types

protected:
    void ClearFields() override;
};

/// OCSPResponse: the answer of a responder.
class COCSPResponse : public CStructure {
public:
    COCSPResponse();
    explicit COCSPResponse(const elementNode* node);

    /// One response, whole; its octets are kept. \return false, logged, the object empty, for anything else: "value is empty",
    /// "Loading failed!", …
    [[nodiscard]] bool LoadResponse(const element& der);

    bool ParseNode() override;
    bool SetTemplateValues() override;

    /// The octets, as they were loaded; empty for what was read of a tree or is built.
    [[nodiscard]] const element& der() const { return der_; }
    /// Whether these are DER, those of the basic response in them included.
    [[nodiscard]] bool isDer() const { return isDer_; }
    /// Empty when there are no response bytes.
    [[nodiscard]] const CBasicOCSPResponse& basicResponse() const { return responseBytes.basicResponse; }
    [[nodiscard]] CBasicOCSPResponse& basicResponse() { return responseBytes.basicResponse; }

    /// Whether the owner of the certificate, or of one of the response's own, signed it. Nothing is said of who that is: see
    /// VerifyOcspResponse(). \return false, logged as for the basic response.
    [[nodiscard]] bool VerifySignature(const CCrypto_X509_Certificate& responder) const;
    [[nodiscard]] bool VerifySignature() const;

    ResponseStatus responseStatus = ResponseStatus::internalError;
    bool hasResponseBytes = false;
    COCSPResponseBytes responseBytes;

protected:
    void ClearFields() override;

private:
    element der_;
    bool isDer_ = false;
};

} // namespace CCryptoOCSP
