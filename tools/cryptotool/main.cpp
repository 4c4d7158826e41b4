// The library at a prompt.

#include "tools/cryptotool/host.h"
#include "tools/cryptotool/invocation.h"

int main(int count, char** words)
{
    SystemConsole console;
    return RunCommandLine(CommandLineWords(count, words), console);
}
