#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace ccrypto {

/// One line of the menu, as the handler left it there.
struct MenuItem {
    bool separator = false;
    UINT command = 0; ///< counted from the first identifier the handler was given
    std::wstring text;
    std::wstring verb;
    std::wstring help;
    bool hasBitmap = false;
    LONG width = 0;
    LONG height = 0;
    int bitsPerPixel = 0;
};

/// Prints what happened, in UTF-8: line by line, or as one JSON object at the end.
class Report {
public:
    explicit Report(bool json) : json_(json) {}

    /// A call to the system or the handler and its result.
    void call(const char* name, HRESULT result);
    void item(const MenuItem& item);
    /// A remark that is no result, for text alone.
    void remark(const std::string& text);
    /// Prints the JSON object when that is wanted.
    void finish(int exitCode);

private:
    bool json_;
    std::string calls_;
    std::string items_;
};

/// The name of an HRESULT, or "success, code N"; empty for a failure without a name here.
std::string ResultName(HRESULT result);

} // namespace ccrypto
