#include "deflate/crc32.h"
#include "deflate/deflate_stream.h"

#include <benchmark/benchmark.h>
#include <zlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

using namespace ccrypto;

namespace {

using Bytes = std::vector<std::uint8_t>;

/// What a packed size may exceed the rival's by.
constexpr double maxSurplus = 1.03;

Bytes FileBytes(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The C++ files of this tree, concatenated in the order of their names.
Bytes Sources()
{
    std::vector<std::filesystem::path> paths;
    for (const char* module : {"core", "asn1", "ipc", "shellext", "tools", "tests"}) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(std::filesystem::path(SOURCE_TREE) / module)) {
            if (entry.path().extension() == ".cpp" || entry.path().extension() == ".h")
                paths.push_back(entry.path());
        }
    }
    std::sort(paths.begin(), paths.end());
    Bytes all;
    for (const auto& path : paths) {
        const Bytes bytes = FileBytes(path);
        all.insert(all.end(), bytes.begin(), bytes.end());
    }
    return all;
}

struct Subject {
    const char* name;
    Bytes bytes;
};

const std::vector<Subject>& Subjects()
{
    static const std::vector<Subject> subjects = {{"text", Sources()},
                                                  {"program", FileBytes("/proc/self/exe")},
                                                  {"certificates", FileBytes("/etc/ssl/certs/ca-certificates.crt")}};
    return subjects;
}

Bytes ZlibPacked(const Bytes& bytes, int level)
{
    z_stream stream{};
    deflateInit2(&stream, level, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
    Bytes packed(deflateBound(&stream, bytes.size()));
    stream.next_in = const_cast<Bytef*>(bytes.data());
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = packed.data();
    stream.avail_out = static_cast<uInt>(packed.size());
    const int result = deflate(&stream, Z_FINISH);
    packed.resize(result == Z_STREAM_END ? stream.total_out : 0);
    deflateEnd(&stream);
    return packed;
}

std::size_t ZlibUnpacked(const Bytes& packed, Bytes& target)
{
    z_stream stream{};
    inflateInit2(&stream, 15 + 16);
    stream.next_in = const_cast<Bytef*>(packed.data());
    stream.avail_in = static_cast<uInt>(packed.size());
    std::size_t total = 0;
    int result = Z_OK;
    while (result == Z_OK) {
        stream.next_out = target.data();
        stream.avail_out = static_cast<uInt>(target.size());
        result = inflate(&stream, Z_NO_FLUSH);
        total += target.size() - stream.avail_out;
    }
    inflateEnd(&stream);
    return result == Z_STREAM_END ? total : 0;
}

std::size_t OwnPacked(const Bytes& bytes, int level)
{
    std::size_t total = 0;
    CDeflateStream stream;
    const auto count = [&](std::span<const std::uint8_t> piece) {
        total += piece.size();
        return true;
    };
    return stream.StartDeflate(DeflateFormat::gzip, count, level) && stream.Write(bytes) && stream.Finish() ? total : 0;
}

std::size_t OwnUnpacked(const Bytes& packed)
{
    std::size_t total = 0;
    CDeflateStream stream;
    stream.StartInflate(DeflateFormat::gzip, [&](std::span<const std::uint8_t> piece) {
        total += piece.size();
        return true;
    });
    return stream.Write(packed) && stream.Finish() ? total : 0;
}

void Measure(benchmark::State& state, const Bytes& bytes, std::size_t expected, const std::function<std::size_t()>& run)
{
    for (auto _ : state) {
        const std::size_t size = run();
        if (size == 0 || size > expected) {
            state.SkipWithError("The size is wrong");
            return;
        }
        state.counters["size"] = static_cast<double>(size);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(bytes.size()));
}

void RegisterInflate(const Subject& subject)
{
    const std::string name = std::string("inflate ") + subject.name;
    const Bytes& bytes = subject.bytes;
    const Bytes packed = ZlibPacked(bytes, 6);
    benchmark::RegisterBenchmark(name.c_str(), [&bytes, packed](benchmark::State& state) {
        Measure(state, bytes, bytes.size(), [&] { return OwnUnpacked(packed); });
    });
    benchmark::RegisterBenchmark((name + " vs zlib").c_str(), [&bytes, packed](benchmark::State& state) {
        Bytes target(65536);
        Measure(state, bytes, bytes.size(), [&] { return ZlibUnpacked(packed, target); });
    });
}

void RegisterDeflate(const Subject& subject, int level)
{
    const std::string name = "deflate " + std::to_string(level) + " " + subject.name;
    const Bytes& bytes = subject.bytes;
    const auto most = static_cast<std::size_t>(static_cast<double>(ZlibPacked(bytes, level).size()) * maxSurplus);
    benchmark::RegisterBenchmark(name.c_str(), [&bytes, most, level](benchmark::State& state) {
        Measure(state, bytes, most, [&] { return OwnPacked(bytes, level); });
    });
    benchmark::RegisterBenchmark((name + " vs zlib").c_str(), [&bytes, most, level](benchmark::State& state) {
        Measure(state, bytes, most, [&] { return ZlibPacked(bytes, level).size(); });
    });
}

void OwnChecksum(benchmark::State& state)
{
    const Bytes& bytes = Subjects()[0].bytes;
    for (auto _ : state) {
        CCryptoCRC32 checksum;
        checksum.update(bytes);
        benchmark::DoNotOptimize(checksum.value());
    }
}

void ZlibChecksum(benchmark::State& state)
{
    const Bytes& bytes = Subjects()[0].bytes;
    for (auto _ : state)
        benchmark::DoNotOptimize(crc32(0, bytes.data(), static_cast<uInt>(bytes.size())));
}

BENCHMARK(OwnChecksum)->Name("CRC-32");
BENCHMARK(ZlibChecksum)->Name("CRC-32 vs zlib");

[[maybe_unused]] const bool registered = [] {
    for (const Subject& subject : Subjects()) {
        if (subject.bytes.empty())
            continue;
        RegisterInflate(subject);
        for (const int level : {1, 6, 9})
            RegisterDeflate(subject, level);
    }
    return true;
}();

} // namespace
