#pragma once

#include "core/platform/file.h"
#include "core/text/element.h"
#include "tools/cryptotool/cli/console.h"
#include "tools/cryptotool/cli/host.h"
#include "tools/cryptotool/cli/invocation.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace ccrypto {

/// Where a command's result goes: standard output, or a file that appears when the result is complete.
///
/// A file is written under another name in its folder and renamed by finish(), so that there never is half of one; without finish()
/// nothing is left, not even when the process is interrupted. It takes the access rights of the file it replaces, and a link is
/// followed. Devices and pipes are written to as they are.
class Output {
public:
    enum class Content { text, binary };

    /// \param name empty or "-" for standard output.
    Output(Console& console, const std::string& name, Content content);
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /// Before open(): what is written is secret. A file is for its owner alone, whatever it replaces, and no copy stays in memory.
    void keepPrivate() { isPrivate_ = true; }
    /// \return false with reason() set; for binary content and a terminal, too.
    bool open();
    bool write(std::string_view text);
    bool write(std::span<const std::uint8_t> bytes);
    /// Writes what is still held back to the stream, or to the unfinished file.
    bool flush();
    bool finish();

    /// The colours of standard output; none for a file.
    Paint paint() const { return name_ == "-" ? console_.outputPaint() : Paint(); }
    /// For messages: "-" for standard output.
    const std::string& name() const { return name_; }
    const std::string& reason() const { return reason_; }

private:
    bool openBeside();
    /// Gives the unfinished file the access rights of the one that it replaces, and `more`.
    void takeRights(std::filesystem::perms more);
    bool put(std::span<const std::uint8_t> bytes);
    bool fail(std::string reason);

    Console& console_;
    std::string name_;
    Content content_;
    bool isPrivate_ = false;
    std::string target_;    ///< the file that is replaced in the end; empty for a stream
    std::string temporary_; ///< what is there to be removed or renamed
    platform::File file_;
    std::unique_ptr<SequentialFile> device_;
    std::uint64_t written_ = 0;
    element buffer_;
    std::string reason_;
};

/// Prints why the output failed. \return exitRefused.
int RefuseOutput(Invocation& invocation, const Output& output);
/// The end of a command: finishes the output if all `isWritten`. \return exitDone, or the exit code after the reason was printed.
[[nodiscard]] int FinishOutput(Invocation& invocation, Output& output, bool isWritten);

} // namespace ccrypto
