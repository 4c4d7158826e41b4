#include "core/platform/posix/registry_names.h"

#include "core/base/ascii.h"
#include "core/platform/posix/owned_descriptor.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>

namespace ccrypto::platform {

namespace {

struct DirectoryKind {
    using Value = DIR*;
    static Value none() { return nullptr; }
    static void close(Value value) { closedir(value); }
};

std::string Folded(std::string_view name)
{
    std::string folded(name);
    std::ranges::transform(folded, folded.begin(), ToSmall);
    return folded;
}

/// Calls `visit(name)` for every entry of the folder.
template <typename Visit>
void ForEachEntry(int directory, Visit visit)
{
    // Opened again, since descriptors that are duplicated share one reading position.
    OwnedDescriptor copy(openat(directory, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!copy)
        return;
    const ccrypto::SystemHandle<DirectoryKind> stream(fdopendir(copy.get()));
    if (!stream)
        return;
    static_cast<void>(copy.release());
    while (const dirent* entry = readdir(stream.get()))
        visit(std::string_view(entry->d_name));
}

} // namespace

bool SplitKeyPath(const char* path, std::vector<std::string>& components)
{
    std::string_view rest(path != nullptr ? path : "");
    if (rest.size() > 2048)
        return false;
    while (!rest.empty()) {
        const std::string_view component = rest.substr(0, rest.find('\\'));
        rest.remove_prefix(std::min(component.size() + 1, rest.size()));
        if (component.empty())
            continue;
        if (!IsUsableName(component) || components.size() == 32)
            return false;
        components.emplace_back(component);
    }
    return true;
}

bool IsUsableName(std::string_view name)
{
    const auto isForbidden = [](char character) {
        return character == '/' || character == '\\' || static_cast<unsigned char>(character) < ' ';
    };
    return !name.empty() && name.size() <= 255 && name.front() != '.' && std::ranges::none_of(name, isForbidden);
}

std::string ValueFileName(const char* name)
{
    if (name == nullptr || *name == '\0')
        return "(default)";
    return IsUsableName(name) ? name : std::string();
}

bool ComesBefore(const std::string& first, const std::string& second)
{
    const std::string foldedFirst = Folded(first);
    const std::string foldedSecond = Folded(second);
    return foldedFirst != foldedSecond ? foldedFirst < foldedSecond : first < second;
}

std::string FindEntry(int directory, const std::string& name)
{
    struct stat status = {};
    if (fstatat(directory, name.c_str(), &status, 0) == 0)
        return name;
    std::string found;
    ForEachEntry(directory, [&](std::string_view entry) {
        if (SameInAnyCase(entry, name) && (found.empty() || entry < found))
            found = entry;
    });
    return found.empty() ? name : found;
}

std::vector<std::string> SubFolders(int directory)
{
    std::vector<std::string> names;
    ForEachEntry(directory, [&](std::string_view entry) {
        struct stat status = {};
        std::string name(entry);
        if (IsUsableName(entry) && fstatat(directory, name.c_str(), &status, 0) == 0 && S_ISDIR(status.st_mode))
            names.push_back(std::move(name));
    });
    std::ranges::sort(names, ComesBefore);
    return names;
}

} // namespace ccrypto::platform
