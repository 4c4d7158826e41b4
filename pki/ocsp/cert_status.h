#pragma once

#include "pki/ocsp/structure.h"
#include "pki/x509/crl.h"

#include <cstdint>
#include <optional>

namespace CCryptoOCSP {

/// CertStatus: good, revoked at a time and perhaps for a reason, or unknown.
class CCertStatus : public CStructure {
public:
    enum class Kind : std::uint8_t { none, good, revoked, unknown };

    CCertStatus();
    explicit CCertStatus(const elementNode* node);

    bool ParseNode() override;
    /// Writes one alternative. \return false, logged, for none, and for a time or a reason beside good or unknown.
    bool SetTemplateValues() override;

    Kind kind = Kind::none;
    CCryptoDateTime revocationTime;
    std::optional<ccrypto::RevocationReason> revocationReason;

protected:
    void ClearFields() override;

private:
    bool readRevoked(const CCryptoTemplateMatch& match);
    bool setTemplate(const char* text);
};

} // namespace CCryptoOCSP
