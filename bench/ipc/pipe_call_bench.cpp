#include "ipc/pipe_client.h"
#include "ipc/pipe_server.h"
#include "tests/ipc/raw_peers.h"
#include "tests/ipc/wire_bytes.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <thread>

using namespace ccrypto;

namespace {

std::string Text(const benchmark::State& state)
{
    return std::string(static_cast<std::size_t>(state.range(0)), 'x');
}

void Fail(const char* what)
{
    std::fprintf(stderr, "pipe_call_bench: %s\n", what);
    std::exit(1);
}

/// One call with a text, answered with the same text; both ends are the library's.
void LibraryCall(benchmark::State& state)
{
    const std::string name = peers::FreshPipeName();
    const std::string text = Text(state);
    CCryptoPipeServer server(name.c_str(), false, false);
    std::thread thread([&] {
        while (server.Read()) {
            server.StartMessage();
            server.AddData(text.c_str());
            server.Write();
        }
    });
    CCryptoPipeClient client(name.c_str(), 4, false);
    for (auto _ : state) {
        client.StartMessage();
        client.AddData(text.c_str());
        if (!client.Call())
            Fail("the call failed");
    }
    server.Stop();
    thread.join();
}

/// The same bytes in the same messages, both ends by blocking Win32 calls and nothing else.
void BareCall(benchmark::State& state)
{
    const std::string name = peers::FreshPipeName();
    const std::string body = wire::Text(Text(state));
    const std::string header = wire::Header(4, 0, static_cast<std::uint32_t>(body.size()));
    const platform::ScopedHandle pipe(
        CreateNamedPipeA(name.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE, 1, 0, 10, 0, nullptr));
    std::atomic<bool> stop = false;
    std::thread thread([&] {
        while (!stop) {
            ConnectNamedPipe(pipe.get(), nullptr);
            peers::ReadBytes(pipe.get(), 12);
            peers::ReadBytes(pipe.get(), static_cast<std::uint32_t>(body.size()));
            peers::WriteMessage(pipe.get(), header);
            peers::WriteMessage(pipe.get(), body);
            DisconnectNamedPipe(pipe.get());
        }
    });
    const auto call = [&] {
        const platform::ScopedHandle client = peers::Connect(name);
        return peers::WriteMessage(client.get(), header) && peers::WriteMessage(client.get(), body) &&
               peers::ReadBytes(client.get(), 12) == header &&
               peers::ReadBytes(client.get(), static_cast<std::uint32_t>(body.size())) == body;
    };
    for (auto _ : state) {
        if (!call())
            Fail("the bare call failed");
    }
    stop = true;
    call();
    thread.join();
}

BENCHMARK(LibraryCall)->Name("pipe call")->Arg(14)->Arg(64 * 1024)->UseRealTime();
BENCHMARK(BareCall)->Name("pipe call vs bare Win32")->Arg(14)->Arg(64 * 1024)->UseRealTime();

} // namespace
