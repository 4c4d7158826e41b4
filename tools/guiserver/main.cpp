// A stand-in for the GUI server of the signing client: answers its pipe and shows what arrives.

#include "ipc/gui_ipc.h"
#include "ipc/pipe_server.h"
#include "tools/guiserver/options.h"
#include "tools/guiserver/request_report.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <atomic>
#include <cstdio>

namespace {

constexpr int exitGood = 0;
constexpr int exitFailed = 1;
constexpr int exitUsage = 2;

// A client that stalls keeps the others waiting, and those give up after 15 seconds.
constexpr std::uint32_t clientTimeout = 5000;
constexpr std::uint32_t connectTimeout = CCryptoBasePipe::defaultConnectTimeout;
constexpr std::uint32_t failuresInARow = 100;

std::atomic<CCryptoPipeServer*> servedPipe = nullptr;
std::atomic<bool> interrupted = false;

BOOL WINAPI OnConsoleEvent(DWORD)
{
    interrupted = true;
    if (CCryptoPipeServer* pipe = servedPipe)
        pipe->Stop();
    return TRUE;
}

class GuiServer {
public:
    GuiServer(CCryptoPipeServer& pipe, const GuiServerOptions& options) : pipe_(pipe), options_(options) {}

    int Serve();

private:
    bool IsOver() const { return options_.once && farewellSeen_; }
    bool TimeIsUp(ULONGLONG since) const { return options_.timeout != 0 && GetTickCount64() - since >= options_.timeout * 1000ULL; }
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

int GuiServer::Serve()
{
    const std::uint32_t wait = options_.timeout != 0 ? options_.timeout * 1000 : connectTimeout;
    pipe_.SetTimeouts(wait, clientTimeout, clientTimeout);
    ULONGLONG lastRequest = GetTickCount64();
    std::uint32_t failures = 0;
    while (!interrupted && !IsOver()) {
        const ULONGLONG started = GetTickCount64();
        if (!pipe_.ConnectPipe()) {
            // A time-out is nobody's failure; what fails at once, again and again, will not get better.
            failures = GetTickCount64() - started >= wait ? 0 : failures + 1;
            if (interrupted)
                break;
            if (TimeIsUp(lastRequest) || failures == failuresInARow) {
                std::fputs(failures == failuresInARow ? "guiserver: the pipe fails\n" : "guiserver: no request came in time\n",
                           stderr);
                return exitFailed;
            }
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
    const std::string told = options_.json ? DescribeAsJson(number_ + 1, request, answer, options_.hex)
                                           : DescribeAsText(number_ + 1, request, answer, options_.hex);
    ++number_;
    // Told before it is answered, so that whoever waits for the answer finds it told.
    std::fwrite(told.data(), 1, told.size(), stdout);
    if (answer.sent)
        pipe_.Write();
    else
        pipe_.Disconnect();

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

std::vector<std::string> Arguments()
{
    int count = 0;
    wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int index = 1; index < count; ++index) {
        const int size = WideCharToMultiByte(CP_UTF8, 0, wide[index], -1, nullptr, 0, nullptr, nullptr);
        std::string argument(static_cast<std::size_t>(size), '\0');
        WideCharToMultiByte(CP_UTF8, 0, wide[index], -1, argument.data(), size, nullptr, nullptr);
        argument.pop_back();
        arguments.push_back(std::move(argument));
    }
    LocalFree(wide);
    return arguments;
}

} // namespace

int main()
{
    SetConsoleOutputCP(CP_UTF8);
    _setmode(_fileno(stdout), _O_BINARY);
    std::setvbuf(stdout, nullptr, _IONBF, 0);

    GuiServerOptions options;
    std::string error;
    if (!ParseGuiServerOptions(Arguments(), options, error)) {
        std::fprintf(stderr, "guiserver: %s\nguiserver --help tells more.\n", error.c_str());
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
    servedPipe = &pipe;
    SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
    const std::string ready =
        options.json ? "{\"listening\":" + JsonText(pipe.name()) + "}\n" : "listening on " + pipe.name() + "\n";
    std::fwrite(ready.data(), 1, ready.size(), stdout);

    const int code = GuiServer(pipe, options).Serve();
    SetConsoleCtrlHandler(OnConsoleEvent, FALSE);
    servedPipe = nullptr;
    return code;
}
