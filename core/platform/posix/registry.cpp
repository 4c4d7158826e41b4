#include "core/platform/registry.h"

#include "core/platform/posix/owned_descriptor.h"
#include "core/platform/posix/registry_names.h"
#include "core/platform/random_bytes.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <utility>

namespace ccrypto::platform {

namespace {

/// The access is kept because a key refuses what it was not opened for, as on Windows.
struct Key {
    OwnedDescriptor folder;
    RegistryAccess access;
};

const Key* KeyOf(void* handle)
{
    return static_cast<const Key*>(handle);
}

std::uint32_t LastStatus()
{
    // A file on the way to a key means that there is no such key.
    return static_cast<std::uint32_t>(errno == ENOTDIR ? ENOENT : errno);
}

std::string Environment(const char* name)
{
    const char* const value = secure_getenv(name);
    return value != nullptr ? value : "";
}

std::string FolderOf(RegistryHive hive)
{
    if (hive == RegistryHive::localMachine) {
        const std::string redirected = Environment("CRYPTO_REGISTRY_MACHINE");
        return !redirected.empty() ? redirected : "/etc/xdg/crypto/registry";
    }
    std::string redirected = Environment("CRYPTO_REGISTRY_USER");
    if (!redirected.empty())
        return redirected;
    const std::string configuration = Environment("XDG_CONFIG_HOME");
    // The XDG base directory specification has relative paths ignored.
    if (configuration.starts_with('/'))
        return configuration + "/crypto/registry";
    const std::string home = Environment("HOME");
    return home.starts_with('/') ? home + "/.config/crypto/registry" : std::string();
}

/// Makes the folder and those above it.
void MakeFolders(const std::string& path, mode_t mode)
{
    for (std::size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1))
        mkdir(path.substr(0, end).c_str(), mode);
    mkdir(path.c_str(), mode);
}

OwnedDescriptor OpenFolder(int parent, const std::string& name)
{
    return OwnedDescriptor(openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

/// Walks from `folder` down the path; folders that are missing are made when `create` says so.
std::uint32_t Walk(OwnedDescriptor folder, const char* path, bool create, OwnedDescriptor& reached)
{
    std::vector<std::string> components;
    if (!SplitKeyPath(path, components))
        return EINVAL;
    for (const std::string& component : components) {
        const std::string entry = FindEntry(folder.get(), component);
        if (create && mkdirat(folder.get(), entry.c_str(), 0777) != 0 && errno != EEXIST)
            return LastStatus();
        folder = OpenFolder(folder.get(), entry);
        if (!folder)
            return LastStatus();
    }
    reached = std::move(folder);
    return registrySuccess;
}

std::uint32_t WalkFromHive(RegistryHive hive, const char* path, bool create, OwnedDescriptor& reached)
{
    const std::string root = FolderOf(hive);
    if (create && !root.empty())
        MakeFolders(root, hive == RegistryHive::currentUser ? 0700 : 0755);
    OwnedDescriptor folder = OpenFolder(AT_FDCWD, root);
    return folder ? Walk(std::move(folder), path, create, reached) : LastStatus();
}

bool WriteAll(int file, const char* text, std::size_t length)
{
    while (length != 0) {
        const ssize_t part = write(file, text, length);
        if (part < 0 && errno == EINTR)
            continue;
        if (part <= 0)
            return false;
        text += part;
        length -= static_cast<std::size_t>(part);
    }
    return true;
}

/// \return the number of bytes read; -1 on failure.
ssize_t ReadUpTo(int file, void* buffer, std::size_t size)
{
    std::size_t done = 0;
    while (done < size) {
        const ssize_t part = read(file, static_cast<char*>(buffer) + done, size - done);
        if (part < 0 && errno == EINTR)
            continue;
        if (part < 0)
            return -1;
        if (part == 0)
            break;
        done += static_cast<std::size_t>(part);
    }
    return static_cast<ssize_t>(done);
}

} // namespace

void RegistryKey::Kind::close(Value value)
{
    delete KeyOf(value);
}

std::uint32_t RegistryKey::open(RegistryHive hive, const char* path, RegistryAccess access)
{
    close();
    OwnedDescriptor folder;
    const std::uint32_t status = WalkFromHive(hive, path, false, folder);
    if (status == registrySuccess)
        handle_.reset(new Key{std::move(folder), access});
    return status;
}

std::uint32_t RegistryKey::openBelow(const RegistryKey& parent, const char* path, RegistryAccess access)
{
    OwnedDescriptor folder;
    const std::uint32_t status =
        parent.isOpen() ? Walk(OpenFolder(KeyOf(parent.handle_.get())->folder.get(), "."), path, false, folder) : EBADF;
    close();
    if (status == registrySuccess)
        handle_.reset(new Key{std::move(folder), access});
    return status;
}

std::uint32_t RegistryKey::create(RegistryHive hive, const char* path, bool)
{
    close();
    OwnedDescriptor folder;
    const std::uint32_t status = WalkFromHive(hive, path, true, folder);
    if (status == registrySuccess)
        handle_.reset(new Key{std::move(folder), RegistryAccess::write});
    return status;
}

std::uint32_t RegistryKey::queryValue(const char* name, void* buffer, std::uint32_t& size, bool& isText) const
{
    isText = true;
    if (!isOpen())
        return EBADF;
    const Key& key = *KeyOf(handle_.get());
    if (key.access == RegistryAccess::write)
        return EACCES;
    const std::string fileName = ValueFileName(name);
    if (fileName.empty())
        return EINVAL;
    // A pipe that somebody put in the place of the file does not block.
    const OwnedDescriptor file(
        openat(key.folder.get(), FindEntry(key.folder.get(), fileName).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status = {};
    if (!file || fstat(file.get(), &status) != 0)
        return LastStatus();
    if (!S_ISREG(status.st_mode))
        return registryNotFound;
    if (status.st_size > size) {
        size = static_cast<std::uint32_t>(std::min<off_t>(status.st_size, UINT32_MAX));
        return registryMoreData;
    }
    ssize_t length = ReadUpTo(file.get(), buffer, size);
    if (length < 0)
        return LastStatus();
    if (length > 0 && static_cast<const char*>(buffer)[length - 1] == '\n')
        --length;
    size = static_cast<std::uint32_t>(length);
    return registrySuccess;
}

std::uint32_t RegistryKey::setText(const char* name, const char* text, std::uint32_t length)
{
    if (!isOpen())
        return EBADF;
    const Key& key = *KeyOf(handle_.get());
    if (key.access != RegistryAccess::write)
        return EACCES;
    const std::string fileName = ValueFileName(name);
    if (fileName.empty())
        return EINVAL;
    const int folder = key.folder.get();
    // Written aside and then moved, so that a reader sees the old value or the new one. No value name begins with a dot.
    std::uint64_t number = 0;
    if (!RandomBytes(&number, sizeof number))
        return LastStatus();
    const std::string aside = ".new-" + std::to_string(number);
    const OwnedDescriptor file(openat(folder, aside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!file)
        return LastStatus();
    if (WriteAll(file.get(), text, length) && renameat(folder, aside.c_str(), folder, FindEntry(folder, fileName).c_str()) == 0)
        return registrySuccess;
    const std::uint32_t status = LastStatus();
    unlinkat(folder, aside.c_str(), 0);
    return status;
}

std::uint32_t RegistryKey::enumerate(std::uint32_t index, char* name, std::uint32_t size) const
{
    if (!isOpen())
        return EBADF;
    const Key& key = *KeyOf(handle_.get());
    if (key.access != RegistryAccess::read)
        return EACCES;
    const std::vector<std::string> names = SubFolders(key.folder.get());
    if (index >= names.size())
        return registryNoMoreItems;
    const std::string& found = names[index];
    if (found.size() >= size)
        return registryMoreData;
    std::memcpy(name, found.c_str(), found.size() + 1);
    return registrySuccess;
}

} // namespace ccrypto::platform
