#pragma once

#include "asn1/types/asn1_object.h"
#include "pki/x509/x509_value.h"

class CCrypto_X509_Certificate;

/// IssuerAndSerialNumber (RFC 5652, 10.2.4): by which a message says whose certificate is meant.
class CCryptoIssuerAndSerialNumber : public CCryptoASN1Object {
public:
    CCryptoIssuerAndSerialNumber();
    explicit CCryptoIssuerAndSerialNumber(const elementNode* node);
    explicit CCryptoIssuerAndSerialNumber(const CCrypto_X509_Certificate& certificate);

    bool BuildNode() override;
    /// False for octets that are not a name, and for a serial number of no octets, of more than 64 or of more than it needs.
    bool ParseNode() override;

    [[nodiscard]] const CCrypto_X509_ValueList& issuer() const { return issuer_; }
    /// Big-endian, as the octets of the INTEGER are.
    [[nodiscard]] const element& serialNumber() const { return serialNumber_; }

    /// Whether it is the certificate's: names compared by RFC 5280, 7.1, serial numbers by their octets.
    [[nodiscard]] bool means(const CCrypto_X509_Certificate& certificate) const;

protected:
    void ClearFields() override;

private:
    CCrypto_X509_ValueList issuer_;
    element serialNumber_;
};
