#include "tools/cryptotool/pki/object_input.h"

#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/input/encoding_detection.h"
#include "tools/cryptotool/input/file_input.h"

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace ccrypto {

namespace {

struct KindOfObject {
    ObjectKind kind;
    const char* what;
    std::vector<std::string_view> labels;
};

const KindOfObject& Describe(ObjectKind kind)
{
    static const KindOfObject kinds[] = {
        {ObjectKind::certificate, "certificate", {"CERTIFICATE", "X509 CERTIFICATE", "TRUSTED CERTIFICATE"}},
        {ObjectKind::list, "revocation list", {"X509 CRL", "CRL"}},
        {ObjectKind::request, "certificate request", {"CERTIFICATE REQUEST", "NEW CERTIFICATE REQUEST"}},
        {ObjectKind::message, "message", {"CMS", "PKCS7", "OCSP REQUEST", "OCSP RESPONSE"}},
    };
    return *std::ranges::find(kinds, kind, &KindOfObject::kind);
}

bool BelongsTo(const KindOfObject& kind, const DataBlock& block)
{
    return block.label.empty() || std::ranges::find(kind.labels, block.label) != kind.labels.end();
}

std::string WhatIsNotThere(ObjectKind kind)
{
    return "it holds no " + ObjectName(kind);
}

CrlPtr LoadList(const element& der)
{
    auto list = std::make_shared<CCrypto_X509_CRL>();
    return list->LoadCRL(der) ? CrlPtr(std::move(list)) : nullptr;
}

RequestPtr LoadRequest(const element& der)
{
    auto request = std::make_shared<CCryptoCertificateRequest>();
    return request->LoadRequest(der) ? RequestPtr(std::move(request)) : nullptr;
}

/// As ReadObjects(), but does not warn. \param damage why the file is read only in part; empty when it is not. \param absence for a
/// file without an object of the kind: says so, and what its first block is.
int ReadBlocks(Invocation& invocation, const std::string& file, ObjectKind kind, std::vector<DataBlock>& blocks,
               std::string& damage, std::string& absence)
{
    element bytes;
    std::string reason;
    if (!ReadWhole(invocation.console(), file, bytes, reason))
        return invocation.refuse(file, reason);
    StartReason();
    if (!SplitBlocks(std::move(bytes), blocks, reason))
        damage = reason;
    absence = WhatIsNotThere(kind);
    if (!blocks.empty() && !blocks.front().label.empty())
        absence += ", but " + blocks.front().label;
    std::erase_if(blocks, [&](const DataBlock& block) { return !BelongsTo(Describe(kind), block); });
    return exitDone;
}

/// Loads every block; `load` gives null for what does not.
template <typename Pointer, typename Load>
int ReadAll(Invocation& invocation, const std::string& file, ObjectKind kind, const Load& load, std::vector<Pointer>& objects)
{
    std::vector<DataBlock> blocks;
    if (const int exit = ReadObjectsOrWarn(invocation, file, kind, blocks); exit != exitDone)
        return exit;
    for (std::size_t index = 0; index < blocks.size(); ++index) {
        StartReason();
        if (Pointer object = load(blocks[index].bytes))
            objects.push_back(std::move(object));
        else
            invocation.warn(file, BlockName(blocks, index) + "ignored: " + LastReason(WhatIsNotThere(kind).c_str()));
    }
    return exitDone;
}

/// Loads the only block.
template <typename Pointer, typename Load>
int ReadOne(Invocation& invocation, const std::string& file, ObjectKind kind, const Load& load, Pointer& object)
{
    std::vector<DataBlock> blocks;
    if (const int exit = ReadObjectsOrRefuse(invocation, file, kind, blocks); exit != exitDone)
        return exit;
    if (const int exit = RefuseSeveral(invocation, file, kind, blocks); exit != exitDone)
        return exit;
    StartReason();
    object = load(blocks.front().bytes);
    return object != nullptr ? exitDone : invocation.refuse(file, LastReason(WhatIsNotThere(kind).c_str()));
}

CertificatePtr LoadBlock(const element& der)
{
    return LoadCertificate(der.bytes());
}

} // namespace

int ReadObjects(Invocation& invocation, const std::string& file, ObjectKind kind, std::vector<DataBlock>& blocks)
{
    std::string damage;
    std::string absence;
    const int exit = ReadBlocks(invocation, file, kind, blocks, damage, absence);
    if (exit == exitDone && !damage.empty())
        invocation.warn(file, damage);
    return exit;
}

int ReadObjectsOrWarn(Invocation& invocation, const std::string& file, ObjectKind kind, std::vector<DataBlock>& blocks)
{
    std::string damage;
    std::string absence;
    const int exit = ReadBlocks(invocation, file, kind, blocks, damage, absence);
    if (exit == exitDone && damage.empty() && blocks.empty())
        damage = absence;
    if (exit == exitDone && !damage.empty())
        invocation.warn(file, damage);
    return exit;
}

int ReadObjectsOrRefuse(Invocation& invocation, const std::string& file, ObjectKind kind, std::vector<DataBlock>& blocks)
{
    std::string damage;
    std::string absence;
    const int exit = ReadBlocks(invocation, file, kind, blocks, damage, absence);
    if (exit == exitDone && blocks.empty())
        return invocation.refuse(file, damage.empty() ? absence : damage);
    if (exit == exitDone && !damage.empty())
        invocation.warn(file, damage);
    return exit;
}

int RefuseSeveral(Invocation& invocation, const std::string& file, ObjectKind kind, const std::vector<DataBlock>& blocks)
{
    if (blocks.size() < 2)
        return exitDone;
    return invocation.refuse(file, "it holds " + std::to_string(blocks.size()) + " " + ObjectName(kind) + "s; one is wanted");
}

std::string ObjectName(ObjectKind kind)
{
    return Describe(kind).what;
}

std::string BlockName(const std::vector<DataBlock>& blocks, std::size_t index)
{
    return blocks.size() > 1 ? "block " + std::to_string(index + 1) + ": " : std::string();
}

int ReadCertificate(Invocation& invocation, const std::string& file, CertificatePtr& certificate)
{
    return ReadOne(invocation, file, ObjectKind::certificate, LoadBlock, certificate);
}

int ReadCertificates(Invocation& invocation, const std::string& file, std::vector<CertificatePtr>& certificates)
{
    return ReadAll(invocation, file, ObjectKind::certificate, LoadBlock, certificates);
}

int ReadCertificatesOrRefuse(Invocation& invocation, const std::string& file, std::vector<CertificatePtr>& certificates)
{
    std::vector<DataBlock> blocks;
    if (const int exit = ReadObjectsOrRefuse(invocation, file, ObjectKind::certificate, blocks); exit != exitDone)
        return exit;
    for (std::size_t index = 0; index < blocks.size(); ++index) {
        StartReason();
        certificates.push_back(LoadCertificate(blocks[index].bytes.bytes()));
        if (certificates.back() == nullptr)
            return invocation.refuse(file, BlockName(blocks, index) + LastReason("it is not a certificate"));
    }
    return exitDone;
}

int ReadLists(Invocation& invocation, const std::string& file, std::vector<CrlPtr>& lists)
{
    return ReadAll(invocation, file, ObjectKind::list, LoadList, lists);
}

int ReadList(Invocation& invocation, const std::string& file, CrlPtr& list)
{
    return ReadOne(invocation, file, ObjectKind::list, LoadList, list);
}

int ReadRequest(Invocation& invocation, const std::string& file, RequestPtr& request)
{
    return ReadOne(invocation, file, ObjectKind::request, LoadRequest, request);
}

} // namespace ccrypto
