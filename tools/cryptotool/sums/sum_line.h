#pragma once

#include "tools/cryptotool/output/output.h"

#include <string>
#include <string_view>

namespace ccrypto {

/// A line as the sum programs of coreutils write and check them: digits, two blanks, a file's name. When the name has a line feed,
/// a carriage return or a backslash, they are written as "\n", "\r" and "\\", and the line begins with a backslash.
struct SumLine {
    std::string digits; ///< hexadecimal, in small letters
    std::string file;
    std::string algorithm = {}; ///< as a line of BSD's form names it, otherwise empty

    /// With its end.
    std::string text() const;
    /// "NAME: text" with its end, the name escaped as in such a line.
    static std::string About(std::string_view file, std::string_view text);
    /// Takes "*" in place of the second blank, and BSD's form, "SHA256 (NAME) = DIGITS", as well; `line` comes without its end.
    /// \return false when it is not such a line.
    bool read(std::string_view line);

private:
    bool readUsual(std::string_view line, std::string_view& name);
    bool readTagged(std::string_view line, std::string_view& name);
    bool takeDigits(std::string_view text);
};

/// Lines as the sum programs print them. Names go to files and pipes unchanged, so that the lines can be checked; on a terminal,
/// control characters become escapes.
class SumOutput : public Output {
public:
    SumOutput(Console& console, const std::string& name)
        : Output(console, name, Content::text), isTerminal_(Output::name() == "-" && console.outputIsTerminal())
    {
    }

    bool write(const SumLine& sum) { return Output::write(shown(sum.text()) + "\n"); }
    /// What was found about a file.
    bool write(std::string_view file, std::string_view finding, Color color);

private:
    /// The line without its end, as it may be shown.
    std::string shown(std::string line) const;

    bool isTerminal_;
};

} // namespace ccrypto
