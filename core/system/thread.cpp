#include "core/system/thread.h"

#include "core/diagnostics/auto_logger.h"
#include "core/diagnostics/operation_records.h"
#include "core/log/log.h"
#include "core/log/log_writers.h"
#include "core/memory/out_of_memory.h"
#include "core/platform/process.h"

#include <algorithm>
#include <exception>
#include <new>

using namespace ccrypto;

namespace {

// What the debugging runtime fills fresh memory with.
constexpr std::uint32_t uninitialised = 0xCDCDCDCD;

/// What a thread may need to end once its work is done.
constexpr std::uint32_t leavingTime = 1000;

/// The object whose thread is the calling one. Its owner may destroy it before the thread has left, so it is only compared.
thread_local const CCryptoThread* objectOfThisThread = nullptr;

} // namespace

CCryptoThread::~CCryptoThread()
{
    if (isThisThread()) {
        WriteErrorEx_G("CCryptoThread::~CCryptoThread: Destroyed by its own thread");
        objectOfThisThread = nullptr;
        return;
    }
    static_cast<void>(thread_.wait(waitForever));
}

bool CCryptoThread::isThisThread() const
{
    return thread_.isOpen() && objectOfThisThread == this;
}

void CCryptoThread::run()
{
    if (body_)
        body_();
}

void CCryptoThread::runToItsEnd()
{
    try {
        run();
    } catch (const std::bad_alloc&) {
        EndOutOfMemory();
    } catch (const std::exception& failure) {
        WriteErrorEx_G("CCryptoThread::run: An exception ended the thread: %s", failure.what());
    } catch (...) {
        // No exception of the language: the thread leaves by the system's call, which unwinds the stack.
        if (std::current_exception() == nullptr)
            throw;
        WriteErrorEx_G("CCryptoThread::run: An exception ended the thread");
    }
}

void CCryptoThread::Enter(void* argument)
{
    CCryptoThread& self = *static_cast<CCryptoThread*>(argument);
    self.id_ = platform::CurrentThreadId();
    objectOfThisThread = &self;
    self.runToItsEnd();
    if (objectOfThisThread != &self)
        return;
    // From here on the owner may destroy the object.
    self.running_ = false;
}

bool CCryptoThread::start()
{
    CCryptoAutoLogger logger("CCryptoThread::start", ccrypto::LoggerMode::resultOptional);

    if (running_.exchange(true))
        return logger.fail(false, "Thread is already running");
    if (!thread_.start(Enter, this)) {
        logger.setLastWindowsError();
        running_ = false;
        return false;
    }
    id_ = thread_.id();
    logger.WriteLog("Start thread: %04X", id());
    return logger.setResult(true);
}

/// Waits for the system's thread, which outlasts `run`, and gives its handle back.
bool CCryptoThread::awaitEnd(std::uint32_t milliseconds)
{
    if (!thread_.wait(milliseconds))
        return false;
    thread_.close();
    running_ = false;
    return true;
}

bool CCryptoThread::wait(std::uint32_t totalTimeout, std::uint32_t responseTime)
{
    CCryptoAutoLogger logger("CCryptoThread::wait", ccrypto::LoggerMode::resultOptional);

    logger.WriteLog("ThreadID=%04X", id());
    if (id() == uninitialised)
        logger.WriteError("FATAL ERROR!");
    if (isThisThread())
        return logger.fail(false, "A thread cannot wait for itself");
    if (!running_ && awaitEnd(leavingTime))
        return logger.setResult(true);

    logger.WriteLog("Running");
    std::uint32_t remaining = totalTimeout;
    if (responseTime != 0) {
        logger.WriteLog("responseTime check");
        if (awaitEnd(responseTime))
            return logger.setResult(true);
        logger.WriteLog("Still running");
        if (totalTimeout != waitForever)
            remaining = totalTimeout - std::min(totalTimeout, responseTime);
    }
    if (awaitEnd(remaining) || (!running_ && awaitEnd(leavingTime)))
        return logger.setResult(true);
    logger.setLastWindowsError();
    const logging::ForceUnderWay underWay;
    if (!logging::EndByForce(id(), [this] { return thread_.terminate(logging::NoLineUnderWay) && awaitEnd(0); }))
        return logger.fail(false, "The thread cannot be ended");
    return false;
}
