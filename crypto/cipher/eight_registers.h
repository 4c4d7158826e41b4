#pragma once

namespace ccrypto {

/// Eight registers of the type Lane::Register, treated alike: named one by one, so that no compiler makes an array in memory of
/// them.
template <typename Lane>
struct EightRegisters {
    using Register = typename Lane::Register;

    Register a, b, c, d, e, f, g, h;

    template <typename Call>
    [[gnu::always_inline]] inline void each(Call call)
    {
        call(a, 0);
        call(b, 1);
        call(c, 2);
        call(d, 3);
        call(e, 4);
        call(f, 5);
        call(g, 6);
        call(h, 7);
    }
};

} // namespace ccrypto
