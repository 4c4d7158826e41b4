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
    /// As Open; isOpen() tells how it ended.
    CCryptoFile(const CCryptoString& fileName, Mode mode);
    CCryptoFile(const CCryptoFile&) = delete;
    CCryptoFile& operator=(const CCryptoFile&) = delete;

    /// A file held so far is closed first.
    bool Open(const CCryptoString& fileName, Mode mode);
    void Close();
    bool isOpen() const { return file_.isOpen(); }

    /// Reads `length` bytes from `index` on, or as many as remain, into `content`, whose type stays. An index past the end fails.
    bool Read(std::uint32_t index, std::uint32_t length, element& content);
    /// Puts the bytes at `index`, over those there and beyond the end as need be. Mode append puts them at the end.
    bool Write(std::span<const std::uint8_t> bytes, std::uint32_t index);
    /// Takes `length` bytes, or as many as remain, out of the file at `index`; those behind move up. Needs mode write or readWrite.
    bool Erase(std::uint32_t index, std::uint32_t length);

    /// In bytes.
    std::int64_t Size() const;
    static std::int64_t Size(const CCryptoString& fileName);

    /// The index behind the last byte that was read or written; where bytes were erased, the index of the first that moved up.
    std::uint32_t CurrentPos() const { return position_; }

    static bool Remove(const CCryptoString& fileName);

private:
    ccrypto::platform::File file_;
    Mode mode_ = Mode::read;
    std::uint32_t position_ = 0;
};
