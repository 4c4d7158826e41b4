#include "tools/cryptotool/pki/ocsp_input.h"

#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/input/secret_input.h"

namespace ccrypto {

int ReadOcspIssuer(Invocation& invocation, const std::vector<std::string>& otherFiles, CertificatePtr& issuer)
{
    if (!invocation.arguments().has(ocspIssuerOption.name))
        return invocation.misuse("--issuer is needed");
    const std::string file = invocation.arguments().value(ocspIssuerOption.name);
    std::vector<std::string> files = otherFiles;
    files.push_back(file);
    const int exit = CheckOneStandardInput(invocation, files, {});
    return exit == exitDone ? ReadCertificate(invocation, file, issuer) : exit;
}

int ReadMessage(Invocation& invocation, const std::string& file, element& message)
{
    std::vector<DataBlock> blocks;
    int exit = ReadObjectsOrRefuse(invocation, file, ObjectKind::message, blocks);
    if (exit == exitDone)
        exit = RefuseSeveral(invocation, file, ObjectKind::message, blocks);
    if (exit == exitDone)
        message = std::move(blocks.front().bytes);
    return exit;
}

int ReadAnyMessage(Invocation& invocation, const std::string& file, element& message)
{
    std::vector<DataBlock> blocks;
    int exit = ReadObjects(invocation, file, ObjectKind::message, blocks);
    if (exit == exitDone)
        exit = RefuseSeveral(invocation, file, ObjectKind::message, blocks);
    message = exit == exitDone && !blocks.empty() ? std::move(blocks.front().bytes) : element();
    return exit;
}

int ReadOcspRequest(Invocation& invocation, const std::string& file, CCryptoOCSP::COCSPRequest& request)
{
    element message;
    if (const int exit = ReadMessage(invocation, file, message); exit != exitDone)
        return exit;
    StartReason();
    return request.LoadRequest(message) ? exitDone : invocation.refuse(file, LastReason("it is not an OCSP request"));
}

} // namespace ccrypto
