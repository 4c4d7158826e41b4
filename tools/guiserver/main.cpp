// A stand-in for the GUI server of the signing client: answers its pipe and shows what arrives.

#include "core/platform/secure_wipe.h"
#include "ipc/gui_connection.h"
#include "ipc/pipe_server.h"
#include "tools/guiserver/options.h"
#include "tools/guiserver/request_report.h"
#include "tools/text/safe_text.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cwchar>
#include <mutex>

using namespace ccrypto;

namespace {

constexpr int exitGood = 0;
constexpr int exitFailed = 1;
constexpr int exitUsage = 2;

// A client that stalls keeps the others waiting, and those give up after 15 seconds. There are five transfers to stall in: header
// and body of the request, header and body of the answer, and the end.
constexpr std::uint32_t transferTimeout = 2500;
constexpr std::uint32_t failuresInARow = 100;

std::atomic<bool> interrupted = false;
// The pipe that Ctrl+C stops. It is held under the lock, since the event comes on a thread of the system's.
std::mutex servedPipeLock;
CCryptoPipeServer* servedPipe = nullptr;

void SetServedPipe(CCryptoPipeServer* pipe)
{
    const std::lock_guard lock(servedPipeLock);
    servedPipe = pipe;
}

BOOL WINAPI OnConsoleEvent(DWORD)
{
    interrupted = true;
    const std::lock_guard lock(servedPipeLock);
    if (servedPipe != nullptr)
        servedPipe->Stop();
    return TRUE;
}

void Print(const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
}

class GuiServer {
public:
    GuiServer(CCryptoPipeServer& pipe, const GuiServerOptions& options) : pipe_(pipe), options_(options) {}

    int Serve();

private:
    bool IsOver() const { return options_.once && farewellSeen_; }
    std::uint32_t WaitLeft(ULONGLONG waited) const;
    void ServeOne();
    GivenAnswer Answer(const ReceivedRequest& request);
    void AddReplyItem(const GuiItem& item, const ReceivedRequest& request, GivenAnswer& answer);
    std::uint32_t ResultOf(const GuiRequest& request);

