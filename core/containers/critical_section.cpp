#include "core/containers/critical_section.h"

#include "core/log/log_writers.h"
#include "core/platform/process.h"

#include <thread>

using namespace ccrypto;

namespace {

constexpr std::uint32_t alive = 0x12345678;
constexpr std::uint32_t destroyed = 0x87654321;
constexpr std::uint32_t gettingReady = 0x12340000;

} // namespace

CCryptoCS::~CCryptoCS()
{
    if (entered_)
        WriteErrorEx_G("CCryptoCS::~CCryptoCS: CS owned while being destructed");
    // While someone owns it, others may wait for it in the system: the owner's leaving wakes them, and they find it destroyed.
    if (state_.exchange(destroyed) == alive && section_.ownerThreadId() == 0)
        section_.destroy();
}

bool CCryptoCS::makeReady()
{
    std::uint32_t state = state_.load(std::memory_order_acquire);
    while (state != alive) {
        if (state == destroyed) {
            WriteLog_G("CS already destroyed");
            return false;
        }
        if (state == gettingReady) {
            std::this_thread::yield();
            state = state_.load(std::memory_order_acquire);
        } else if (state_.compare_exchange_weak(state, gettingReady, std::memory_order_acquire)) {
            section_.initialize();
            entered_ = false;
            state_.store(alive, std::memory_order_release);
            state = alive;
        }
    }
    return true;
}

void CCryptoCS::reportOwner(const char* action) const
{
    // The callback that gets the line may wait for a section of its own. The log hands a thread that is in its callback no other
    // line, so a message never leads to another one.
    WriteLog_G("%s (%s); Waiting thread %04X, lockCount=%d, recursionCount=%d", action, name(), section_.ownerThreadId(),
               section_.lockCount(), section_.recursionCount());
}

bool CCryptoCS::enter(LockMode mode)
{
    if (!makeReady())
        return false;
    if (!section_.tryEnter()) {
        if (mode != LockMode::quiet)
            reportOwner(mode == LockMode::blocking ? "Blocking" : "Skipping");
        if (mode == LockMode::trying)
            return false;
        section_.enter();
    }
    if (state_ == destroyed) {
        section_.leave();
        WriteLog_G("CS already destroyed");
        return false;
    }
    entered_ = true;
    return true;
}

void CCryptoCS::leave()
{
    const bool gone = state_ != alive;
    if (gone)
        WriteLog_G("CS already destroyed");
    if (section_.ownerThreadId() != platform::CurrentThreadId()) {
        if (!gone)
            WriteErrorEx_G("Critical section not owned (%s)", name());
        return;
    }
    if (section_.recursionCount() == 1)
        entered_ = false;
    section_.leave();
}

CCryptoCSLock::CCryptoCSLock(CCryptoCS* section, LockMode mode)
    : section_(section != nullptr && section->enter(mode) ? section : nullptr)
{
}

CCryptoCSLock::~CCryptoCSLock()
{
    if (section_ != nullptr)
        section_->leave();
}
