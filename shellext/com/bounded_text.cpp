#include "shellext/com/bounded_text.h"

#include "shellext/com/hresult.h"

#include <algorithm>

namespace ccrypto {

HRESULT JoinBounded(wchar_t* target, std::size_t capacity, std::initializer_list<std::wstring_view> parts) noexcept
{
    if (target == nullptr || capacity == 0)
        return E_INVALIDARG;
    if (capacity > maxTextCapacity) {
        *target = 0;
        return E_INVALIDARG;
    }

    HRESULT result = S_OK;
    std::size_t space = capacity - 1;
    for (const std::wstring_view part : parts) {
        const std::size_t taken = std::min(part.size(), space);
        target = std::copy_n(part.data(), taken, target);
        space -= taken;
        if (taken < part.size()) {
            result = insufficientBuffer;
            break;
        }
    }
    *target = 0;
    return result;
}

} // namespace ccrypto
