#pragma once

#include "asn1/types/asn1_object.h"
#include "core/base/algorithm.h"

#include <cstdint>

/// AlgorithmIdentifier (RFC 5280, 4.1.1.2): an algorithm of the library's table and its parameters.
class CCryptoAlgorithmIdentifier : public CCryptoASN1Object {
public:
    /// No algorithm; does not build.
    CCryptoAlgorithmIdentifier();
    explicit CCryptoAlgorithmIdentifier(const elementNode* node);
    /// \param nullParameters NULL stands for parameters while none are set.
    CCryptoAlgorithmIdentifier(std::uint32_t id, bool nullParameters);

    bool BuildNode() override;
    /// False, logged as "Unsupported OID: " and the OID, for an algorithm outside the table; the id is then 0.
    bool ParseNode() override;

    /// DER of the algorithm's OID without identifier and length; empty, logged, for id 0 and ids without an OID.
    element GetDerEncodedOID() const;

    std::uint32_t id() const { return id_; }
    void setId(std::uint32_t id) { id_ = id; }
    /// Null when there are none.
    const elementNode* parameters() const { return parameters_.get(); }
    /// A copy of the one node; null for none.
    void setParameters(const elementNode* parameters);
    bool nullParameters() const { return nullParameters_; }
    void setNullParameters(bool nullParameters) { nullParameters_ = nullParameters; }

protected:
    void ClearFields() override;

private:
    std::uint32_t id_ = algorithm::none;
    bool nullParameters_ = false;
    ElementNodePtr parameters_;
};
