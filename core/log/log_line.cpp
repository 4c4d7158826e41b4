#include "core/log/log_line.h"

#include "core/log/date_format.h"
#include "core/platform/clock.h"
#include "core/platform/process.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace ccrypto {

namespace {

constexpr std::uint32_t maxIndentation = 30;
constexpr std::string_view dashes = "------------------------------";
static_assert(dashes.size() == maxIndentation);

constexpr std::size_t maxTimingPrefix = 19;

/// How a character is shown that would end a line or control a terminal.
struct VisibleForm {
    std::size_t length = 0; ///< bytes of the character; 0 when it is shown as it is
    char text[8] = {};
};

VisibleForm ControlByte(unsigned char byte)
{
    VisibleForm form{1, {}};
    if (byte == '\n' || byte == '\r')
        std::snprintf(form.text, sizeof form.text, "\\%c", byte == '\n' ? 'n' : 'r');
    else
        std::snprintf(form.text, sizeof form.text, "\\x%02x", byte);
    return form;
}

VisibleForm VisibleFormOf(std::string_view text)
{
    const auto byte = static_cast<unsigned char>(text.front());
    if ((byte < ' ' && byte != '\t') || byte == 0x7F)
        return ControlByte(byte);
    if (byte == 0xC2 && text.size() > 1 && static_cast<unsigned char>(text[1]) >= 0x80 &&
        static_cast<unsigned char>(text[1]) < 0xA0) {
        VisibleForm form{2, {}};
        std::snprintf(form.text, sizeof form.text, "\\u00%02x", static_cast<unsigned char>(text[1]));
        return form;
    }
    if (text.starts_with("\xE2\x80\xA8"))
        return {3, "\\u2028"};
    if (text.starts_with("\xE2\x80\xA9"))
        return {3, "\\u2029"};
    return {};
}

} // namespace

LogLine::LogLine(const LogLineHead& head, std::string_view text)
{
    addTime(head);

    char ids[24];
    const int idsLength = std::snprintf(ids, sizeof ids, "%04X %04X ", static_cast<unsigned>(platform::CurrentProcessId()),
                                        static_cast<unsigned>(platform::CurrentThreadId()));
    add({ids, static_cast<std::size_t>(idsLength)});

    add(head.tag.substr(0, maxLogTag));
    add(" ");
    add(dashes.substr(0, std::min(head.depth, maxIndentation)));
    addVisibly(text.substr(0, logTextLimit));
    bytes_[length_] = '\0';
}

void LogLine::addTime(const LogLineHead& head)
{
    if (head.profiling && !head.timingPrefix.empty()) {
        add(head.timingPrefix.substr(0, maxTimingPrefix));
        return;
    }
    TimeTextBuffer time;
    add(FormatCalendarTime(platform::LocalNow(), head.profiling ? "HH:mm:ss:fff: " : "yyyy-MM-dd HH:mm:ss:fff ", time));
}

void LogLine::add(std::string_view bytes)
{
    std::memcpy(bytes_ + length_, bytes.data(), bytes.size());
    length_ += bytes.size();
}

void LogLine::addVisibly(std::string_view text)
{
    while (!text.empty()) {
        if (const VisibleForm form = VisibleFormOf(text); form.length != 0) {
            add(form.text);
            text.remove_prefix(form.length);
        } else {
            bytes_[length_++] = text.front();
            text.remove_prefix(1);
        }
    }
}

std::string_view LogLine::withLineEnd()
{
    bytes_[length_] = '\n';
    return {bytes_, length_ + 1};
}

} // namespace ccrypto
