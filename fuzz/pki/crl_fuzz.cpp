#include "fuzz/require.h"
#include "pki/x509/crl.h"

using namespace ccrypto;

/// Revocation lists: what loads as DER is what a tree of the same octets writes, and every entry that is counted is read. What does
/// not load leaves nothing.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const element octets(data, static_cast<std::uint32_t>(size));
    CCrypto_X509_CRL list;
    if (!list.LoadCRL(octets)) {
        Require(!list.isLoaded() && list.entryCount() == 0 && list.signedOctets().empty() && list.issuer().isEmpty());
        return 0;
    }
    Require(list.GetCRL() == octets && list.thisUpdate().isValid() && (list.version() == 1 || list.version() == 2));
    CCryptoParser tree;
    Require(tree.Load_DER_Memory(octets));
    Require(list.isDer() == tree.isDer());
    Require(!list.isDer() || tree.ToDer() == octets);
    Require(list.signedOctets().empty() != list.isDer());
    for (std::uint32_t index = 0; index < list.entryCount(); ++index) {
        const std::optional<RevokedEntry> entry = list.entry(index);
        Require(entry && entry->revocationDate.isValid() && !entry->serialNumber.isEmpty());
        Require(!entry->hasUnknownCritical || list.hasUnknownCriticalEntry());
    }
    Require(!list.entry(list.entryCount()));
    return 0;
}
