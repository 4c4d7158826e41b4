#include <windows.h>

#include <gtest/gtest.h>
#include <ole2.h>

// Handlers live on apartment threads, as Explorer's are, and the shell's data objects want OLE there.
int main(int count, char** words)
{
    testing::InitGoogleTest(&count, words);
    if (FAILED(OleInitialize(nullptr)))
        return 1;
    const int result = RUN_ALL_TESTS();
    OleUninitialize();
    return result;
}
