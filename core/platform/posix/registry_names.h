#pragma once

#include <string>
#include <string_view>
#include <vector>

/// How names of the registry become names of files. They may come from outside, so a name that could leave the hive is refused.
namespace ccrypto::platform {

/// The components of a key path; one or more "\" separate them and may come first and last.
/// \return false when a component is not usable, there are more than 32 of them, or the path has more than 2048 bytes.
bool SplitKeyPath(const char* path, std::vector<std::string>& components);

/// Usable names have 1 to 255 bytes, do not begin with "." and hold neither "/", "\" nor a control character.
bool IsUsableName(std::string_view name);

/// The file of a value; an empty or null name is the key's unnamed value. Empty when the name is not usable.
std::string ValueFileName(const char* name);

/// Orders names without regard to the case of ASCII letters, equal ones by their bytes.
bool ComesBefore(const std::string& first, const std::string& second);

/// The entry of the open folder `directory` that is called `name`: the one of exactly that spelling, else the first that differs in
/// case alone, else `name` itself.
std::string FindEntry(int directory, const std::string& name);

/// The names of all folders in `directory`, in order.
std::vector<std::string> SubFolders(int directory);

} // namespace ccrypto::platform
