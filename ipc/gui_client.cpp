#include "ipc/gui_client.h"

#include "core/diagnostics/auto_logger.h"
#include "ipc/gui_connection.h"
#include "ipc/session.h"

using namespace ccrypto;

namespace {

constexpr std::uint32_t transactionAttempts = 60;
constexpr std::uint32_t transactionPause = 500;

/// The one integer that answers a request.
std::optional<std::uint32_t> Answer(CGUI_IPC& pipe, CCryptoAutoLogger& logger)
{
    std::uint32_t answer = 0;
    if (!logger.setResult(pipe.Call() && pipe.GetInt(answer, true)))
        return std::nullopt;
    return answer;
}

/// A request that nothing but its status answers.
bool Acknowledged(CGUI_IPC& pipe, CCryptoAutoLogger& logger)
{
    return logger.setResult(pipe.Call());
}

/// A request without a reply.
bool Sent(CGUI_IPC& pipe, CCryptoAutoLogger& logger)
{
    return logger.setResult(pipe.CallWithoutReading() && pipe.status() == CCryptoPipeRequestData::statusGood);
}

/// Ends an operation that has no server to ask. \return true when there is none.
bool WithoutServer(std::uint32_t status, CCryptoAutoLogger& logger)
{
    if (status == CGUIClient::guiPresent)
        return false;
    logger.setResult(false);
    return true;
}

} // namespace

CGUIClient::CGUIClient(bool withoutGui)
{
    CCryptoAutoLogger logger("CGUIClient::CGUIClient");
    if (withoutGui) {
        logger.setResult(true);
        return;
    }
    if (!CurrentSession().hasInputDesktop()) {
        logger.warn(false, "No desktop => no GUI");
        return;
    }
    logger.WriteLog("Desktop ok");

    CGUI_IPC pipe(GuiRequestType::greeting);
    if (Acknowledged(pipe, logger))
        status_ = guiPresent;
    else
        status_ = pipe.status() == CCryptoPipeRequestData::statusBusy ? guiBusy : noGui;
}

CGUIClient::~CGUIClient()
{
    CCryptoAutoLogger logger("CGUIClient::~CGUIClient");
    SayFarewell();
    logger.setResult(true);
}

void CGUIClient::SayFarewell()
{
    if (status_ == guiPresent)
        static_cast<void>(CGUI_IPC(GuiRequestType::farewell).Call());
}

// The names are the operation's own, and wiped at its end.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
bool CGUIClient::SetPdfDocumentToSign(CCryptoString files)
{
    CCryptoAutoLogger logger("CGUIClient::SetPdfDocumentToSign");
    if (WithoutServer(status_, logger))
        return false;
    CGUI_IPC pipe(GuiRequestType::setPdfDocumentToSign, files);
    return Sent(pipe, logger);
}

bool CGUIClient::SetDataToSign(const CCryptoString& text)
{
    CCryptoAutoLogger logger("CGUIClient::SetDataToSign");
    if (WithoutServer(status_, logger))
        return false;
    CGUI_IPC pipe(GuiRequestType::setDataToSign, text);
    return Sent(pipe, logger);
}

std::optional<std::uint32_t> CGUIClient::Manager(std::uint32_t command, std::uint32_t argument)
{
    CCryptoAutoLogger logger("CGUIClient::Manager");
    if (WithoutServer(status_, logger))
        return std::nullopt;
    CGUI_IPC pipe(GuiRequestType::manager, command, argument);
    return Answer(pipe, logger);
}

std::optional<std::uint32_t> CGUIClient::Confirm(std::uint32_t kind, std::uint32_t buttons, const CCryptoString& text)
{
    CCryptoAutoLogger logger("CGUIClient::Confirm");
    if (WithoutServer(status_, logger))
        return std::nullopt;
    CGUI_IPC pipe(GuiRequestType::confirm, kind, buttons, text);
    return Answer(pipe, logger);
}

std::optional<std::uint32_t> CGUIClient::RunScript(const CCryptoString& name, const CCryptoString& function,
                                                   const CCryptoString& arguments)
{
    CCryptoAutoLogger logger("CGUIClient::RunScript");
    if (WithoutServer(status_, logger))
        return std::nullopt;
    CGUI_IPC pipe(GuiRequestType::runScript, name, function, arguments);
    return Answer(pipe, logger);
}

std::optional<std::uint32_t> CGUIClient::UpdateKVApp()
{
    CCryptoAutoLogger logger("CGUIClient::UpdateKVApp");
    if (WithoutServer(status_, logger))
        return std::nullopt;
    CGUI_IPC pipe(GuiRequestType::updateKvApp);
    return Answer(pipe, logger);
}

bool CGUIClient::SelectionDialog(std::uint32_t kind, std::span<const CCryptoString> items, const CCryptoString& text,
                                 std::uint32_t& selection)
{
    CCryptoAutoLogger logger("CGUIClient::SelectionDialog");
    if (WithoutServer(status_, logger))
        return false;

    CGUI_IPC pipe(GuiRequestType::selectionDialog, kind, static_cast<std::uint32_t>(items.size()));
    for (const CCryptoString& item : items)
        pipe.Add(item);
    pipe.Add(text);

    std::uint32_t result = 0;
    std::uint32_t chosen = 0;
    const bool answered = pipe.Call() && pipe.GetInt(result, false) && pipe.GetInt(chosen, true);
    if (!logger.setResult(answered && result != 0))
        return false;
    selection = chosen;
    return true;
}

bool CGUIClient::PopUp(GuiRequestType type, std::uint32_t value, const CCryptoString& text)
{
    CCryptoAutoLogger logger("CGUIClient::PopUp");
    if (WithoutServer(status_, logger))
        return false;
    CGUI_IPC pipe(type, value, text);
    return Acknowledged(pipe, logger);
}

bool CGUIClient::PopUpInfo(std::uint32_t value, const CCryptoString& text)
{
    return PopUp(GuiRequestType::popUpInfo, value, text);
}

bool CGUIClient::PopUpWarning(std::uint32_t value, const CCryptoString& text)
{
    return PopUp(GuiRequestType::popUpWarning, value, text);
}

bool CGUIClient::PopUpError(std::uint32_t value, const CCryptoString& text)
{
    return PopUp(GuiRequestType::popUpError, value, text);
}

bool CGUIClient::Cancel()
{
    CCryptoAutoLogger logger("CGUIClient::Cancel");
    if (WithoutServer(status_, logger))
        return false;
    CGUI_IPC pipe(GuiRequestType::cancel);
    return Acknowledged(pipe, logger);
}

bool CGUIClient::BeginGuiTransaction(const CCryptoString& name)
{
    CCryptoAutoLogger logger("CGUIClient::BeginGuiTransaction");
    for (std::uint32_t attempt = 0; attempt < transactionAttempts && status_ == guiPresent; ++attempt) {
        CGUI_IPC pipe(GuiRequestType::beginGuiTransaction, name);
        std::uint32_t granted = 0;
        // Asking again would not undo a grant, whatever else its reply holds.
        if (pipe.Call() && pipe.GetInt(granted, false) && granted != 0)
            return logger.setResult(pipe.IsReadToItsEnd());
        CurrentSession().pause(transactionPause);
    }
    return logger.setResult(false);
}

bool CGUIClient::EndGuiTransaction(const CCryptoString& name)
{
    CCryptoAutoLogger logger("CGUIClient::EndGuiTransaction");
    if (WithoutServer(status_, logger))
        return false;
    CGUI_IPC pipe(GuiRequestType::endGuiTransaction, name);
    return Acknowledged(pipe, logger);
}
