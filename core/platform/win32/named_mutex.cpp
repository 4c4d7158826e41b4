#include "core/platform/named_mutex.h"

#include "core/base/c_text.h"
#include "core/platform/win32/wide.h"

#include <windows.h>

#include <array>

namespace ccrypto::platform {

namespace {

/// A descriptor that lets everyone wait for the object and no one do more.
class EveryoneMayWait {
public:
    EveryoneMayWait()
    {
        std::array<unsigned char, SECURITY_MAX_SID_SIZE> everyone{};
        DWORD size = static_cast<DWORD>(everyone.size());
        made_ = CreateWellKnownSid(WinWorldSid, nullptr, everyone.data(), &size) &&
                InitializeAcl(list(), sizeof(list_), ACL_REVISION) &&
                AddAccessAllowedAce(list(), ACL_REVISION, SYNCHRONIZE, everyone.data()) &&
                InitializeSecurityDescriptor(&descriptor_, SECURITY_DESCRIPTOR_REVISION) &&
                SetSecurityDescriptorDacl(&descriptor_, TRUE, list(), FALSE);
    }
    EveryoneMayWait(const EveryoneMayWait&) = delete;
    EveryoneMayWait& operator=(const EveryoneMayWait&) = delete;

    bool made() const { return made_; }
    SECURITY_ATTRIBUTES inheritable() { return {sizeof(SECURITY_ATTRIBUTES), &descriptor_, TRUE}; }

private:
    ACL* list() { return reinterpret_cast<ACL*>(list_); }

    SECURITY_DESCRIPTOR descriptor_{};
    alignas(ACL) unsigned char list_[sizeof(ACL) + sizeof(ACCESS_ALLOWED_ACE) + SECURITY_MAX_SID_SIZE]{};
    bool made_ = false;
};

} // namespace

void NamedMutex::Kind::close(Value value)
{
    CloseHandle(value);
}

bool NamedMutex::open(const char* name)
{
    close();
    if (!isUsable(OrEmpty(name))) {
        SetLastError(ERROR_INVALID_NAME);
        return false;
    }
    const std::wstring wide = Utf8ToWide(name);
    state_.reset(OpenMutexW(SYNCHRONIZE, FALSE, wide.c_str()));
    if (isOpen() || GetLastError() != ERROR_FILE_NOT_FOUND)
        return isOpen();

    EveryoneMayWait everyone;
    if (!everyone.made())
        return false;
    SECURITY_ATTRIBUTES attributes = everyone.inheritable();
    // Asks for no more than everyone is granted, so that it also succeeds when another user has created the mutex just now.
    state_.reset(CreateMutexExW(&attributes, wide.c_str(), 0, SYNCHRONIZE));
    return isOpen();
}

bool NamedMutex::lock(std::uint32_t milliseconds)
{
    if (!isOpen())
        return false;
    const DWORD result = WaitForSingleObject(state_.get(), milliseconds);
    return result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
}

void NamedMutex::unlock()
{
    if (isOpen())
        ReleaseMutex(state_.get());
}

} // namespace ccrypto::platform
