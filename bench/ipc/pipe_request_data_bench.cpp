#include "tests/ipc/wire_bytes.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

using namespace ccrypto;

namespace {

constexpr std::uint32_t items = 1000;
constexpr char text[] = "C:\\Users\\somebody\\Documents\\contract.pdf";

/// Every second item is a text, every other an integer; built, received and read back.
void BuildAndRead(benchmark::State& state)
{
    for (auto _ : state) {
        wire::Message message(22);
        for (std::uint32_t index = 0; index < items; index += 2) {
            message.AddInt(index);
            message.AddData(text);
        }
        wire::Message received(22);
        received.Announce(message.position());
        std::memcpy(received.bodyBytes(), message.bodyBytes(), message.position());

        std::uint32_t sum = 0;
        for (std::uint32_t index = 0; index < items; index += 2) {
            std::uint32_t number = 0;
            const char* read = nullptr;
            if (!received.GetInt(number, false) || !received.GetString(read, index + 2 == items))
                std::abort();
            sum += number + static_cast<unsigned char>(read[3]);
        }
        benchmark::DoNotOptimize(sum);
    }
}

/// The same bytes, item by item, into fresh storage, over, and out of it again.
void CopyItems(benchmark::State& state)
{
    const std::string integer = wire::Int(7);
    const std::string words = wire::Text(text);
    const std::size_t size = items / 2 * (integer.size() + words.size());
    for (auto _ : state) {
        std::vector<char> built(size);
        char* end = built.data();
        for (std::uint32_t index = 0; index < items; index += 2) {
            std::memcpy(end, integer.data(), integer.size());
            std::memcpy(end + integer.size(), words.data(), words.size());
            end += integer.size() + words.size();
        }
        const std::vector<char> received(built);

        std::uint32_t sum = 0;
        const char* next = received.data();
        for (std::uint32_t index = 0; index < items; index += 2) {
            std::uint32_t number;
            char read[sizeof text];
            std::memcpy(&number, next + 5, sizeof number);
            std::memcpy(read, next + integer.size() + 5, sizeof read);
            next += integer.size() + words.size();
            sum += number + static_cast<unsigned char>(read[3]);
            benchmark::DoNotOptimize(read);
        }
        benchmark::DoNotOptimize(sum);
    }
}

BENCHMARK(BuildAndRead)->Name("pipe message of 1000 items");
BENCHMARK(CopyItems)->Name("pipe message of 1000 items vs memcpy");

} // namespace
