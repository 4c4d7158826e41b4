#include "core/system/file.h"

#include "core/diagnostics/auto_logger.h"

#include <algorithm>
#include <limits>

using namespace ccrypto;

namespace {

constexpr std::uint64_t lastIndex = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint64_t maxOfUnknownSize = 64 << 20;
constexpr const char* notOpen = "File is not open";
constexpr const char* notWritable = "File is not open in a mode for this";
constexpr const char* unusableName = "File name is empty or contains a zero byte";

bool IsUsable(const CCryptoString& fileName)
{
    return !fileName.isEmpty() && !fileName.contains(std::string_view("\0", 1));
}

bool Appends(platform::FileMode mode)
{
    return mode == platform::FileMode::append || mode == platform::FileMode::appendShared;
}

/// For the log, which shows indices as signed.
int Shown(std::uint64_t number)
{
    return static_cast<int>(static_cast<std::uint32_t>(number));
}

/// Reads up to `count` bytes, piece by piece, since a file of unknown size may hold far fewer.
bool ReadPart(platform::File& file, std::uint64_t index, std::uint32_t count, element& content)
{
    constexpr std::uint32_t pieceSize = 0x100000;
    for (std::uint32_t before = 0; before < count;) {
        const std::uint32_t wanted = std::min(count - before, pieceSize);
        content.resize(before + wanted);
        const std::int64_t done = file.readAt(index + before, content.data() + before, wanted);
        if (done < 0)
            return false;
        before += static_cast<std::uint32_t>(done);
        content.resize(before);
        if (done < wanted)
            break;
    }
    return true;
}

/// Moves the bytes between `from` and `end` to `to`, which lies before `from`. Failures go to `logger`.
bool MoveUp(platform::File& file, std::uint64_t from, std::uint64_t to, std::uint64_t end, CCryptoAutoLogger& logger)
{
    constexpr std::uint64_t chunkSize = 0x10000;
    element chunk;
    chunk.resize(static_cast<std::uint32_t>(std::min(end - from, chunkSize)));
    while (from < end) {
        const auto count = static_cast<std::uint32_t>(std::min(end - from, chunkSize));
        const std::int64_t read = file.readAt(from, chunk.data(), count);
        if (read >= 0 && read < count)
            return logger.fail(false, "The file became shorter meanwhile");
        if (read < 0 || !file.writeAt(to, chunk.data(), count)) {
            logger.setLastWindowsError();
            return false;
        }
        from += count;
        to += count;
    }
    return true;
}

} // namespace

CCryptoFile::CCryptoFile(const CCryptoString& fileName, Mode mode)
{
    static_cast<void>(Open(fileName, mode));
}

bool CCryptoFile::Open(const CCryptoString& fileName, Mode mode)
{
    CCryptoAutoLogger logger("CCryptoFile::Open", ccrypto::LoggerMode::resultExpected, "filename=%s, mode=%d", fileName.c_str(),
                             static_cast<int>(mode));

    file_.close();
    position_ = 0;
    mode_ = mode;
    if (!IsUsable(fileName))
        return logger.fail(false, unusableName);
    if (!file_.open(fileName.c_str(), mode)) {
        logger.setLastWindowsError();
        return false;
    }
    return logger.setResult(true);
}

void CCryptoFile::Close()
{
    CCryptoAutoLogger logger("CCryptoFile::Close");

    file_.close();
    position_ = 0;
    logger.setResult(true);
}

bool CCryptoFile::Read(std::uint32_t index, std::uint32_t length, element& content)
{
    CCryptoAutoLogger logger("CCryptoFile::Read", ccrypto::LoggerMode::resultExpected, "index=%d, length=%d", Shown(index),
                             Shown(length));

    content.clear();
    if (!isOpen())
        return logger.fail(false, notOpen);
    const std::int64_t size = file_.size();
    if (size < 0) {
        logger.setLastWindowsError();
        return false;
    }
    const bool sizeKnown = size != 0;
    if (sizeKnown && size < index)
        return logger.fail(false, "size<index");
    const std::uint64_t available = sizeKnown ? static_cast<std::uint64_t>(size) - index : maxOfUnknownSize + 1;
    const auto count = static_cast<std::uint32_t>(std::min<std::uint64_t>({length, available, lastIndex - index}));
    if (sizeKnown)
        content.reserve(count);
    if (!ReadPart(file_, index, count, content)) {
        logger.setLastWindowsError();
        content.clear();
        return false;
    }
    if (!sizeKnown && content.isEmpty() && index != 0)
        return logger.fail(false, "size<index");
    if (!sizeKnown && content.length() > maxOfUnknownSize) {
        content.clear();
        return logger.fail(false, "The file has no size and does not end within 64 MiB");
    }
    position_ = index + content.length();
    return logger.setResult(true);
}

