#pragma once

#include <gtest/gtest.h>

#include <cstdlib>

namespace ccrypto {

/// Runs `body` in a process of its own, which a thread that is ended by force leaves behind in disorder: with locks that nobody
/// owns, and with a leak check that looks for the thread. Expectations in `body` count.
template <typename Body>
void InChildProcess(Body body)
{
    EXPECT_EXIT(
        {
            body();
            std::_Exit(::testing::Test::HasFailure() ? 1 : 0);
        },
        ::testing::ExitedWithCode(0), "");
}

} // namespace ccrypto
