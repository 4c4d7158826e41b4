#pragma once

#include "pki/validation/path_validation.h"
#include "tests/pki/x509/test_authority.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace ccrypto {

/// Certificates and lists among which a validation takes place, by short names: "Sub" is CN=Sub with a key of its own, "Sub/2" the
/// same name with another key. The time is 2026-11-23 12:00:00.
class TestWorld {
public:
    using ChangeCertificate = std::function<void(TestCertificate&)>;
    using ChangeList = std::function<void(TestCrl&)>;

    [[nodiscard]] static TestIssuer Who(const std::string& name);
    [[nodiscard]] static Bytes Certificate(const std::string& subject, const std::string& issuer, bool isAuthority,
                                           const ChangeCertificate& change = {});

    // An authority has basic constraints, keyCertSign, cRLSign and a key identifier.
    TestWorld& anchor(const std::string& name, const ChangeCertificate& change = {});
    TestWorld& authority(const std::string& name, const std::string& issuer, const ChangeCertificate& change = {});
    /// A candidate without any extension.
    TestWorld& plain(const std::string& name, const std::string& issuer, const ChangeCertificate& change = {});
    TestWorld& subject(const std::string& name, const std::string& issuer, const ChangeCertificate& change = {});
    TestWorld& subjectAuthority(const std::string& name, const std::string& issuer, const ChangeCertificate& change = {});
    TestWorld& list(const std::string& issuer, const ChangeList& change = {});

    [[nodiscard]] CertificatePool pool() const;
    [[nodiscard]] std::vector<CrlPtr> loadedLists() const;
    [[nodiscard]] PathVerdict validate() const;

    ValidationOptions options = DefaultOptions();
    std::vector<Bytes> anchors;
    std::vector<Bytes> others;
    std::vector<Bytes> lists;
    Bytes subjectDer;
    StatusSources sources; ///< beside the lists

private:
    [[nodiscard]] static ValidationOptions DefaultOptions();
};

/// "VALID", or the reason, the certificate, and "?" where it is undecided: "expired 1", "status-unknown 0 ?".
[[nodiscard]] std::string Summary(const PathVerdict& verdict);

[[nodiscard]] CCryptoDateTime TestMoment(const char* generalized);

/// One case of a table.
struct WorldCase {
    const char* name;
    void (*make)(TestWorld& world);
    const char* summary;
};

/// The name of a test out of the name of its case.
[[nodiscard]] std::string WordsToName(std::string_view words);

} // namespace ccrypto