    CCryptoPipeServer& pipe_;
    const GuiServerOptions& options_;
    std::uint32_t number_ = 0;
    std::uint32_t transactionsAsked_ = 0;
    bool requestSeen_ = false;
    bool farewellSeen_ = false;
};

/// How long to wait for a client when the last request was `waited` milliseconds ago; 0 when the time is over.
std::uint32_t GuiServer::WaitLeft(ULONGLONG waited) const
{
    if (options_.timeout == 0)
        return CCryptoBasePipe::defaultConnectTimeout;
    const ULONGLONG whole = options_.timeout * 1000ULL;
    return static_cast<std::uint32_t>(whole - std::min(waited, whole));
}

int GuiServer::Serve()
{
    ULONGLONG lastRequest = GetTickCount64();
    std::uint32_t failures = 0;
    while (!interrupted && !IsOver()) {
        const ULONGLONG started = GetTickCount64();
        const std::uint32_t wait = WaitLeft(started - lastRequest);
        if (wait == 0 || failures == failuresInARow) {
            std::fputs(wait == 0 ? "guiserver: no request came in time\n" : "guiserver: the pipe fails\n", stderr);
            return exitFailed;
        }
        pipe_.SetTimeouts(wait, transferTimeout, transferTimeout);
        if (!pipe_.ConnectPipe()) {
            // A time-out, even a tick early, is not a failure; what fails at once, again and again, will not recover.
            failures = GetTickCount64() - started >= wait / 2 ? 0 : failures + 1;
            continue;
        }
        failures = 0;
        if (pipe_.ReadRequest()) {
            ServeOne();
            lastRequest = GetTickCount64();
        } else {
            pipe_.Disconnect();
        }
    }
    return exitGood;
}

void GuiServer::ServeOne()
{
    const ReceivedRequest request = ReadGuiRequest(pipe_);
    const GivenAnswer answer = Answer(request);
    const std::string report = options_.json ? DescribeAsJson(number_ + 1, request, answer, options_.hex)
                                             : DescribeAsText(number_ + 1, request, answer, options_.hex);
    ++number_;
    // Printed before the answer, so that a client that has the answer finds the report printed.
    Print(report);
    if (!answer.sent)
        pipe_.Disconnect();
    else if (!pipe_.Write())
        Print(DescribeLostAnswer(number_, options_.json));

    const bool farewell = request.type == static_cast<std::uint32_t>(GuiRequestType::farewell);
    if (farewell)
        farewellSeen_ = requestSeen_;
    else if (request.type != static_cast<std::uint32_t>(GuiRequestType::greeting))
        requestSeen_ = true;
}

GivenAnswer GuiServer::Answer(const ReceivedRequest& request)
{
    GivenAnswer answer;
    const bool understood = request.known != nullptr && request.wellFormed;
    answer.status = understood ? CCryptoPipeRequestData::statusGood : CCryptoPipeRequestData::statusMalformed;
    answer.sent = request.known == nullptr || request.known->replies;
    pipe_.StartMessage(answer.status);
    if (!understood || !answer.sent)
        return answer;
    for (const GuiItem& item : request.known->reply)
        AddReplyItem(item, request, answer);
    return answer;
}

std::uint32_t GuiServer::ResultOf(const GuiRequest& request)
{
    if (options_.deny)
        return 0;
    if (request.type == GuiRequestType::beginGuiTransaction)
        return ++transactionsAsked_ > options_.grantAfter;
    for (const GuiItem& item : request.reply) {
        if (item.kind == GuiItemKind::secret && !(std::string_view(item.name) == "puk" ? options_.hasPuk : options_.hasPin))
            return 0;
    }
    return 1;
}

void GuiServer::AddReplyItem(const GuiItem& item, const ReceivedRequest& request, GivenAnswer& answer)
{
    ReceivedItem given;
    given.name = item.name;
    if (item.kind == GuiItemKind::integer || item.kind == GuiItemKind::result) {
        given.kind = ReceivedItem::Kind::integer;
        given.integer = std::string_view(item.name) == "selection" ? options_.selection : ResultOf(*request.known);
        pipe_.AddInt(given.integer);
    } else if (item.kind == GuiItemKind::secret) {
        const element& secret = std::string_view(item.name) == "puk" ? options_.puk : options_.pin;
        given.length = answer.items[0].integer != 0 ? secret.length() : 0;
        given.kind = given.length != 0 ? ReceivedItem::Kind::secret : ReceivedItem::Kind::empty;
        pipe_.AddData(secret.data(), given.length);
    } else {
        return;
    }
    answer.items.push_back(std::move(given));
}

/// The words of the command line in UTF-8. There may be PINs among them: whoever is done with them wipes them.
std::vector<std::string> Arguments()
{
    int count = 0;
    wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    arguments.reserve(static_cast<std::size_t>(count));
    for (int index = 1; index < count; ++index) {
        const int size = WideCharToMultiByte(CP_UTF8, 0, wide[index], -1, nullptr, 0, nullptr, nullptr);
        std::string& argument = arguments.emplace_back(static_cast<std::size_t>(size), '\0');
        WideCharToMultiByte(CP_UTF8, 0, wide[index], -1, argument.data(), size, nullptr, nullptr);
        argument.pop_back();
        platform::SecureWipe(wide[index], std::wcslen(wide[index]) * sizeof(wchar_t));
    }
    LocalFree(wide);
    return arguments;
}

} // namespace

int main()
{
    SetConsoleOutputCP(CP_UTF8);
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    std::setvbuf(stdout, nullptr, _IONBF, 0);

    GuiServerOptions options;
    std::string error;
    std::vector<std::string> arguments = Arguments();
    const bool understood = ParseGuiServerOptions(arguments, options, error);
    for (std::string& argument : arguments)
        platform::SecureWipe(argument.data(), argument.size());
    if (!understood) {
        std::fprintf(stderr, "guiserver: %s\nSee guiserver --help.\n", error.c_str());
        return exitUsage;
    }
    if (options.help) {
        std::fputs(guiServerUsage, stdout);
        return exitGood;
    }

    const bool ownName = !options.pipe.empty();
    CCryptoPipeServer pipe(ownName ? options.pipe.c_str() : CGUI::pipeName, options.secure, !ownName);
    if (!pipe.isListening()) {
        std::fprintf(stderr, "guiserver: %s could not be created; is another server there?\n", pipe.name().c_str());
        return exitFailed;
    }
    SetServedPipe(&pipe);
    SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
    const std::string ready =
        options.json ? "{\"listening\":" + JsonString(pipe.name()) + "}\n" : "listening on " + pipe.name() + "\n";
    Print(ready);

    const int code = GuiServer(pipe, options).Serve();
    SetConsoleCtrlHandler(OnConsoleEvent, FALSE);
    SetServedPipe(nullptr);
    return code;
}
