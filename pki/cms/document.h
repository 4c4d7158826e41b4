#pragma once

#include "pki/cms/content_info.h"
#include "pki/cms/signed_data.h"

#include <memory>
#include <span>

/// A whole message: ContentInfo and what it holds.
class CCryptoPKCS7Document {
public:
    CCryptoPKCS7Document();

    /// DER or BER. Signed data is read; of other types the content is left for their own classes. \return false, logged, the
    /// document empty, for anything else and for more than ccrypto::maxMessageSize.
    [[nodiscard]] bool Parse(std::span<const std::uint8_t> message);
    /// The message as DER: the octets that were read, else built of the signed data. Empty, logged, on failure.
    [[nodiscard]] element GetDerEncodedObject();

    /// What was read: its type, its object identifier, its content. Null before. Of signed data the embedded content is taken out.
    [[nodiscard]] const CCryptoPKCS7ContentInfoObject* contentInfo() const { return contentInfo_.get(); }

    /// Null unless the type is signedData.
    [[nodiscard]] const CCryptoPKCS7SignedDataObject* signedData() const { return signedData_.get(); }
    /// To be built.
    void setSignedData(std::unique_ptr<CCryptoPKCS7SignedDataObject> signedData);

    void clear();

private:
    bool read(std::span<const std::uint8_t> message);

    element der_; ///< as it was read; empty when it is to be built
    std::unique_ptr<CCryptoPKCS7ContentInfoObject> contentInfo_;
    std::unique_ptr<CCryptoPKCS7SignedDataObject> signedData_;
};
