#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

/// Decisions on secrets without branches and without addresses: a condition is a mask of all ones or all zeros, and a barrier keeps
/// the compiler from turning it back into a branch.
namespace ccrypto::constant_time {

/// The same value, opaque to the optimiser.
template <std::unsigned_integral Word>
inline Word Barrier(Word value)
{
    asm("" : "+r"(value));
    return value;
}

/// True or false, as all ones or all zeros of a machine word. Only Declassify makes a bool of it.
class Mask {
public:
    using Word = std::uint64_t;

    static Mask True() { return Mask(~Word{0}); }
    static Mask False() { return Mask(0); }
    /// From the lowest bit; the others are ignored.
    static Mask FromBit(Word bit) { return Mask(Word{0} - (Barrier(bit) & 1)); }
    /// True when the highest bit is set.
    static Mask FromTop(Word value) { return FromBit(value >> 63); }
    static Mask IsZero(Word value) { return FromTop(~value & (value - 1)); }
    static Mask IsNotZero(Word value) { return ~IsZero(value); }
    static Mask Equal(Word left, Word right) { return IsZero(left ^ right); }
    /// left < right, both unsigned.
    static Mask Less(Word left, Word right) { return FromTop(left ^ ((left ^ right) | ((left - right) ^ right))); }

    Mask operator~() const { return Mask(~bits_); }
    Mask operator&(Mask other) const { return Mask(bits_ & other.bits_); }
    Mask operator|(Mask other) const { return Mask(bits_ | other.bits_); }
    Mask operator^(Mask other) const { return Mask(bits_ ^ other.bits_); }
    Mask& operator&=(Mask other) { return *this = *this & other; }
    Mask& operator|=(Mask other) { return *this = *this | other; }

    /// All ones or all zeros.
    Word word() const { return Barrier(bits_); }
    /// `yes` when true, otherwise `no`.
    template <std::unsigned_integral Value>
    Value select(Value yes, Value no) const
    {
        return static_cast<Value>(no ^ (static_cast<Value>(word()) & (yes ^ no)));
    }

private:
    explicit Mask(Word bits) : bits_(bits) {}

    Word bits_;
};

#ifdef CCRYPTO_SECRETS_MARKED
/// Marks the bytes as public for valgrind, which reports every branch and every address that depends on a secret.
void DeclassifyBytes(const void* bytes, std::size_t count);
/// Marks the bytes as secret.
void ClassifyBytes(const void* bytes, std::size_t count);
#else
inline void DeclassifyBytes(const void*, std::size_t) {}
inline void ClassifyBytes(const void*, std::size_t) {}
#endif

/// A result that may become public: that a signature was made, that a tag was wrong.
inline bool Declassify(Mask mask)
{
    Mask::Word word = mask.word();
    DeclassifyBytes(&word, sizeof word);
    return word != 0;
}

/// A plain value that may become public.
template <typename Value>
requires std::is_trivially_copyable_v<Value>
inline Value Declassify(Value value)
{
    DeclassifyBytes(&value, sizeof value);
    return value;
}

/// True when the `count` bytes are the same.
[[nodiscard]] Mask EqualBytes(const void* left, const void* right, std::size_t count);
/// Copies `count` bytes to `target` when `mask` is true, else leaves it unchanged; reads and writes all of them either way.
void CopyBytesIf(Mask mask, void* target, const void* source, std::size_t count);

} // namespace ccrypto::constant_time
