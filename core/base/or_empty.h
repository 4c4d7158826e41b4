#pragma once

/// A text that may be missing.
constexpr const char* OrEmpty(const char* text)
{
    return text != nullptr ? text : "";
}
