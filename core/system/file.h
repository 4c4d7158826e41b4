#pragma once

#include "core/platform/file.h"
#include "core/text/element.h"
#include "core/text/string.h"

#include <cstdint>
#include <span>

/// A file of bytes whose operations show in the log. Names are UTF-8. Indices count bytes from the start of the file and have 32
/// bits: files may be larger, but what lies beyond 4 GiB cannot be read, and a write that would reach there is refused.
///
/// The log's own file is a platform::File, since a CCryptoFile would write lines about the writing of lines.
///
/// Operations that fail return false (or -1) with the reason in the log; they never claim success after part of their work. A
/// failed Write or Erase may have changed the file.
class CCryptoFile {
public:
    using Mode = ccrypto::platform::FileMode;

    CCryptoFile() = default;
    /// As Open; isOpen() says whether it succeeded.
    CCryptoFile(const CCryptoString& fileName, Mode mode);
    /// Leaves `other` closed.
    CCryptoFile(CCryptoFile&& other) noexcept = default;
    CCryptoFile& operator=(CCryptoFile&& other) noexcept = default;

    /// A file held so far is closed first.
    [[nodiscard]] bool Open(const CCryptoString& fileName, Mode mode);
    void Close();
    bool isOpen() const { return file_.isOpen(); }

    /// Reads `length` bytes from `index` on, or as many as remain, into `content`, whose type stays. An index past the end fails.
    ///
    /// A file that the system makes up while it is read, as those in /proc, has the size 0 and is read until it ends; one that has
    /// more than 64 MiB of what was asked for fails. Pipes are read when they are opened: see ccrypto::platform::File.
    [[nodiscard]] bool Read(std::uint32_t index, std::uint32_t length, element& content);
    /// Puts the bytes at `index`, over those there and beyond the end as need be. The append modes put them at the end.
    [[nodiscard]] bool Write(std::span<const std::uint8_t> bytes, std::uint32_t index);
    /// Takes `length` bytes, or as many as remain, out of the file at `index`; those after them move up. Needs mode write or
    /// readWrite.
    [[nodiscard]] bool Erase(std::uint32_t index, std::uint32_t length);

    /// In bytes.
    [[nodiscard]] std::int64_t Size() const;
    [[nodiscard]] static std::int64_t Size(const CCryptoString& fileName);

    /// The index after the last byte that was read or written; where bytes were erased, the index of the first that moved up.
    std::uint32_t CurrentPos() const { return position_; }

    static bool Remove(const CCryptoString& fileName);

private:
    ccrypto::platform::File file_;
    Mode mode_ = Mode::read;
    std::uint32_t position_ = 0;
};
