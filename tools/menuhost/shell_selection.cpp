#include "tools/menuhost/shell_selection.h"

#include "shellext/com/hresult.h"

#include <shlobj.h>

#include <memory>
#include <type_traits>

namespace ccrypto {

namespace {

struct ItemListDeleter {
    void operator()(void* list) const { CoTaskMemFree(list); }
};

using ItemList = std::unique_ptr<std::remove_pointer_t<PIDLIST_ABSOLUTE>, ItemListDeleter>;

HRESULT ParsePath(const std::wstring& path, ItemList& item)
{
    std::wstring full(32768, L'\0');
    const DWORD length = GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    if (length == 0)
        return ResultFromLastError();
    if (length >= full.size())
        return ResultFromWin32(ERROR_FILENAME_EXCED_RANGE);
    PIDLIST_ABSOLUTE list = nullptr;
    const HRESULT result = SHParseDisplayName(full.c_str(), nullptr, &list, 0, nullptr);
    item.reset(list);
    return result;
}

ItemList ParentOf(const ItemList& item)
{
    ItemList parent(ILClone(item.get()));
    if (parent != nullptr)
        ILRemoveLastID(parent.get());
    return parent;
}

} // namespace

HRESULT SelectInShell(const std::vector<std::wstring>& files, ComPtr<IDataObject>& selection)
{
    std::vector<ItemList> items(files.size());
    std::vector<PCUITEMID_CHILD> children;
    ItemList folderList;
    for (std::size_t i = 0; i < files.size(); ++i) {
        const HRESULT parsed = ParsePath(files[i], items[i]);
        if (FAILED(parsed))
            return parsed;
        ItemList parent = ParentOf(items[i]);
        if (parent == nullptr)
            return E_OUTOFMEMORY;
        if (folderList == nullptr)
            folderList = std::move(parent);
        else if (!ILIsEqual(folderList.get(), parent.get()))
            return E_INVALIDARG;
        children.push_back(ILFindLastID(items[i].get()));
    }
    if (children.empty())
        return E_INVALIDARG;

    ComPtr<IShellFolder> folder;
    PCUITEMID_CHILD last = nullptr;
    const HRESULT bound = SHBindToParent(items[0].get(), IID_IShellFolder, folder.receiveVoid(), &last);
    if (FAILED(bound))
        return bound;
    return folder->GetUIObjectOf(nullptr, static_cast<UINT>(children.size()), children.data(), IID_IDataObject, nullptr,
                                 selection.receiveVoid());
}

} // namespace ccrypto
