#include "bench/asn1/certificates.h"

#include "asn1/der/pem.h"
#include "asn1/parser/parser.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

using namespace ccrypto;

namespace {

constexpr const char* trustStore = "/etc/ssl/certs/ca-certificates.crt";
constexpr std::uint32_t minLength = 900;
constexpr std::uint32_t maxLength = 2048;

element ReadCertificate()
{
    std::ifstream file(trustStore, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    std::vector<DataBlock> blocks;
    if (!ReadPem(text, blocks))
        throw std::runtime_error(std::string("no PEM blocks in ") + trustStore);
    std::vector<element> certificates;
    for (DataBlock& block : blocks) {
        if (block.bytes.length() >= minLength && block.bytes.length() <= maxLength)
            certificates.push_back(std::move(block.bytes));
    }
    if (certificates.empty())
        throw std::runtime_error(std::string("no certificates in ") + trustStore);
    const auto middle = certificates.begin() + static_cast<std::ptrdiff_t>(certificates.size() / 2);
    std::ranges::nth_element(certificates, middle, {}, &element::length);
    return *middle;
}

constexpr const char* listHead = "SEQUENCE { INTEGER = 1, SEQUENCE { OBJECT_IDENTIFIER = \"1.2.840.113549.1.1.11\", NULL },"
                                 "SEQUENCE { SET { SEQUENCE { OBJECT_IDENTIFIER = \"2.5.4.3\", UTF8String = \"Test\" } } },"
                                 "UTCTime = \"261122000000Z\", UTCTime = \"271122000000Z\", SEQUENCE }";
constexpr const char* listEntry = "SEQUENCE { INTEGER = serial, UTCTime = \"261122093000Z\" }";
constexpr const char* listEntryWithReason = "SEQUENCE { INTEGER = serial, UTCTime = \"261122093000Z\","
                                            "SEQUENCE { SEQUENCE { OBJECT_IDENTIFIER = \"2.5.29.21\", OCTET_STRING = #0A0104 } } }";
constexpr std::uint32_t entryLength = 39;
constexpr std::uint32_t reasonLength = 14;

} // namespace

namespace ccrypto {

const element& Certificate()
{
    static const element certificate = ReadCertificate();
    return certificate;
}

element RevocationList(std::uint32_t bytes, bool withReasons)
{
    CCryptoParser list;
    CCryptoParser entry;
    if (!list.Load_ASCII_Memory(listHead) || !entry.Load_ASCII_Memory(withReasons ? listEntryWithReason : listEntry))
        return {};
    elementNode* const revoked = list.root()->content()->last();
    elementNode* last = nullptr;
    const std::uint32_t entries = bytes / (withReasons ? entryLength + reasonLength : entryLength);
    for (std::uint32_t index = 0; index <= entries; ++index) {
        ElementNodePtr next = entry.root()->clone();
        element serial("\x5A nineteen more bytes", 20, ElementType::integer);
        for (std::uint32_t byte = 0; byte < 4; ++byte)
            serial.data()[1 + byte] = static_cast<std::uint8_t>(index >> (8 * byte));
        next->content()->set(LinkKind::shortValue, std::move(serial));
        last = last == nullptr ? revoked->set(LinkKind::content, std::move(next)) : last->set(LinkKind::sibling, std::move(next));
    }
    return list.ToDer();
}

} // namespace ccrypto
