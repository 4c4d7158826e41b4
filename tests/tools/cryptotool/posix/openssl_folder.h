#pragma once

#include "tests/support/temporary_directory.h"
#include "tests/tools/cryptotool/memory_console.h"
#include "tests/tools/cryptotool/small_files.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace ccrypto {

using Words = std::vector<std::string>;

/// A folder in which openssl runs, with the password "päss" in the file "password" and a message in "text".
class OpensslFolder : public ::testing::Test {
protected:
    OpensslFolder()
    {
        PutFile(Path("password"), "päss\n");
        PutFile(Path("text"), std::string(100000, 'x'));
    }

    std::string Path(const std::string& name) const { return folder_.path().string() + "/" + name; }
    std::string Get(const std::string& name) const { return GetFile(Path(name)); }
    /// One or more commands of openssl, in the folder.
    bool Shell(const std::string& commands) const
    {
        const std::string whole = "cd '" + folder_.path().string() + "' && { " + commands + "; } >log 2>&1";
        return std::system(whole.c_str()) == 0;
    }
    /// Runs the tool; words that begin with "@" are files of the folder.
    ToolResult Tool(Words words) const
    {
        for (std::string& word : words)
            if (word.starts_with('@'))
                word = Path(word.substr(1));
        const ToolResult result = RunTool(words);
        EXPECT_EQ(result.error.find("cryptotool: @"), std::string::npos);
        return result;
    }

    TemporaryDirectory folder_;
};

} // namespace ccrypto
