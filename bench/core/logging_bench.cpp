#include "core/diagnostics/auto_logger.h"
#include "core/log/log.h"
#include "core/platform/file.h"
#include "core/platform/named_mutex.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>
#include <string>

using namespace ccrypto;

namespace {

[[gnu::noinline]] void EmptyCall(const char* name)
{
    benchmark::DoNotOptimize(name);
}

void LoggerOff(benchmark::State& state)
{
    for (auto _ : state) {
        CCryptoAutoLogger logger("CCryptoPipeClient::OpenPipe");
        benchmark::DoNotOptimize(&logger);
        benchmark::ClobberMemory();
    }
}

void EmptyCallAlone(benchmark::State& state)
{
    for (auto _ : state)
        EmptyCall("CCryptoPipeClient::OpenPipe");
}

BENCHMARK(LoggerOff)->Name("scoped logger, log off");
BENCHMARK(EmptyCallAlone)->Name("scoped logger, log off vs empty call");

void LoggerOffWithArguments(benchmark::State& state)
{
    for (auto _ : state) {
        CCryptoAutoLogger logger("CCryptoFile::Open", ccrypto::LoggerMode::resultExpected, "filename=%s, mode=%d", "a.pdf", 1);
        benchmark::DoNotOptimize(&logger);
        benchmark::ClobberMemory();
    }
}

BENCHMARK(LoggerOffWithArguments)->Name("scoped logger with arguments, log off");
BENCHMARK(EmptyCallAlone)->Name("scoped logger with arguments, log off vs empty call");

constexpr const char* tag = "logging_bench";
constexpr const char* lineText = "Request of type 22 carries 3 file names";

/// A log file in the temporary folder, removed at the end.
class LogFile {
public:
    LogFile() : path_((std::filesystem::temp_directory_path() / "logging_bench.LOG").string()) {}
    ~LogFile() { platform::File::Remove(path_.c_str()); }

    const std::string& path() const { return path_; }

private:
    std::string path_;
};

void LogLineLevel5(benchmark::State& state)
{
    const LogFile file;
    logging::Configure(5, false, std::make_shared<LogOutput>(LogOutput::Settings{.tag = tag, .path = file.path()}));
    {
        CCryptoAutoLogger logger("LogLineLevel5", ccrypto::LoggerMode::quiet);
        for (auto _ : state)
            logger.WriteLog("%s", lineText);
    }
    logging::Configure(0, false, nullptr);
}

void BareAppend(benchmark::State& state)
{
    const LogFile file;
    platform::NamedMutex mutex;
    if (!mutex.open((std::string("AutoLogger_") + tag).c_str()))
        state.SkipWithError("The mutex cannot be opened");
    const std::string line = std::string("2026-11-22 20:53:07:042 1A2C 0F30 ") + tag + " -" + lineText + "\n";
    for (auto _ : state) {
        if (!mutex.lock(1000)) {
            state.SkipWithError("The mutex is not to be had");
            break;
        }
        platform::File appended;
        if (!appended.open(file.path().c_str(), platform::FileMode::append) ||
            !appended.append(line.data(), static_cast<std::uint32_t>(line.size())))
            state.SkipWithError("The file cannot be written");
        appended.close();
        mutex.unlock();
    }
}

BENCHMARK(LogLineLevel5)->Name("log line to file")->UseRealTime();
BENCHMARK(BareAppend)->Name("log line to file vs bare append")->UseRealTime();

} // namespace
