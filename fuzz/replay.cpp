#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

// Stands in for libFuzzer's main(): feeds every file named on the command line, or found in the folders named there, to the fuzz
// target once. A find that was fixed stays in the corpus, and this shows in any sanitized build that it stays fixed.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

bool Replay(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file) {
        std::fprintf(stderr, "%s cannot be read\n", path.c_str());
        return false;
    }
    // A heap copy of the exact size lets the sanitizer see a read past the end.
    const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
    return true;
}

std::vector<std::filesystem::path> FilesOf(const std::filesystem::path& path)
{
    std::vector<std::filesystem::path> files;
    if (!std::filesystem::is_directory(path))
        files.push_back(path);
    else
        for (const auto& entry : std::filesystem::recursive_directory_iterator(path))
            if (entry.is_regular_file())
                files.push_back(entry.path());
    return files;
}

} // namespace

int main(int count, char** arguments)
{
    std::size_t replayed = 0;
    for (int index = 1; index < count; ++index)
        for (const std::filesystem::path& file : FilesOf(arguments[index])) {
            if (!Replay(file))
                return 1;
            ++replayed;
        }
    std::printf("%zu inputs replayed\n", replayed);
    return replayed == 0 ? 1 : 0;
}
