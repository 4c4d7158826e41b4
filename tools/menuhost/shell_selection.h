#pragma once

#include "shellext/com/com_ptr.h"

#include <windows.h>

#include <objidl.h>

#include <string>
#include <vector>

namespace ccrypto {

/// Makes the data object that Explorer hands to a context-menu handler when `files` are selected: the shell's own, from the folder
/// they lie in. Paths may be relative; the files must exist and lie in one folder. COM must be up on the calling thread.
/// \return S_OK; E_INVALIDARG for no files or several folders; otherwise what the shell said to the first path it did not like.
HRESULT SelectInShell(const std::vector<std::wstring>& files, ComPtr<IDataObject>& selection);

} // namespace ccrypto
