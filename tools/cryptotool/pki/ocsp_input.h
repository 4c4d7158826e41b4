#pragma once

#include "pki/ocsp/ocsp_request.h"
#include "pki/ocsp/ocsp_response.h"
#include "tools/cryptotool/cli/command.h"
#include "tools/cryptotool/cli/invocation.h"
#include "tools/cryptotool/pki/object_input.h"

#include <string>
#include <vector>

namespace ccrypto {

constexpr Option ocspIssuerOption = {OptionKind::text, 0, "issuer", "FILE", "the certificate of the issuer"};

/// Reads ocspIssuerOption. `otherFiles` are read besides. \return exitDone, or the exit code after the reason was printed.
int ReadOcspIssuer(Invocation& invocation, const std::vector<std::string>& otherFiles, CertificatePtr& issuer);

/// The bytes of the one message in a file. \return as above, also for several.
int ReadMessage(Invocation& invocation, const std::string& file, element& message);
/// The same for what is judged: empty for a file that holds none.
int ReadAnyMessage(Invocation& invocation, const std::string& file, element& message);
/// \return as above, also for a file that is not a request.
int ReadOcspRequest(Invocation& invocation, const std::string& file, CCryptoOCSP::COCSPRequest& request);

} // namespace ccrypto
