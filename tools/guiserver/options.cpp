#include "tools/guiserver/options.h"

#include <charconv>
#include <iterator>

namespace ccrypto {

const char* const guiServerUsage =
    R"(guiserver: stands in for the GUI server of the signing client and shows the requests

    guiserver [OPTION...]

Answers every request of the session's pipe the way a user would who agrees to everything, and prints one block for each.

    --pin TEXT        the PIN to give; without it the PIN dialogs are answered as if the user had closed them
    --puk TEXT        the PUK to give to the combined PIN and PUK dialog, which requires --pin
    --select N        the index chosen in selection dialogs (0)
    --deny            answer as a user who says no: confirmations, dialogs and transactions are turned down
    --grant-after N   turn down the first N requests for a transaction (0)
    --secure          let programs of low integrity connect too
    --pipe NAME       listen on this pipe, \\.\pipe\... in full, in place of the session's own
    --once            end at the farewell after the first request that is more than a greeting
    --timeout SECONDS end with 1 when no request arrives for this long, 4294967 at most; 0, the default, waits forever
    --json            print one JSON object a line
    --hex             print the bytes of each body too
    --help            print this

PINs and PUKs are never printed, not even by --hex. The exit code is 0 after --once or Ctrl+C, 1 when the pipe could not be created
or the time is over, 2 when the options are wrong.
)";

namespace {

bool ParseNumber(const std::string& text, std::uint32_t& number)
{
    const char* end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stopped == end;
}

struct Switch {
    const char* name;
    bool GuiServerOptions::*value;
};

constexpr Switch switches[] = {
    {"--deny", &GuiServerOptions::deny}, {"--secure", &GuiServerOptions::secure}, {"--once", &GuiServerOptions::once},
    {"--json", &GuiServerOptions::json}, {"--hex", &GuiServerOptions::hex},       {"--help", &GuiServerOptions::help},
    {"-h", &GuiServerOptions::help},
};

struct Number {
    const char* name;
    std::uint32_t GuiServerOptions::*value;
    std::uint32_t maximum;
};

constexpr std::uint32_t anyNumber = 0xFFFFFFFF;
constexpr std::uint32_t maxSeconds = 4294967; // in milliseconds they fit 32 bits

constexpr Number numbers[] = {
    {"--select", &GuiServerOptions::selection, anyNumber},
    {"--grant-after", &GuiServerOptions::grantAfter, anyNumber},
    {"--timeout", &GuiServerOptions::timeout, maxSeconds},
};

bool SetSwitch(const std::string& name, GuiServerOptions& options)
{
    for (const Switch& known : switches) {
        if (name == known.name)
            return options.*known.value = true;
    }
    return false;
}

/// What the option takes as a value; empty when it takes none.
std::string WantedValue(const std::string& name)
{
    if (name == "--pin" || name == "--puk")
        return "a text";
    if (name == "--pipe")
        return "a name that begins with \\\\.\\pipe\\";
    for (const Number& known : numbers) {
        if (name == known.name)
            return "a number from 0 to " + std::to_string(known.maximum);
    }
    return "";
}

/// \return false when `value` does not suit the option `name`.
bool SetValue(const std::string& name, const std::string& value, GuiServerOptions& options)
{
    if (name == "--pin") {
        options.pin = element(value);
        return options.hasPin = true;
    }
    if (name == "--puk") {
        options.puk = element(value);
        return options.hasPuk = true;
    }
    if (name == "--pipe") {
        options.pipe = value;
        return value.starts_with("\\\\.\\pipe\\");
    }
    for (const Number& known : numbers) {
        if (name == known.name)
            return ParseNumber(value, options.*known.value) && options.*known.value <= known.maximum;
    }
    return false;
}

} // namespace

bool ParseGuiServerOptions(const std::vector<std::string>& arguments, GuiServerOptions& options, std::string& error)
{
    for (std::size_t index = 0; index < arguments.size(); ++index) {
        const std::string& name = arguments[index];
        if (SetSwitch(name, options))
            continue;
        // What is not an option's name may be a PIN and is not repeated.
        const std::string wanted = WantedValue(name);
        if (wanted.empty()) {
            error = "argument " + std::to_string(index + 1) + " is not an option";
            return false;
        }
        ++index;
        if (index >= arguments.size() || !SetValue(name, arguments[index], options)) {
            error.assign(name).append(" requires ").append(wanted);
            return false;
        }
    }
    if (options.hasPuk && !options.hasPin) {
        error = "--puk requires --pin";
        return false;
    }
    return true;
}

} // namespace ccrypto
