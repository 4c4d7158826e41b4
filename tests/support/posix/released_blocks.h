#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

// Of the sanitizers' runtime; missing in a build without them.
extern "C" {
[[gnu::weak]] int __sanitizer_install_malloc_and_free_hooks(void (*allocated)(const volatile void*, std::size_t),
                                                            void (*released)(const volatile void*));
[[gnu::weak]] std::size_t __sanitizer_get_allocated_size(const volatile void* block);
}

namespace ccrypto {

/// Looks into every block of the heap that is released while it lives, for octets that should have been wiped. One at a time.
class ReleasedBlocks {
public:
    /// Whether the build shows released blocks.
    static bool canWatch() { return __sanitizer_install_malloc_and_free_hooks != nullptr; }

    explicit ReleasedBlocks(std::vector<std::string> secrets) : secrets_(std::move(secrets))
    {
        static const int installed = __sanitizer_install_malloc_and_free_hooks([](const volatile void*, std::size_t) {}, look);
        static_cast<void>(installed);
        watching = this;
    }
    ~ReleasedBlocks() { watching = nullptr; }
    ReleasedBlocks(const ReleasedBlocks&) = delete;
    ReleasedBlocks& operator=(const ReleasedBlocks&) = delete;

    [[nodiscard]] std::size_t released() const { return released_; }
    /// Blocks with one of the secrets in them.
    [[nodiscard]] std::size_t kept() const { return kept_; }

private:
    static void look(const volatile void* block)
    {
        if (watching == nullptr || block == nullptr)
            return;
        ++watching->released_;
        bool holdsSecret = false;
        for (const std::string& secret : watching->secrets_)
            holdsSecret |= holds(static_cast<const volatile char*>(block), __sanitizer_get_allocated_size(block), secret);
        watching->kept_ += holdsSecret ? 1 : 0;
    }

    /// Pools forbid access to what they do not use.
    [[gnu::no_sanitize_address]] static bool holds(const volatile char* block, std::size_t size, const std::string& secret)
    {
        const char* const wanted = secret.data();
        const std::size_t length = secret.size();
        for (std::size_t start = 0; start + length <= size; ++start) {
            std::size_t equal = 0;
            while (equal < length && block[start + equal] == wanted[equal])
                ++equal;
            if (equal == length)
                return true;
        }
        return false;
    }

    static inline ReleasedBlocks* watching = nullptr;
    std::vector<std::string> secrets_;
    std::size_t released_ = 0;
    std::size_t kept_ = 0;
};

} // namespace ccrypto
