#include "tools/cryptotool/pki/store_input.h"

#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/input/encoding_detection.h"
#include "tools/cryptotool/input/file_input.h"

#include <utility>
#include <vector>

namespace ccrypto {

int ReadStore(Invocation& invocation, const std::string& name, StoreAccess access, CCryptoPKCS12& file)
{
    if (const int exit = CheckOneStandardInput(invocation, {name}, {passwordSecret}); exit != exitDone)
        return exit;
    element bytes;
    std::string reason;
    if (!ReadWhole(invocation.console(), name, bytes, reason))
        return invocation.refuse(name, reason);
    std::vector<DataBlock> blocks;
    StartReason();
    if (!SplitBlocks(std::move(bytes), blocks, reason))
        return invocation.refuse(name, reason);
    if (blocks.empty())
        return invocation.refuse(name, "it is empty");
    const auto octets = blocks.front().bytes.bytes();

    constexpr const char* otherwise = "it is not a PKCS#12 file";
    if (access == StoreAccess::outline) {
        const PKCS12Outcome outcome = file.Read(octets);
        const bool isRead = outcome == PKCS12Outcome::locked || outcome == PKCS12Outcome::opened;
        return isRead ? exitDone : invocation.refuse(name, LastReason(otherwise));
    }
    int exit = exitDone;
    const auto ask = [&](element& password) {
        exit = ReadSecret(invocation, passwordSecret, Asking::once, password);
        return exit == exitDone;
    };
    if (!file.Load(octets, ask))
        return exit != exitDone ? exit : invocation.refuse(name, LastReason(otherwise));
    if (!file.hasMac())
        invocation.warn(name, "it has no MAC: what it holds may come from anybody");
    return exitDone;
}

} // namespace ccrypto
