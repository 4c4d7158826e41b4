#pragma once

#include <cstdint>

/// A small tagged value of the pipe messages: an integer, or a zero-terminated text that somebody else keeps.
struct PipeValue {
    enum class Kind : std::uint32_t { integer = 0, text = 1 };

    Kind kind = Kind::integer;
    std::uint32_t integer = 0;
    const char* text = nullptr;
};
