#pragma once

#include "asn1/types/algorithm_identifier.h"
#include "asn1/types/asn1_object.h"
#include "crypto/dsa/dsa.h"
#include "crypto/rsa/rsa.h"

#include <cstdint>

/// SubjectPublicKeyInfo (RFC 5280, 4.1.2.7).
class CCryptoSubjectPublicKeyInfo : public CCryptoASN1Object {
public:
    CCryptoSubjectPublicKeyInfo();

    bool BuildNode() override;
    bool ParseNode() override;

    CCryptoAlgorithmIdentifier algorithm;
    element publicKey; ///< content of the BIT STRING

protected:
    void ClearFields() override { publicKey = {}; }
};

/// PrivateKeyInfo, or OneAsymmetricKey (RFC 5958, 2). Attributes are ignored, and a public key is not written.
class CCryptoPrivateKeyInfo : public CCryptoASN1Object {
public:
    CCryptoPrivateKeyInfo();

    bool BuildNode() override;
    /// False for versions other than 0 and 1, and for a public key that is not whole bytes.
    bool ParseNode() override;

    CCryptoAlgorithmIdentifier algorithm;
    element privateKey; ///< content of the OCTET STRING; secret
    element publicKey;  ///< content of the BIT STRING; empty when there is none

protected:
    void ClearFields() override { privateKey = publicKey = {}; }
};

/// EncryptedPrivateKeyInfo (RFC 5958, 3).
class CCryptoEncryptedPrivateKeyInfo : public CCryptoASN1Object {
public:
    CCryptoEncryptedPrivateKeyInfo();

    bool BuildNode() override;
    bool ParseNode() override;

    CCryptoAlgorithmIdentifier algorithm;
    element encryptedData;

protected:
    void ClearFields() override { encryptedData = {}; }
};

/// RSAPublicKey (RFC 8017, A.1.1).
class CCryptoRSAPublicKeyObject : public CCryptoASN1Object {
public:
    CCryptoRSAPublicKeyObject();

    bool BuildNode() override;
    /// False for a number below zero.
    bool ParseNode() override;

    CCryptoRSANumbers numbers;

protected:
    void ClearFields() override { numbers = {}; }
};

/// RSAPrivateKey (RFC 8017, A.1.2), of two primes.
class CCryptoRSAPrivateKeyObject : public CCryptoASN1Object {
public:
    CCryptoRSAPrivateKeyObject();

    bool BuildNode() override;
    /// False for a number below zero and for a version other than 0.
    bool ParseNode() override;

    CCryptoRSANumbers numbers;

protected:
    void ClearFields() override { numbers = {}; }
};

/// Dss-Parms (RFC 3279, 2.3.2), without the public value.
class CCryptoDSAParametersObject : public CCryptoASN1Object {
public:
    CCryptoDSAParametersObject();

    bool BuildNode() override;
    /// False for a number below zero.
    bool ParseNode() override;

    CCryptoDSANumbers numbers;

protected:
    void ClearFields() override { numbers = {}; }
};

/// DSAPublicKey (RFC 3279, 2.3.2): the public value alone.
class CCryptoDSAPublicKeyObject : public CCryptoASN1Object {
public:
    CCryptoDSAPublicKeyObject();

    bool BuildNode() override;
    /// False for a number below zero.
    bool ParseNode() override;

    CCryptoDSANumbers numbers;

protected:
    void ClearFields() override { numbers = {}; }
};

/// ECPrivateKey (RFC 5915, 3).
class CCryptoECPrivateKeyObject : public CCryptoASN1Object {
public:
    CCryptoECPrivateKeyObject();

    bool BuildNode() override;
    /// False for a version other than 1 and for parameters that are no curve's name.
    bool ParseNode() override;

    element scalar;         ///< as long as the order
    CCryptoString curveOid; ///< dotted; empty when the parameters are left out
    element publicPoint;    ///< empty when it is left out

protected:
    void ClearFields() override;
};

namespace ccrypto {

/// The dotted OID of a node that is an OBJECT IDENTIFIER; empty for any other and for none.
[[nodiscard]] CCryptoString OidOfNode(const elementNode* node);

} // namespace ccrypto
