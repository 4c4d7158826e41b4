// The library at a prompt.

#include "tools/cryptotool/cli/host.h"
#include "tools/cryptotool/cli/invocation.h"

using namespace ccrypto;

int main(int count, char** words)
{
    SystemConsole console;
    return RunCommandLine(CommandLineWords(count, words), console);
}
