#pragma once

#include "tests/pki/x509/test_authority.h"

#include <vector>

namespace ccrypto {

inline const TestIssuer& CertificateRoot()
{
    static const TestIssuer root = {.name = TestName("C=FI,CN=Root"), .key = TestKey(1)};
    return root;
}

inline TestCertificate LeafCertificate()
{
    return TestCertificate("C=FI,CN=Leaf", TestKey(2));
}

/// The certificate around changed octets of what is signed, signed anew.
inline Bytes SignedFields(const Bytes& fields)
{
    return TestSigned(Tlv(der::sequence, fields), CertificateRoot());
}

/// The fields of a certificate of version 1, in the order they stand in.
inline std::vector<Bytes> FieldsOfVersion1()
{
    return {NumberTlv(1),           TestAlgorithm(CertificateRoot()),
            CertificateRoot().name, Tlv(der::sequence, {TestTime("20200101000000Z"), TestTime("20300101000000Z")}),
            TestName("CN=Leaf"),    BytesOf(TestKey(2)->publicKeyInfo())};
}

inline Bytes JoinedFields(const std::vector<Bytes>& fields)
{
    Bytes all;
    for (const Bytes& field : fields)
        all = Joined({all, field});
    return all;
}

} // namespace ccrypto
