#pragma once

#include "pki/x509/crl.h"
#include "tests/crypto/base/test_bytes.h"
#include "tests/pki/x509/der_text.h"

#include <string>

// Revocation lists by their octets, in the notation of DerOf.

namespace ccrypto {

/// The pieces of a list; each may be replaced, or left out where it is optional.
struct ListText {
    std::string version = "020101";
    std::string algorithm = "30[ 06082A8648CE3D040302 ]";
    std::string issuer = "30[ 31[ 30[ 0603550403 0C['Test CA'] ] ] ]";
    std::string thisUpdate = "17['261101000000Z']";
    std::string nextUpdate = "17['261201000000Z']";
    std::string revoked = "30[ 30[ 020105 17['261020120000Z'] ] 30[ 020107 17['261021120000Z'] ] ]";
    std::string extensions = "A0[ 30[ 30[ 0603551D14 04[ 020107 ] ] ] ]";
    std::string afterExtensions;
    std::string outerAlgorithm = algorithm;
    std::string signature = "0303000102";
    std::string afterSignature;

    Bytes signedPart() const
    {
        return DerOf("30[" + version + algorithm + issuer + thisUpdate + nextUpdate + revoked + extensions + afterExtensions + "]");
    }
    Bytes octets() const { return DerOf("30[" + Hex(signedPart()) + outerAlgorithm + signature + afterSignature + "]"); }
};

} // namespace ccrypto
