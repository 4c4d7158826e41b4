#include "core/diagnostics/auto_logger.h"
#include "core/log/log.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <optional>

using namespace ccrypto;

// Usage: memory_companion STAGE: an operation fails with the log on, and from STAGE on ("open", "reason" or "close") there is no
// memory. Says "fatal" when the log says so, "terminated" when an exception went where it may not.

namespace {

bool outOfMemory = false;

void SayFatal(const char* line)
{
    if (std::strstr(line, "FATAL MEMORY ALLOCATION ERROR") == nullptr)
        return;
    std::puts("fatal");
    std::fflush(stdout);
}

[[noreturn]] void SayTerminated()
{
    std::puts("terminated");
    std::fflush(stdout);
    std::_Exit(3);
}

} // namespace

void* operator new(std::size_t size)
{
    if (void* const block = outOfMemory ? nullptr : std::malloc(size))
        return block;
    throw std::bad_alloc();
}

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    std::free(block);
}

int main(int count, char** words)
{
    const auto begin = [&](const char* stage) { outOfMemory = outOfMemory || count != 2 || std::strcmp(words[1], stage) == 0; };
    std::set_terminate(SayTerminated);
    logging::Configure(9, false,
                       std::make_shared<LogOutput>(LogOutput::Settings{.callback = SayFatal, .tag = "memory", .path = {}}));
    begin("open");
    std::optional<CCryptoAutoLogger> logger;
    logger.emplace("MemoryCompanion::AnOperationWithALongName", ccrypto::LoggerMode::resultExpected, "%s", "arguments");
    begin("reason");
    if (outOfMemory)
        logger->fail(false, "a reason that is longer than what a string holds in itself");
    else
        logger->fail(false);
    begin("close");
    logger.reset();
    return 0;
}
