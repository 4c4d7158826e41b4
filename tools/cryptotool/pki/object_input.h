#pragma once

#include "asn1/der/pem.h"
#include "pki/x509/certificate.h"
#include "pki/x509/certificate_request.h"
#include "pki/x509/crl.h"
#include "tools/cryptotool/cli/invocation.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

// Reading files of certificates, lists and messages: DER, PEM, base64 or hexadecimal text, PEM with several blocks.

namespace ccrypto {

/// The kinds of objects, by the labels of their PEM blocks.
enum class ObjectKind { certificate, list, request, message };

/// The blocks of a file that may hold an object of this kind: those of PEM whose label says so, or what is not PEM. A file that is
/// damaged gives what stands before the damage, and a warning. \return exitDone, also for a file without such a block; or the exit
/// code after the reason was printed, when it cannot be read.
int ReadObjects(Invocation& invocation, const std::string& file, ObjectKind kind, std::vector<DataBlock>& blocks);
/// The same, with a warning for a file without such a block.
int ReadObjectsOrWarn(Invocation& invocation, const std::string& file, ObjectKind kind, std::vector<DataBlock>& blocks);
/// The same, and the file must have at least one such block. \return exitRefused, too, when there is none.
int ReadObjectsOrRefuse(Invocation& invocation, const std::string& file, ObjectKind kind, std::vector<DataBlock>& blocks);

/// For what needs one object: the first of several is not taken in silence. \return exitDone for at most one block, else
/// exitRefused after the reason was printed.
int RefuseSeveral(Invocation& invocation, const std::string& file, ObjectKind kind, const std::vector<DataBlock>& blocks);

/// "certificate", "revocation list", "certificate request", "message".
std::string ObjectName(ObjectKind kind);
/// Where a block stands, for messages: "block 2: "; empty for the only one.
std::string BlockName(const std::vector<DataBlock>& blocks, std::size_t index);

/// The one certificate of the file. \return exitDone, or the exit code after the reason was printed, also for several.
int ReadCertificate(Invocation& invocation, const std::string& file, CertificatePtr& certificate);
/// All of the file that load; a warning says which do not. \return exitDone, or the exit code after the reason was printed, when
/// the file cannot be read.
int ReadCertificates(Invocation& invocation, const std::string& file, std::vector<CertificatePtr>& certificates);
/// The same, but all must load, and there must be one. \return exitRefused, too, otherwise.
int ReadCertificatesOrRefuse(Invocation& invocation, const std::string& file, std::vector<CertificatePtr>& certificates);
/// As ReadCertificates() for revocation lists.
int ReadLists(Invocation& invocation, const std::string& file, std::vector<CrlPtr>& lists);
/// The one list of the file. \return as ReadCertificate().
int ReadList(Invocation& invocation, const std::string& file, CrlPtr& list);

using RequestPtr = std::shared_ptr<const CCryptoCertificateRequest>;
/// The one certificate request of the file. \return as ReadCertificate().
int ReadRequest(Invocation& invocation, const std::string& file, RequestPtr& request);

} // namespace ccrypto
