#pragma once

#include "asn1/types/asn1_object.h"
#include "core/base/algorithm.h"

/// AlgorithmIdentifier (RFC 5280, 4.1.1.2): an algorithm of the library's table and its parameters. One that was read and is not
/// in the table has the id 0 and does not build, but keeps its OID, its parameters and its octets.
class CCryptoAlgorithmIdentifier : public CCryptoASN1Object {
public:
    /// No algorithm; does not build.
    CCryptoAlgorithmIdentifier();
    explicit CCryptoAlgorithmIdentifier(const elementNode* node);
    /// \param nullParameters NULL stands for parameters while none are set.
    CCryptoAlgorithmIdentifier(ccrypto::algorithm::Id id, bool nullParameters);

    bool BuildNode() override;
    /// Logs "Unsupported OID: " and the OID for an algorithm outside the table; the id is then 0.
    bool ParseNode() override;

    /// Whether an algorithm of the table was read or set.
    [[nodiscard]] bool isSupported() const { return id_ != ccrypto::algorithm::none; }
    /// Dotted text, whether supported or not; hexadecimal digits when the octets have no dotted form. Empty when there is none.
    [[nodiscard]] CCryptoString oid() const;
    /// The whole AlgorithmIdentifier as it was read; empty when none was.
    [[nodiscard]] element readOctets() const { return CCryptoParser::ToDer(data()); }

    /// DER of the algorithm's OID without identifier and length; empty, logged, for id 0 and ids without an OID.
    [[nodiscard]] element GetDerEncodedOID() const;

    ccrypto::algorithm::Id id() const { return id_; }
    void setId(ccrypto::algorithm::Id id) { id_ = id; }
    /// Null when there are none.
    const elementNode* parameters() const { return parameters_.get(); }
    /// A copy of the one node; null for none.
    void setParameters(const elementNode* parameters);
    bool nullParameters() const { return nullParameters_; }
    void setNullParameters(bool nullParameters) { nullParameters_ = nullParameters; }

protected:
    void ClearFields() override;

private:
    ccrypto::algorithm::Id id_ = ccrypto::algorithm::none;
    CCryptoString unsupportedOid_;
    bool nullParameters_ = false;
    ccrypto::ElementNodePtr parameters_;
};
