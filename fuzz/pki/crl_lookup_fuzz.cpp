#include "fuzz/require.h"
#include "pki/x509/revoked_entries.h"

#include <algorithm>

using namespace ccrypto;

namespace {

bool IsSame(const RevokedEntry& left, const RevokedEntry& right)
{
    return left.serialNumber == right.serialNumber && left.revocationDate == right.revocationDate && left.reason == right.reason &&
           left.invalidityDate.isValid() == right.invalidityDate.isValid() &&
           std::ranges::equal(left.certificateIssuer, right.certificateIssuer) &&
           left.hasUnknownCritical == right.hasUnknownCritical;
}

} // namespace

/// Entries of a list: the index finds of each serial number what a walk over all entries finds, in the same order.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::uint32_t maxEntries = 2'000;
    constexpr std::uint32_t maxAsked = 50;
    RevokedEntries entries;
    if (!entries.Read({data, size}, maxEntries)) {
        Require(entries.count() == 0 && entries.find({data, std::min<std::size_t>(size, 20)}).empty());
        return 0;
    }
    std::vector<RevokedEntry> all;
    for (std::uint32_t index = 0; index < entries.count(); ++index)
        all.push_back(entries.entry(index).value());
    for (std::size_t asked = 0; asked < all.size() && asked < maxAsked; ++asked) {
        element number = all[asked].serialNumber;
        for (const bool another : {false, true}) {
            if (another)
                number.data()[number.length() - 1] ^= 1;
            const std::vector<RevokedEntry> found = entries.find(number.bytes());
            auto next = found.begin();
            for (const RevokedEntry& entry : all) {
                if (entry.serialNumber == number)
                    Require(next != found.end() && IsSame(*next++, entry));
            }
            Require(next == found.end());
        }
    }
    return 0;
}
