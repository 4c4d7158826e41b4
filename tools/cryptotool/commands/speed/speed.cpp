#include "core/base/ascii.h"
#include "crypto/base/cpu_features.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/host.h"
#include "tools/cryptotool/cli/invocation.h"
#include "tools/cryptotool/cli/progress.h"
#include "tools/cryptotool/commands/speed/speed_row.h"
#include "tools/cryptotool/output/output.h"
#include "tools/text/safe_text.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>

namespace ccrypto {

namespace {

constexpr std::string_view speedDetails =
    R"(Measures the library's algorithms on this processor, and prints how many million bytes of data, or how many operations, each processes
in a second of processor time. NAME is part of an algorithm's name, in either case, with or without "-"; without one all are
measured, which takes about a quarter of a minute. Every variant that the processor supports has a line, and "*" marks the one that
the library uses; what works with keys, except x25519, is measured with that one alone. The environment variable CRYPTO_CPU, set to
portable, makes it the portable one.
)";

constexpr Option speedOptions[] = {
    {OptionKind::number, 0, "seconds", "N", "spend N seconds of processor time on each number, 1 to 60 (a tenth of a second)"},
    jsonOption,
    outputOption,
};

constexpr std::uint64_t maxSeconds = 60;
constexpr double defaultSeconds = 0.1;
constexpr std::array<std::size_t, 3> sizes = {16, 1024, 16384};

/// The result for a row: for texts, the bytes per second of each size, otherwise the operations per second.
struct Measured {
    const SpeedRow* row;
    std::vector<double> perSecond;
};

/// Small letters and digits alone.
std::string Plain(std::string_view name)
{
    std::string plain;
    for (const char character : name) {
        if (IsAsciiLetter(character) || IsDigit(character))
            plain += ToSmall(character);
    }
    return plain;
}

bool Matches(const SpeedRow& row, const std::string& name)
{
    const std::string plain = Plain(name);
    return !plain.empty() && Plain(row.algorithm).find(plain) != std::string::npos;
}

double CallsPerSecond(const SpeedRow::Call& call, double seconds)
{
    // The first call fills caches and what is made on first use; more of them wait for the next step of a coarse clock.
    const std::chrono::nanoseconds before = ProcessorTime();
    std::chrono::nanoseconds start = before;
    for (; start == before; start = ProcessorTime())
        call();
    const auto since = [start] { return std::chrono::duration<double>(ProcessorTime() - start).count(); };
    std::uint64_t calls = 0;
    std::uint64_t batch = 1;
    for (double elapsed = 0;; elapsed = since()) {
        if (elapsed >= seconds)
            return static_cast<double>(calls) / elapsed;
        // The clock is read rarely, since reading it takes time too.
        if (elapsed < seconds / 16)
            batch = std::max<std::uint64_t>(batch, calls / 2);
        for (std::uint64_t count = 0; count < batch; ++count)
            call();
        calls += batch;
    }
}

/// \return false when something that is measured could not be prepared.
bool Measure(const SpeedRow& row, double seconds, Measured& measured)
{
    measured = {&row, {}};
    for (const std::size_t size : sizes) {
        const SpeedRow::Call call = row.prepare(size);
        if (!call)
            return false;
        measured.perSecond.push_back(CallsPerSecond(call, seconds) * static_cast<double>(row.countsBytes ? size : 1));
        if (!row.countsBytes)
            break;
    }
    return true;
}

std::string Number(double value, int digits)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", digits, value);
    return text;
}

std::string Left(std::string_view text, std::size_t width)
{
    return std::string(text) + std::string(width - std::min(width, text.size()), ' ');
}

std::string Right(std::string_view text, std::size_t width)
{
    return std::string(width - std::min(width, text.size()), ' ') + std::string(text);
}

constexpr std::size_t algorithmWidth = 26;
constexpr std::size_t variantWidth = 12;
constexpr std::size_t numberWidth = 12;

