// Both ends of a pipe in one program: a thread asks, the main thread answers. Windows only.

#include "ipc/ipc.h"

#include <cstdio>
#include <thread>

namespace {

constexpr const char* pipeName = R"(\\.\pipe\CCryptoExample)";
constexpr std::int32_t addRequest = 1;

bool Ask(std::uint32_t left, std::uint32_t right, std::uint32_t& sum)
{
    CCryptoPipeClient client(pipeName, addRequest, true);
    return client.AddInt(left) && client.AddInt(right) && client.Call() && client.GetInt(sum, true);
}

bool AnswerOne(CCryptoPipeServer& server)
{
    std::uint32_t left = 0;
    std::uint32_t right = 0;
    if (!server.Read() || server.requestType() != addRequest || !server.GetInt(left, false) || !server.GetInt(right, true))
        return false;
    server.StartMessage();
    return server.AddInt(left + right) && server.Write();
}

} // namespace

int main()
{
    CCryptoPipeServer server(pipeName, false, true);
    if (!server.isListening())
        return 1;
    std::uint32_t sum = 0;
    bool asked = false;
    std::thread client([&] { asked = Ask(2, 3, sum); });
    const bool answered = AnswerOne(server);
    client.join();
    std::printf("2 + 3 = %u\n", sum);
    return asked && answered ? 0 : 1;
}
