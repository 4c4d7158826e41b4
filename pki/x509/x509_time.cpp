#include "pki/x509/x509_time.h"

#include "asn1/der/der_analyzer.h"
#include "core/base/ascii.h"

#include <algorithm>
#include <string_view>

namespace ccrypto {

namespace {

constexpr std::int32_t firstUtcTimeYear = 1950;
constexpr std::int32_t lastUtcTimeYear = 2049;
constexpr std::size_t utcTimeLength = std::string_view("YYMMDDHHMMSSZ").size();
constexpr std::size_t generalizedTimeLength = std::string_view("YYYYMMDDHHMMSSZ").size();

/// Takes `count` digits from the front of the text, which has as many.
std::int32_t TakeNumber(std::string_view& text, std::size_t count)
{
    std::int32_t number = 0;
    for (const char digit : text.substr(0, count))
        number = number * 10 + (digit - '0');
    text.remove_prefix(count);
    return number;
}

/// Milliseconds of a fraction with its period; further digits are cut off. \return none for other text.
std::optional<std::int32_t> MillisecondsOf(std::string_view fraction)
{
    if (fraction.empty())
        return 0;
    if (fraction[0] != '.' || fraction.size() == 1 || !std::ranges::all_of(fraction.substr(1), IsDigit))
        return std::nullopt;
    std::int32_t milliseconds = 0;
    for (std::size_t index = 1; index <= 3; ++index)
        milliseconds = milliseconds * 10 + (index < fraction.size() ? fraction[index] - '0' : 0);
    return milliseconds;
}

CCryptoDateTime TimeOf(ElementType type, std::string_view text, bool fractions)
{
    const bool isUtcTime = type == ElementType::utcTime;
    const std::size_t length = isUtcTime ? utcTimeLength : generalizedTimeLength;
    const bool mayHaveFraction = fractions && !isUtcTime;
    if ((!isUtcTime && type != ElementType::generalizedType) || text.size() < length || !text.ends_with('Z') ||
        (text.size() > length && !mayHaveFraction) || !std::ranges::all_of(text.substr(0, length - 1), IsDigit))
        return {};
    platform::CalendarTime time;
    time.year = TakeNumber(text, isUtcTime ? 2 : 4);
    if (isUtcTime)
        time.year += time.year < firstUtcTimeYear % 100 ? 2000 : 1900;
    for (std::int32_t* field : {&time.month, &time.day, &time.hour, &time.minute, &time.second})
        *field = TakeNumber(text, 2);
    const std::optional<std::int32_t> milliseconds = MillisecondsOf(text.substr(0, text.size() - 1));
    if (!milliseconds)
        return {};
    time.millisecond = *milliseconds;
    const CCryptoDateTime result(time, true);
    return result.isValid() ? result : CCryptoDateTime();
}

bool IsUtcTimeYear(const CCryptoDateTime& utc)
{
    return utc.fields().year >= firstUtcTimeYear && utc.fields().year <= lastUtcTimeYear;
}

} // namespace

CCryptoDateTime ReadX509Time(const DerItem& item, bool fractions)
{
    if ((item.identifier & (derClassMask | derConstructedBit)) != 0)
        return {};
    const std::string_view text(reinterpret_cast<const char*>(item.value.data()), item.value.size());
    return TimeOf(UniversalType(item.identifier), text, fractions);
}

CCryptoDateTime ReadX509Time(const elementNode* node, bool fractions)
{
    const elementNode* const value = node != nullptr ? node->value() : nullptr;
    if (value == nullptr || IsAsn1Type(value->type()))
        return {};
    return TimeOf(node->type(), value->token().view(), fractions);
}

const char* X509TimeTypeWord(const CCryptoDateTime& time)
{
    return IsUtcTimeYear(time.toUtcDateTime()) ? "UTCTime" : "GeneralizedType";
}

CCryptoString X509TimeText(const CCryptoDateTime& time)
{
    const CCryptoDateTime utc = time.toUtcDateTime();
    if (!utc.isValid())
        return {};
    return utc.format(IsUtcTimeYear(utc) ? "yyMMddHHmmssZ" : "yyyyMMddHHmmssZ");
}

} // namespace ccrypto
