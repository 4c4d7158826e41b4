#include "bench/pki/revocation_list.h"

#include <algorithm>
#include <cstring>
#include <random>
#include <string_view>

using namespace ccrypto;

namespace {

constexpr std::uint32_t entryCount = 1'000'000;
constexpr std::uint32_t serialNumberLength = 19;
constexpr std::size_t askedCount = 4096;

using namespace std::string_view_literals;

constexpr std::string_view algorithm = "\x30\x0D\x06\x09\x2A\x86\x48\x86\xF7\x0D\x01\x01\x0B\x05\x00"sv;
constexpr std::string_view fields = "\x02\x01\x01\x30\x0D\x06\x09\x2A\x86\x48\x86\xF7\x0D\x01\x01\x0B\x05\x00"
                                    "\x30\x0F\x31\x0D\x30\x0B\x06\x03\x55\x04\x03\x0C\x04Test"
                                    "\x17\x0D"
                                    "261101000000Z\x17\x0D"
                                    "261201000000Z"sv;
constexpr std::string_view extensions = "\xA0\x0E\x30\x0C\x30\x0A\x06\x03\x55\x1D\x14\x04\x03\x02\x01\x07"sv;
constexpr std::string_view date = "\x17\x0D"
                                  "261020120000Z"sv;

/// The head of a SEQUENCE, with a length of four octets.
void AppendHead(element& target, std::size_t length)
{
    const auto octetOf = [length](unsigned int shift) { return static_cast<std::uint8_t>(length >> shift); };
    const std::uint8_t head[] = {0x30, 0x84, octetOf(24), octetOf(16), octetOf(8), octetOf(0)};
    target.append(head, sizeof head);
}

element MakeList()
{
    // Lengths are DER with four octets only where they are above 2^24.
    std::mt19937_64 random(1);
    element entries;
    entries.reserve(entryCount * 38);
    for (std::uint32_t index = 0; index < entryCount; ++index) {
        std::uint64_t words[3] = {random(), random(), random()};
        std::uint8_t entry[38] = {0x30, 36, 0x02, serialNumberLength};
        std::memcpy(entry + 4, words, serialNumberLength);
        entry[4] = static_cast<std::uint8_t>(entry[4] & 0x7F) | 1;
        std::memcpy(entry + 4 + serialNumberLength, date.data(), date.size());
        entries.append(entry, sizeof entry);
    }
    constexpr std::uint32_t headLength = 6;
    const std::size_t signedLength = fields.size() + headLength + entries.length() + extensions.size();
    const std::string_view signature = "\x03\x03\x00\x01\x02"sv;
    element list;
    list.reserve(entries.length() + 200);
    AppendHead(list, headLength + signedLength + algorithm.size() + signature.size());
    AppendHead(list, signedLength);
    list.append(fields);
    AppendHead(list, entries.length());
    list.append(entries.view());
    list.append(extensions);
    list.append(algorithm);
    list.append(signature);
    return list;
}

} // namespace

namespace ccrypto {

const element& MillionEntries()
{
    static const element list = MakeList();
    return list;
}

const std::vector<element>& SomeSerialNumbers()
{
    static const std::vector<element> numbers = [] {
        const element& list = MillionEntries();
        const std::size_t first = list.view().find(date, fields.size() + 18) - serialNumberLength;
        std::mt19937 random(2);
        std::vector<element> some;
        for (std::size_t index = 0; index < askedCount; ++index)
            some.emplace_back(list.data() + first + 38 * (random() % entryCount), serialNumberLength);
        return some;
    }();
    return numbers;
}

} // namespace ccrypto
