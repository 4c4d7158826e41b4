#include "tests/support/collected_log.h"

#include "core/log/log.h"

#include <fstream>
#include <memory>
#include <mutex>

using namespace ccrypto;

namespace {

std::mutex guard;
std::vector<std::string> collected;

} // namespace

namespace ccrypto {

CollectedLog::CollectedLog(std::uint32_t level, const std::string& path, bool profiling)
{
    clear();
    logging::Configure(
        level, profiling,
        std::make_shared<LogOutput>(LogOutput::Settings{.callback = Callback, .tag = std::string(tag), .path = path}));
}

CollectedLog::~CollectedLog()
{
    logging::Configure(0, false, nullptr);
}

void CollectedLog::Callback(const char* line)
{
    const std::lock_guard lock(guard);
    collected.emplace_back(line);
}

void CollectedLog::setLevel(std::uint32_t level) const
{
    logging::Configure(level, logging::Profiling(), logging::CurrentOutput());
}

void CollectedLog::clear() const
{
    const std::lock_guard lock(guard);
    collected.clear();
}

std::vector<std::string> CollectedLog::lines() const
{
    const std::lock_guard lock(guard);
    return collected;
}

std::vector<std::string> CollectedLog::texts() const
{
    std::vector<std::string> texts;
    for (const std::string& line : lines())
        texts.push_back(TextOfLine(line, tag));
    return texts;
}

std::string TextOfLine(const std::string& line, std::string_view tag)
{
    const std::string head = " " + std::string(tag) + " ";
    const std::size_t position = line.find(head);
    return position != std::string::npos ? line.substr(position + head.size()) : "no tag: " + line;
}

std::vector<std::string> TextsOfFile(const std::string& path, std::string_view tag)
{
    std::ifstream file(path, std::ios::binary);
    std::vector<std::string> texts;
    for (std::string line; std::getline(file, line);)
        texts.push_back(TextOfLine(line, tag));
    return texts;
}

} // namespace ccrypto
