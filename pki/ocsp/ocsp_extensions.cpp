#include "pki/ocsp/ocsp_extensions.h"

#include "asn1/der/der_cursor.h"
#include "asn1/types/asn1_values.h"
#include "core/diagnostics/auto_logger.h"
#include "crypto/random/random.h"
#include "pki/x509/extensions.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

namespace ccrypto {

namespace {

constexpr std::uint8_t nonceString = 0x04;

/// Extensions that change nothing of what a status means: the nonce, and references to lists, archive cutoff, service locator and
/// extended revocation (RFC 6960, 4.4).
constexpr std::string_view harmlessExtensions[] = {
    "1.3.6.1.5.5.7.48.1.2", "1.3.6.1.5.5.7.48.1.3", "1.3.6.1.5.5.7.48.1.6", "1.3.6.1.5.5.7.48.1.7", "1.3.6.1.5.5.7.48.1.9",
};

bool IsNonceLength(std::size_t length)
{
    return length != 0 && length <= OcspNonce::maxLength;
}

} // namespace

OcspNonce ReadOcspNonce(const CCrypto_X509_ValueList& extensions)
{
    OcspNonce nonce;
    for (const auto& extension : extensions.values()) {
        if (extension->oid() != oids::ocspNonce)
            continue;
        const element content = extension->content();
        const auto octets = OnlyValue(content.bytes(), nonceString);
        if (nonce.state != OcspNonce::State::absent || !octets || !IsNonceLength(octets->size()))
            return {OcspNonce::State::malformed, {}};
        nonce = {OcspNonce::State::present, element(octets->data(), static_cast<std::uint32_t>(octets->size()))};
    }
    return nonce;
}

bool AddOcspNonce(CCrypto_X509_ValueList& extensions, const element& nonce)
{
    CCryptoAutoLogger logger("AddOcspNonce");
    if (!IsNonceLength(nonce.length()))
        return logger.fail(false, "A nonce of %u bytes", nonce.length());
    const element inner = CCryptoASN1OctetStringObject(nonce).BuildDer();
    const ElementNodePtr value = CCryptoASN1OctetStringObject(inner).BuildTree();
    extensions.add(std::make_unique<CCrypto_X509_Value>(oids::ocspNonce, value.get()));
    return logger.setResult(true);
}

element NewOcspNonce(std::uint32_t length)
{
    element nonce;
    nonce.resize(length);
    return ICryptoRandom::Instance().generate({nonce.data(), nonce.length()}) ? nonce : element();
}

bool HasDoubledOcspExtension(const CCrypto_X509_ValueList& extensions)
{
    std::vector<Oid> oids;
    for (const auto& extension : extensions.values())
        oids.push_back(extension->oid());
    std::ranges::sort(oids);
    return std::ranges::adjacent_find(oids) != oids.end();
}

bool HasUnknownCriticalOcspExtension(const CCrypto_X509_ValueList& extensions)
{
    return std::ranges::any_of(extensions.values(), [](const auto& extension) {
        const CCryptoString oid = extension->oid().dotted();
        return extension->isCritical() && std::ranges::find(harmlessExtensions, oid.view()) == std::end(harmlessExtensions);
    });
}

} // namespace ccrypto
