#pragma once

#include "asn1/types/asn1_object.h"
#include "core/base/algorithm.h"

#include <cstdint>

/// PBES2-params with PBKDF2 (RFC 8018, A.4), and of PBKDF2-params those whose salt is given.
class CCryptoPBES2Parameters : public CCryptoASN1Object {
public:
    enum class Form {
        plain, ///< the cipher's parameters are its initialisation vector
        rc2    ///< they are RC2-CBC-Parameter (RFC 8018, B.2.3), which is only read
    };

    explicit CCryptoPBES2Parameters(Form form = Form::plain);

    /// Writes no key length: the ciphers it is written for have one each.
    bool BuildNode() override;
    /// False for numbers that do not fit, and for algorithms that the algorithm table lacks.
    bool ParseNode() override;

    element salt;
    std::uint32_t iterations = 0;
    std::uint32_t keyLength = 0;                               ///< 0 when it is not given
    ccrypto::algorithm::Id prf = ccrypto::algorithm::hmacSha1; ///< as when it is not given
    ccrypto::algorithm::Id cipher = ccrypto::algorithm::none;
    std::uint32_t rc2EffectiveBits = 0; ///< 0 but in the form rc2
    element iv;

protected:
    void ClearFields() override;

private:
    Form form_;
};

/// pkcs-12PbeParams (RFC 7292, appendix C).
class CCryptoPKCS12Parameters : public CCryptoASN1Object {
public:
    CCryptoPKCS12Parameters();

    bool BuildNode() override;
    bool ParseNode() override;

    element salt;
    std::uint32_t iterations = 0;

protected:
    void ClearFields() override;
};
