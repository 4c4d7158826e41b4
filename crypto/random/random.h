#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// A source of random bytes.
class ICryptoRandom {
public:
    virtual ~ICryptoRandom() = default;

    /// Fills `bytes`. \return false, logged, with the bytes wiped, when the source fails: what needs them must fail, too.
    [[nodiscard]] virtual bool generate(std::span<std::uint8_t> bytes) = 0;

    /// The process's own generator: HMAC_DRBG with SHA-256 (NIST SP 800-90A) that takes new entropy from the operating system for
    /// every request, so that neither a forked child nor a restored virtual machine repeats what was given before. Any thread may
    /// use it at any time. A request costs a system call, some two microseconds: ask for many values at once.
    static ICryptoRandom& Instance();
};