std::string Table(const std::vector<Measured>& all, bool countsBytes)
{
    std::string lines;
    for (const auto& [row, perSecond] : all) {
        if (row->countsBytes != countsBytes)
            continue;
        lines += Left(row->algorithm, algorithmWidth) + Left(row->variant + (row->isUsed ? " *" : ""), variantWidth);
        for (const double value : perSecond)
            lines += Right(Number(countsBytes ? value / 1e6 : value, 1), numberWidth);
        lines += "\n";
    }
    if (lines.empty())
        return lines;
    const std::string head = Left("algorithm", algorithmWidth) + Left("variant", variantWidth);
    if (!countsBytes)
        return head + Right("per second", numberWidth) + "\n" + lines;
    return head + Right("16 B", numberWidth) + Right("1 KiB", numberWidth) + Right("16 KiB", numberWidth) + "  MB/s\n" + lines;
}

std::string Text(const std::vector<Measured>& all)
{
    const std::string bytes = Table(all, true);
    const std::string operations = Table(all, false);
    return bytes + (bytes.empty() || operations.empty() ? "" : "\n") + operations;
}

std::string Json(const std::vector<Measured>& all)
{
    std::string text = "{\"speed\":[";
    const char* before = "\n";
    for (const auto& [row, perSecond] : all) {
        text += before + ("{\"algorithm\":" + JsonString(row->algorithm)) + ",\"variant\":" + JsonString(row->variant) +
                ",\"used\":" + (row->isUsed ? "true" : "false");
        before = ",\n";
        if (!row->countsBytes) {
            text += ",\"operationsPerSecond\":" + Number(perSecond.front(), 2) + "}";
            continue;
        }
        text += ",\"bytesPerSecond\":{";
        for (std::size_t index = 0; index < sizes.size(); ++index)
            text += (index == 0 ? "\"" : ",\"") + std::to_string(sizes[index]) + "\":" + Number(perSecond[index], 0);
        text += "}}";
    }
    return text + "\n]}\n";
}

int MeasureSpeed(Invocation& invocation)
{
    const Arguments& arguments = invocation.arguments();
    const std::uint64_t wholeSeconds = arguments.number("seconds", 1);
    if (wholeSeconds < 1 || wholeSeconds > maxSeconds)
        return invocation.misuse("--seconds must be from 1 to " + std::to_string(maxSeconds));
    const double seconds = arguments.has("seconds") ? static_cast<double>(wholeSeconds) : defaultSeconds;
    SpeedRows rows;
    AddHashRows(rows);
    AddCipherRows(rows);
    AddRsaRows(rows);
    AddCurveRows(rows);
    const std::vector<std::string>& names = arguments.operands();
    for (const std::string& name : names)
        if (std::ranges::none_of(rows, [&](const SpeedRow& row) { return Matches(row, name); }))
            return invocation.misuse("unknown algorithm " + name);
    if (!names.empty())
        std::erase_if(rows, [&](const SpeedRow& row) {
            return std::ranges::none_of(names, [&](const std::string& name) { return Matches(row, name); });
        });

    if (!cpu::UnknownWord().empty())
        invocation.warn("CRYPTO_CPU", "unknown word " + std::string(cpu::UnknownWord()));
    Output output(invocation.console(), arguments.value(outputOption.name), Output::Content::text);
    if (!output.open())
        return RefuseOutput(invocation, output);
    std::vector<Measured> all(rows.size());
    {
        ProgressLine line(invocation.console());
        for (std::size_t index = 0; index < rows.size(); ++index) {
            if (line.isDue())
                line.show(std::to_string(index + 1) + " of " + std::to_string(rows.size()) + ": " + rows[index].algorithm + ", " +
                          rows[index].variant);
            if (!Measure(rows[index], seconds, all[index]))
                return invocation.refuse(rows[index].algorithm, "it could not be measured");
        }
    }
    return FinishOutput(invocation, output, output.write(arguments.has("json") ? Json(all) : Text(all)));
}

} // namespace

const Command speedCommand = {"speed",      "",          "measures the library's algorithms", "[NAME...]", 0, 1000, speedDetails,
                              speedOptions, MeasureSpeed};

} // namespace ccrypto
