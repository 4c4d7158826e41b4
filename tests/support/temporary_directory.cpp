#include "tests/support/temporary_directory.h"

#include "core/platform/process.h"

#include <atomic>
#include <fstream>
#include <stdexcept>

using namespace ccrypto;

namespace ccrypto {

TemporaryDirectory::TemporaryDirectory()
{
    static std::atomic<unsigned> count;
    path_ = std::filesystem::temp_directory_path() /
            ("core_tests_" + std::to_string(platform::CurrentProcessId()) + "_" + std::to_string(++count));
    std::filesystem::create_directories(path_);
}

TemporaryDirectory::~TemporaryDirectory()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path TemporaryDirectory::create(const std::filesystem::path& name) const
{
    std::filesystem::path file = path_ / name;
    std::filesystem::create_directories(file.parent_path());
    if (!std::ofstream(file))
        throw std::runtime_error("a temporary file cannot be made");
    return file;
}

std::string TemporaryDirectory::operator/(std::u8string_view name) const
{
    const std::u8string path = (path_ / std::filesystem::path(name)).u8string();
    return {path.begin(), path.end()};
}

} // namespace ccrypto
