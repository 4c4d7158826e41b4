#include "tools/menuhost/report.h"

#include "core/platform/win32/wide.h"
#include "shellext/com/hresult.h"
#include "tools/text/safe_text.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace ccrypto {

namespace {

struct NamedResult {
    HRESULT value;
    const char* name;
};

constexpr NamedResult namedResults[] = {
    {S_OK, "S_OK"},
    {E_FAIL, "E_FAIL"},
    {E_INVALIDARG, "E_INVALIDARG"},
    {E_OUTOFMEMORY, "E_OUTOFMEMORY"},
    {E_NOINTERFACE, "E_NOINTERFACE"},
    {E_UNEXPECTED, "E_UNEXPECTED"},
    {REGDB_E_CLASSNOTREG, "REGDB_E_CLASSNOTREG"},
    {CLASS_E_CLASSNOTAVAILABLE, "CLASS_E_CLASSNOTAVAILABLE"},
    {CLASS_E_NOAGGREGATION, "CLASS_E_NOAGGREGATION"},
    {ResultFromWin32(ERROR_FILE_NOT_FOUND), "ERROR_FILE_NOT_FOUND"},
    {ResultFromWin32(ERROR_PATH_NOT_FOUND), "ERROR_PATH_NOT_FOUND"},
    {ResultFromWin32(ERROR_ACCESS_DENIED), "ERROR_ACCESS_DENIED"},
    {ResultFromWin32(ERROR_MOD_NOT_FOUND), "ERROR_MOD_NOT_FOUND"},
    {ResultFromWin32(ERROR_INSUFFICIENT_BUFFER), "ERROR_INSUFFICIENT_BUFFER"},
    {ResultFromWin32(ERROR_INVALID_MENU_HANDLE), "ERROR_INVALID_MENU_HANDLE"},
};

/// What a result of a call means to the one who reads it, where its name does not say.
struct Remark {
    std::string_view call;
    HRESULT result;
    const char* text;
};

constexpr Remark remarks[] = {
    {"Selection", E_INVALIDARG, "the files must lie in one folder"},
    {"Selection", ResultFromWin32(ERROR_FILE_NOT_FOUND), "there is no such file"},
    {"Registration", ResultFromWin32(ERROR_FILE_NOT_FOUND), "not registered: regsvr32 explorermenuhandler.dll"},
};

std::string RemarkOn(std::string_view call, HRESULT result)
{
    for (const Remark& known : remarks)
        if (known.call == call && known.result == result)
            return std::string("; ") + known.text;
    return "";
}

std::string Hexadecimal(HRESULT result)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(result));
    return text;
}

std::string WideJsonString(const std::wstring& text)
{
    return JsonString(platform::WideToUtf8(text));
}

void PrintLine(const std::string& line)
{
    std::fwrite((line + '\n').data(), 1, line.size() + 1, stdout);
    std::fflush(stdout);
}

} // namespace

std::string ResultName(HRESULT result)
{
    for (const NamedResult& known : namedResults)
        if (known.value == result)
            return known.name;
    return SUCCEEDED(result) ? "success, code " + std::to_string(HRESULT_CODE(result)) : "";
}

void Report::call(const char* name, HRESULT result)
{
    if (json_) {
        calls_ += (calls_.empty() ? "" : ", ") + std::string("{\"call\": ") + JsonString(name) + ", \"result\": \"" +
                  Hexadecimal(result) + "\", \"name\": " + JsonString(ResultName(result)) + "}";
        return;
    }
    std::string line = name;
    line.resize(std::max<std::size_t>(line.size() + 1, 20), ' ');
    PrintLine(line + Hexadecimal(result) + " " + ResultName(result) + RemarkOn(name, result));
}

void Report::item(const MenuItem& item)
{
    const std::string size = std::to_string(item.width) + " x " + std::to_string(item.height);
    if (json_) {
        items_ += items_.empty() ? "" : ", ";
        if (item.separator) {
            items_ += "{\"separator\": true}";
            return;
        }
        items_ += "{\"text\": " + WideJsonString(item.text) + ", \"command\": " + std::to_string(item.command) +
                  ", \"verb\": " + WideJsonString(item.verb) + ", \"help\": " + WideJsonString(item.help) + ", \"bitmap\": ";
        items_ += item.hasBitmap ? "{\"width\": " + std::to_string(item.width) + ", \"height\": " + std::to_string(item.height) +
                                       ", \"bits\": " + std::to_string(item.bitsPerPixel) + "}}"
                                 : "null}";
        return;
    }
    if (item.separator) {
        PrintLine("item                separator");
        return;
    }
    PrintLine("item                " + WideJsonString(item.text) + " command " + std::to_string(item.command) + ", verb " +
              WideJsonString(item.verb) + ", help " + WideJsonString(item.help) + ", " +
              (item.hasBitmap ? "bitmap " + size + ", " + std::to_string(item.bitsPerPixel) + " bits" : "no bitmap"));
}

void Report::remark(const std::string& text)
{
    if (!json_)
        PrintLine(text);
}

void Report::finish(int exitCode)
{
    if (json_)
        PrintLine("{\"exit\": " + std::to_string(exitCode) + ", \"calls\": [" + calls_ + "], \"items\": [" + items_ + "]}");
}

} // namespace ccrypto
