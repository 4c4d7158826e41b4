#include "pki/validation/path_validation.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

using namespace ccrypto;

namespace {

enum class BundleItem : std::uint8_t { subject, other, anchor, list };

struct PathBundle {
    CertificatePtr subject;
    CertificatePool pool;
    StatusSources sources;

    void add(BundleItem kind, std::span<const std::uint8_t> der)
    {
        if (kind == BundleItem::list) {
            auto list = std::make_shared<CCrypto_X509_CRL>();
            if (list->LoadCRL(element(der.data(), static_cast<std::uint32_t>(der.size()))))
                sources.crls.push_back(std::move(list));
        } else if (CertificatePtr certificate = LoadCertificate(der); certificate != nullptr) {
            if (kind == BundleItem::subject)
                subject = std::move(certificate);
            else
                static_cast<void>(pool.add(std::move(certificate), kind == BundleItem::anchor));
        }
    }
};

} // namespace

/// A bundle: options, then for each certificate and list what it is, two octets of length, and the DER. Whatever is in it, the work
/// stays under its limits, and only certificates that encode to their octets are valid.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::span<const std::uint8_t> input(data, size);
    if (input.empty())
        return 0;
    const std::uint8_t bits = input.front();
    input = input.subspan(1);

    PathBundle bundle;
    while (input.size() >= 3) {
        const auto kind = static_cast<BundleItem>(input[0] % 4);
        const std::size_t length = std::min<std::size_t>(input[1] * 256U + input[2], input.size() - 3);
        bundle.add(kind, input.subspan(3, length));
        input = input.subspan(3 + length);
    }

    ValidationOptions options;
    options.at = CCryptoDateTime(CCryptoString("20270101000000Z"));
    options.status = (bits & 1) != 0 ? ValidationOptions::Status::chain : ValidationOptions::Status::none;
    options.explicitPolicy = (bits & 2) != 0;
    options.strict = (bits & 4) != 0;
    options.allowWeak = (bits & 8) != 0;
    const PathVerdict verdict = ValidateCertificate(bundle.subject, bundle.pool, bundle.sources, options);

    if (verdict.work.steps > 1'000 || verdict.work.signatures > 200 || verdict.path.size() > 64)
        std::abort();
    if ((verdict.verdict == Verdict::valid) != (verdict.reason == Reason::none))
        std::abort();
    for (const PathStep& step : verdict.path)
        if (verdict.verdict == Verdict::valid && !step.certificate->isDer())
            std::abort();
    return 0;
}
