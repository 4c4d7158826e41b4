#pragma once

#include <windows.h>

#include <cstdint>
#include <stdexcept>
#include <string>

namespace ccrypto {

/// Makes one module call a function of the test's own in place of one that it imports by name, while the object lives: for failures
/// that the system cannot be made to answer on demand, and for arguments that it keeps no trace of.
class ReplacedImport {
public:
    /// \param module null for the test program, whose own calls are replaced as well. \param replacement has the import's type.
    template <typename Function>
    ReplacedImport(HMODULE module, const char* name, Function* replacement)
        : slot_(Find(reinterpret_cast<std::uint8_t*>(module != nullptr ? module : GetModuleHandleW(nullptr)), name)), own_(*slot_)
    {
        Store(reinterpret_cast<std::uintptr_t>(replacement));
    }
    ~ReplacedImport() { Store(own_); }
    ReplacedImport(const ReplacedImport&) = delete;
    ReplacedImport& operator=(const ReplacedImport&) = delete;

private:
    /// The loader's table holds the address of each import in the order of the names (Microsoft PE and COFF Specification, 6.4).
    static std::uintptr_t* Find(std::uint8_t* base, const std::string& name)
    {
        const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
        const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + dos->e_lfanew);
        const auto& directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
        for (auto* library = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress); library->Name != 0;
             ++library) {
            auto* address = reinterpret_cast<std::uintptr_t*>(base + library->FirstThunk);
            auto* entry = reinterpret_cast<const IMAGE_THUNK_DATA64*>(base + library->OriginalFirstThunk);
            for (; entry->u1.AddressOfData != 0; ++entry, ++address) {
                if (!IMAGE_SNAP_BY_ORDINAL64(entry->u1.Ordinal) &&
                    name == reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + entry->u1.AddressOfData)->Name)
                    return address;
            }
        }
        throw std::runtime_error(name + " is not imported");
    }

    void Store(std::uintptr_t address)
    {
        DWORD protection = 0;
        VirtualProtect(slot_, sizeof *slot_, PAGE_READWRITE, &protection);
        *slot_ = address;
        VirtualProtect(slot_, sizeof *slot_, protection, &protection);
    }

    std::uintptr_t* slot_;
    std::uintptr_t own_;
};

} // namespace ccrypto
