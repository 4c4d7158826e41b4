#include "bench/shellext/plain_handler.h"
#include "shellext/com/com_ptr.h"
#include "shellext/com/module.h"
#include "tests/shellext/context_menu/scripted_data_object.h"

#include <benchmark/benchmark.h>
#include <ole2.h>
#include <shlobj.h>

#include <stdexcept>
#include <string>
#include <vector>

using namespace ccrypto;

namespace {

// The same number for both sides of a pair.
constexpr benchmark::IterationCount rounds = 200;

/// COM, the library with its factory, and the setting that lets it take several files; put back as they were at the end.
class Surroundings {
public:
    Surroundings()
    {
        if (FAILED(OleInitialize(nullptr)))
            throw std::runtime_error("no COM");
        RegSetKeyValueA(HKEY_LOCAL_MACHINE, settingsKey, settingName, REG_SZ, "1", 2);
        library = LoadLibraryW(L"explorermenuhandler.dll");
        using Export = HRESULT(WINAPI*)(const CLSID&, const IID&, void**);
        const auto getClassObject = reinterpret_cast<Export>(reinterpret_cast<void*>(GetProcAddress(library, "DllGetClassObject")));
        if (getClassObject == nullptr || FAILED(getClassObject(CLSID_FileContextMenuExt, IID_IClassFactory, factory.receiveVoid())))
            throw std::runtime_error("no library beside the program");
    }
    ~Surroundings()
    {
        factory.reset();
        FreeLibrary(library);
        RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, settingsKey, settingName);
        OleUninitialize();
    }
    Surroundings(const Surroundings&) = delete;
    Surroundings& operator=(const Surroundings&) = delete;

    HMODULE library = nullptr;
    ComPtr<IClassFactory> factory;

private:
    static constexpr char settingsKey[] = "SOFTWARE\\Brannock\\Pennwick Client";
    static constexpr char settingName[] = "pdfAllowMultiselect";
};

Surroundings& Around()
{
    static Surroundings surroundings;
    return surroundings;
}

std::vector<std::wstring> Documents(std::int64_t count)
{
    std::vector<std::wstring> names;
    for (std::int64_t i = 0; i < count; ++i)
        names.push_back(L"C:\\Users\\user\\Documents\\agreement " + std::to_wstring(i) + L".pdf");
    return names;
}

/// Activate, initialise, fill the menu, release.
bool RightClick(IDataObject& selection)
{
    ComPtr<IShellExtInit> initializer;
    ComPtr<IContextMenu> handler;
    const HMENU menu = CreatePopupMenu();
    const bool shown = SUCCEEDED(Around().factory->CreateInstance(nullptr, IID_IShellExtInit, initializer.receiveVoid())) &&
                       SUCCEEDED(initializer->QueryInterface(IID_IContextMenu, handler.receiveVoid())) &&
                       SUCCEEDED(initializer->Initialize(nullptr, &selection, nullptr)) &&
                       handler->QueryContextMenu(menu, 0, 1, 999, CMF_NORMAL) == 1;
    DestroyMenu(menu);
    return shown;
}

bool PlainRightClick(IDataObject& selection)
{
    const HMENU menu = CreatePopupMenu();
    bool shown = false;
    {
        PlainHandler handler(Around().library);
        shown = handler.initialize(selection) && handler.addItems(menu, 0, 1);
    }
    DestroyMenu(menu);
    return shown;
}

template <bool (*click)(IDataObject&)>
void Click(benchmark::State& state)
{
    ScriptedDataObject selection(ScriptedDataObject::Script::wideList, Documents(state.range(0)));
    Around();
    for (auto _ : state) {
        if (!click(selection)) {
            state.SkipWithError("the selection was refused");
            return;
        }
    }
}

/// Takes the same files in `selections` parts, the making of the handler left out.
template <int selections>
void TakeTenThousand(benchmark::State& state)
{
    ScriptedDataObject selection(ScriptedDataObject::Script::wideList, Documents(10000 / selections));
    for (auto _ : state) {
        state.PauseTiming();
        ComPtr<IShellExtInit> handler;
        Around().factory->CreateInstance(nullptr, IID_IShellExtInit, handler.receiveVoid());
        state.ResumeTiming();
        for (int i = 0; i < selections; ++i)
            if (FAILED(handler->Initialize(nullptr, &selection, nullptr)))
                state.SkipWithError("the selection was refused");
    }
}

} // namespace

BENCHMARK(Click<RightClick>)->Name("right click")->Arg(1)->Arg(100)->Arg(10000)->Iterations(rounds)->UseRealTime();
BENCHMARK(Click<PlainRightClick>)
    ->Name("right click vs plain handler")
    ->Arg(1)
    ->Arg(100)
    ->Arg(10000)
    ->Iterations(rounds)
    ->UseRealTime();

// Above 1 by much, time would grow faster than the number of files.
BENCHMARK(TakeTenThousand<1>)->Name("10000 files at once")->Iterations(rounds)->UseRealTime();
BENCHMARK(TakeTenThousand<100>)->Name("10000 files at once vs 100 at a time")->Iterations(rounds)->UseRealTime();
