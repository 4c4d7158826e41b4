#include "core/platform/named_mutex.h"

#include <cstdio>

using namespace ccrypto;

// Usage: lock_companion NAME END: takes the mutex NAME, says "locked", waits for the mutex END and leaves without giving NAME back.
int main(int count, char** words)
{
    platform::NamedMutex mutex;
    platform::NamedMutex end;
    if (count != 3 || !mutex.open(words[1]) || !end.open(words[2]) || !mutex.lock(0))
        return 1;
    std::puts("locked");
    std::fflush(stdout);
    return end.lock(30000) ? 0 : 1;
}