bool CCryptoFile::Write(std::span<const std::uint8_t> bytes, std::uint32_t index)
{
    CCryptoAutoLogger logger("CCryptoFile::Write", ccrypto::LoggerMode::resultExpected, "%d bytes, index=%d", Shown(bytes.size()),
                             Shown(index));

    if (!isOpen())
        return logger.fail(false, notOpen);
    if (mode_ == Mode::read)
        return logger.fail(false, notWritable);
    const std::int64_t start = Appends(mode_) ? file_.size() : index;
    if (start < 0) {
        logger.setLastWindowsError();
        return false;
    }
    const auto place = static_cast<std::uint64_t>(start);
    if (place > lastIndex || bytes.size() > lastIndex - place)
        return logger.fail(false, "Files beyond 4 GiB are not supported");
    const auto count = static_cast<std::uint32_t>(bytes.size());
    const bool done = Appends(mode_) ? file_.append(bytes.data(), count) : file_.writeAt(place, bytes.data(), count);
    if (!done) {
        logger.setLastWindowsError();
        return false;
    }
    position_ = static_cast<std::uint32_t>(place) + count;
    return logger.setResult(true);
}

bool CCryptoFile::Erase(std::uint32_t index, std::uint32_t length)
{
    CCryptoAutoLogger logger("CCryptoFile::Erase", ccrypto::LoggerMode::resultExpected, "index=%d, length=%d", Shown(index),
                             Shown(length));

    if (!isOpen())
        return logger.fail(false, notOpen);
    if (mode_ != Mode::write && mode_ != Mode::readWrite)
        return logger.fail(false, notWritable);
    const std::int64_t size = file_.size();
    if (size < 0) {
        logger.setLastWindowsError();
        return false;
    }
    if (size < index)
        return logger.fail(false, "size<index");
    const auto end = static_cast<std::uint64_t>(size);
    const std::uint64_t count = std::min<std::uint64_t>(length, end - index);
    // With nothing to take out the size stays whatever others have made of it meanwhile.
    if (count != 0) {
        if (!MoveUp(file_, index + count, index, end, logger))
            return false;
        if (!file_.truncate(end - count)) {
            logger.setLastWindowsError();
            return false;
        }
    }
    position_ = index;
    return logger.setResult(true);
}

std::int64_t CCryptoFile::Size() const
{
    CCryptoAutoLogger logger("CCryptoFile::Size");

    if (!isOpen())
        return logger.fail(std::int64_t{-1}, notOpen);
    const std::int64_t size = file_.size();
    if (size < 0)
        logger.setLastWindowsError();
    else
        logger.setResult(true);
    return size;
}

std::int64_t CCryptoFile::Size(const CCryptoString& fileName)
{
    CCryptoAutoLogger logger("CCryptoFile::Size", ccrypto::LoggerMode::resultExpected, "filename=%s", fileName.c_str());

    if (!IsUsable(fileName))
        return logger.fail(std::int64_t{-1}, unusableName);
    platform::File file;
    const std::int64_t size = file.open(fileName.c_str(), Mode::read) ? file.size() : -1;
    if (size < 0)
        logger.setLastWindowsError();
    else
        logger.setResult(true);
    return size;
}

bool CCryptoFile::Remove(const CCryptoString& fileName)
{
    CCryptoAutoLogger logger("CCryptoFile::Remove", ccrypto::LoggerMode::resultExpected, "filename=%s", fileName.c_str());

    if (!IsUsable(fileName))
        return logger.fail(false, unusableName);
    if (!platform::File::Remove(fileName.c_str())) {
        logger.setLastWindowsError();
        return false;
    }
    return logger.setResult(true);
}
