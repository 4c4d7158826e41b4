#pragma once

#include "core/text/element.h"

#include <cstdint>
#include <string>
#include <vector>

namespace ccrypto {

/// How the stand-in for the GUI server was asked to behave.
struct GuiServerOptions {
    std::string pipe; ///< empty for the session's own
    element pin;
    element puk;
    bool hasPin = false;
    bool hasPuk = false;
    std::uint32_t selection = 0;
    std::uint32_t grantAfter = 0; ///< transaction requests that are turned down first
    std::uint32_t timeout = 0;    ///< seconds without a request, 0 for no end
    bool deny = false;
    bool secure = false;
    bool once = false;
    bool json = false;
    bool hex = false;
    bool help = false;
};

extern const char* const guiServerUsage;

/// \param arguments UTF-8, without the program's name. \return false with `error` set for the user to read;
/// nothing that may be a PIN is in it.
bool ParseGuiServerOptions(const std::vector<std::string>& arguments, GuiServerOptions& options, std::string& error);

} // namespace ccrypto
