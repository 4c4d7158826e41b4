// The library at a prompt.

#include "tools/cryptotool/cli/host.h"
#include "tools/cryptotool/cli/invocation.h"

int main(int count, char** words)
{
    SystemConsole console;
    return RunCommandLine(CommandLineWords(count, words), console);
}
