#include "tools/cryptotool/output/output.h"

#include "core/platform/process.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/text/safe_text.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace ccrypto {

namespace {

constexpr std::size_t bufferSize = 1U << 16;
constexpr int maxNames = 100;

std::filesystem::path PathOf(const std::string& name)
{
    return {std::u8string(name.begin(), name.end())};
}

std::string NameOf(const std::filesystem::path& path)
{
    const std::u8string name = path.u8string();
    return {name.begin(), name.end()};
}

/// The file that a link, or a chain of links, leads to, whether it exists or not. \return false for a circle.
bool FollowLinks(std::filesystem::path path, std::filesystem::path& followed)
{
    constexpr int maxLinks = 40;
    std::error_code error;
    for (int count = 0; count < maxLinks; ++count) {
        if (!std::filesystem::is_symlink(std::filesystem::symlink_status(path, error))) {
            followed = path;
            return true;
        }
        // A relative target counts from the folder of the link; an absolute one replaces it.
        path = path.parent_path() / std::filesystem::read_symlink(path, error);
    }
    return false;
}

} // namespace

Output::Output(Console& console, const std::string& name, Content content)
    : console_(console), name_(name.empty() ? "-" : name), content_(content)
{
}

Output::~Output()
{
    file_.close();
    if (temporary_.empty())
        return;
    platform::File::Remove(temporary_.c_str());
    RemoveWhenInterrupted({});
}

bool Output::fail(std::string reason)
{
    reason_ = std::move(reason);
    return false;
}

bool Output::open()
{
    if (name_ == "-") {
        const bool refused = content_ == Content::binary && console_.outputIsTerminal();
        return !refused || fail("binary data is not written to a terminal; use -o FILE");
    }
    if (name_.find('\0') != std::string::npos)
        return fail("not a file name");
    std::error_code error;
    const std::filesystem::path path = PathOf(name_);
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (std::filesystem::is_directory(status))
        return fail("it is a directory");
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        device_ = std::make_unique<SequentialFile>();
        return device_->openToWrite(name_) || fail(SystemReason());
    }
    std::filesystem::path followed;
    if (!FollowLinks(path, followed))
        return fail("its links lead in a circle");
    target_ = NameOf(followed);
    return openBeside();
}

bool Output::openBeside()
{
    for (int number = 0; number < maxNames; ++number) {
        const std::string name =
            target_ + "." + std::to_string(platform::CurrentProcessId()) + "." + std::to_string(number) + ".part";
        const bool created = WithInterruptionsHeld([&] {
            if (!file_.open(name.c_str(), isPrivate_ ? platform::FileMode::createPrivate : platform::FileMode::create))
                return false;
            RemoveWhenInterrupted(name);
            return true;
        });
        if (created) {
            temporary_ = name;
            takeRights(std::filesystem::perms::owner_write);
            return true;
        }
        reason_ = SystemReason();
        std::error_code error;
        if (!std::filesystem::exists(std::filesystem::symlink_status(PathOf(name), error)))
            break;
    }
    return false;
}

void Output::takeRights(std::filesystem::perms more)
{
    if (isPrivate_)
        return;
    std::error_code error;
    const auto replaced = std::filesystem::status(PathOf(target_), error);
    if (std::filesystem::exists(replaced))
        std::filesystem::permissions(PathOf(temporary_), replaced.permissions() | more, error);
}

bool Output::write(std::string_view text)
{
    return write(std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

bool Output::write(std::span<const std::uint8_t> bytes)
{
    if (isPrivate_ || bytes.size() >= bufferSize)
        return flush() && put(bytes);
    buffer_.append(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    return buffer_.length() < bufferSize || flush();
}

bool Output::flush()
{
    const bool done = put(buffer_.bytes());
    buffer_.clear();
    return done;
}

bool Output::put(std::span<const std::uint8_t> bytes)
{
    if (bytes.empty())
        return true;
    bool done = true;
    if (device_ != nullptr) {
        done = device_->write(bytes);
    } else if (target_.empty()) {
        done = console_.writeOutput(bytes);
    } else {
        constexpr std::size_t maxAtOnce = std::size_t{1} << 30;
        while (done && !bytes.empty()) {
            const std::size_t count = std::min(bytes.size(), maxAtOnce);
            done = file_.writeAt(written_, bytes.data(), static_cast<std::uint32_t>(count));
            written_ += count;
            bytes = bytes.subspan(count);
        }
    }
    return done || fail(SystemReason());
}

bool Output::finish()
{
    if (!flush())
        return false;
    if (temporary_.empty())
        return true;
    file_.close();
    takeRights(std::filesystem::perms::none);
    if (!platform::File::Replace(temporary_.c_str(), target_.c_str()))
        return fail(SystemReason());
    RemoveWhenInterrupted({});
    temporary_.clear();
    return true;
}

int RefuseOutput(Invocation& invocation, const Output& output)
{
    return invocation.refuse(output.name(), output.reason());
}

int FinishOutput(Invocation& invocation, Output& output, bool isWritten)
{
    return isWritten && output.finish() ? exitDone : RefuseOutput(invocation, output);
}

} // namespace ccrypto
