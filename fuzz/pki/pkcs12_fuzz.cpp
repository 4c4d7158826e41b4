#include "core/diagnostics/failure.h"
#include "pki/pkcs12/pkcs12.h"

#include <algorithm>
#include <cstdlib>

using namespace ccrypto;

namespace {

/// Deriving keys as a file asks for them may take half a minute.
bool IsCheap(const CCryptoPKCS12& file)
{
    constexpr std::uint32_t maxIterations = 4096;
    const auto isCheap = [](const auto& part) { return !part.encryption || part.encryption->iterations <= maxIterations; };
    return (!file.hasMac() || file.mac()->iterations() <= maxIterations) && std::ranges::all_of(file.safes(), isCheap) &&
           std::ranges::all_of(file.bags(), isCheap);
}

} // namespace

/// Files under a fixed password: those that open hold no more bags than the limit, and those that do not leave nothing and give a
/// reason.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    ForgetFailure();
    CCryptoPKCS12 file;
    const PKCS12Outcome read = file.Read({data, size});
    if (read != PKCS12Outcome::locked && read != PKCS12Outcome::opened) {
        const auto failure = LastFailure();
        if (!failure || failure->text.empty() || !file.bags().empty())
            std::abort();
        return 0;
    }
    if (!IsCheap(file) || file.Open("password") != PKCS12Outcome::opened)
        return 0;
    if (file.bags().size() > PKCS12SafeReader::maxBags)
        std::abort();
    for (const PKCS12Bag& bag : file.bags()) {
        const PKCS12Bag* const certificate = bag.kind == PKCS12Bag::Kind::key ? file.certificateOf(bag) : nullptr;
        if (certificate != nullptr && certificate->certificate == nullptr)
            std::abort();
    }
    return 0;
}
