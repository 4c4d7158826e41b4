#include "core/thread.h"

#include "core/auto_logger.h"
#include "core/platform/process.h"

#include <algorithm>

namespace {

// What the debugging runtime fills fresh memory with.
constexpr std::uint32_t uninitialised = 0xCDCDCDCD;

} // namespace

CCryptoThread::~CCryptoThread()
{
    if (running_)
        thread_.wait(waitForever);
}

void CCryptoThread::run()
{
    if (body_)
        body_();
}

void CCryptoThread::Enter(void* argument)
{
    CCryptoThread& self = *static_cast<CCryptoThread*>(argument);
    self.id_ = platform::CurrentThreadId();
    self.run();
    // From here on the owner may destroy the object.
    self.running_ = false;
}

bool CCryptoThread::start()
{
    CCryptoAutoLogger logger("CCryptoThread::start", 1);

    if (running_.exchange(true))
        return logger.setRetValue(3, false, "Thread is already running");
    if (!thread_.start(Enter, this)) {
        logger.setLastWindowsError();
        running_ = false;
        return false;
    }
    id_ = thread_.id();
    logger.WriteLog("Start thread: %04X", id());
    return logger.setResult(true);
}

bool CCryptoThread::wait(std::uint32_t totalTimeout, std::uint32_t responseTime)
{
    CCryptoAutoLogger logger("CCryptoThread::wait", 1);

    logger.WriteLog("ThreadID=%04X", id());
    if (id() == uninitialised)
        logger.WriteError("FATAL ERROR!");
    if (!running_)
        return logger.setResult(true);

    logger.WriteLog("Running");
    std::uint32_t remaining = totalTimeout;
    if (responseTime != 0) {
        logger.WriteLog("responseTime check");
        if (thread_.wait(responseTime))
            return logger.setResult(true);
        logger.WriteLog("Still running");
        if (totalTimeout != waitForever)
            remaining = totalTimeout - std::min(totalTimeout, responseTime);
    }
    if (!thread_.wait(remaining)) {
        logger.setLastWindowsError();
        thread_.terminate();
        thread_.close();
        running_ = false;
        return false;
    }
    thread_.close();
    return logger.setResult(true);
}
