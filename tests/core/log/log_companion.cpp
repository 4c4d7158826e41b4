#include "core/log/log.h"
#include "core/log/log_writers.h"
#include "core/platform/named_mutex.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using namespace ccrypto;

// Usage: log_companion FILE GATE NUMBER THREADS LINES: says "ready", waits until the mutex GATE can be had, and writes LINES lines
// from each of its threads to the log file FILE.
int main(int count, char** words)
{
    platform::NamedMutex gate;
    if (count != 6 || !gate.open(words[2]))
        return 1;
    const int threadCount = std::atoi(words[4]);
    const int lineCount = std::atoi(words[5]);
    logging::Configure(1, false, std::make_shared<LogOutput>(LogOutput::Settings{.tag = "companions", .path = words[1]}));
    std::puts("ready");
    std::fflush(stdout);
    if (!gate.lock(30000))
        return 2;
    gate.unlock();

    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([=] {
            for (int line = 0; line < lineCount; ++line)
                WriteLog_G("process %s thread %d line %d %s.", words[3], thread, line, std::string(300, 'x').c_str());
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    logging::Configure(0, false, nullptr);
    return 0;
}
