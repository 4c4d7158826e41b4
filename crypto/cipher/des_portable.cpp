#include "core/memory/wiped.h"
#include "crypto/cipher/des_bit_planes.h"

namespace ccrypto {

namespace {

struct Lane {
    using Register = std::uint64_t;
    static constexpr int words = 1;
    static Register Load(const std::uint64_t* from) { return *from; }
    static void Store(std::uint64_t* to, Register value) { *to = value; }
    static Register Broadcast(std::uint64_t word) { return word; }
};

void Transform(const des::Schedule& schedule, std::uint8_t* out, const std::uint8_t* in)
{
    Wiped<des::Planes<Lane>> planes;
    planes.transform(schedule, out, in);
}

} // namespace

const des::Calls des::portableCalls = {64, Transform};

} // namespace ccrypto
