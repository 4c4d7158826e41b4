#include "pki/x509/extensions.h"

#include <array>
#include <initializer_list>
#include <vector>

namespace ccrypto {

namespace {

/// \param arc the last arc, below 128, under 2.5.29.
Oid CertificateExtension(std::uint8_t arc)
{
    return Oid(std::array<std::uint8_t, 3>{0x55, 0x1D, arc});
}

/// \param arcs the last ones, below 128 each, under 1.3.6.1.5.5.7.
Oid Pkix(std::initializer_list<std::uint8_t> arcs)
{
    std::vector<std::uint8_t> octets = {0x2B, 0x06, 0x01, 0x05, 0x05, 0x07};
    octets.insert(octets.end(), arcs);
    return Oid(octets);
}

} // namespace

namespace oids {

// Built of octets and not of dotted text, which would log, before the log is set up, what cannot fail.
const Oid subjectKeyIdentifier = CertificateExtension(14);
const Oid keyUsage = CertificateExtension(15);
const Oid subjectAlternativeName = CertificateExtension(17);
const Oid issuerAlternativeName = CertificateExtension(18);
const Oid basicConstraints = CertificateExtension(19);
const Oid crlNumber = CertificateExtension(20);
const Oid reasonCode = CertificateExtension(21);
const Oid invalidityDate = CertificateExtension(24);
const Oid deltaCrlIndicator = CertificateExtension(27);
const Oid issuingDistributionPoint = CertificateExtension(28);
const Oid certificateIssuer = CertificateExtension(29);
const Oid nameConstraints = CertificateExtension(30);
const Oid crlDistributionPoints = CertificateExtension(31);
const Oid certificatePolicies = CertificateExtension(32);
const Oid anyPolicy(std::array<std::uint8_t, 4>{0x55, 0x1D, 32, 0});
const Oid policyMappings = CertificateExtension(33);
const Oid authorityKeyIdentifier = CertificateExtension(35);
const Oid policyConstraints = CertificateExtension(36);
const Oid extendedKeyUsage = CertificateExtension(37);
const Oid anyExtendedKeyUsage(std::array<std::uint8_t, 4>{0x55, 0x1D, 37, 0});
const Oid freshestCrl = CertificateExtension(46);
const Oid inhibitAnyPolicy = CertificateExtension(54);

const Oid authorityInformationAccess = Pkix({1, 1});
const Oid subjectInformationAccess = Pkix({1, 11});
const Oid serverAuth = Pkix({3, 1});
const Oid clientAuth = Pkix({3, 2});
const Oid codeSigning = Pkix({3, 3});
const Oid emailProtection = Pkix({3, 4});
const Oid timeStamping = Pkix({3, 8});
const Oid ocspSigning = Pkix({3, 9});
const Oid ocspNonce = Pkix({48, 1, 2});
const Oid ocspNoCheck = Pkix({48, 1, 5});

const Oid smartCardLogon(std::array<std::uint8_t, 10>{0x2B, 0x06, 0x01, 0x04, 0x01, 0x82, 0x37, 20, 2, 2});
const Oid emailAddress(std::array<std::uint8_t, 9>{0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 1, 9, 1});
const Oid commonName(std::array<std::uint8_t, 3>{0x55, 0x04, 3});

} // namespace oids

} // namespace ccrypto
