// The operations of the GUI client that carry PINs. Nothing that the user typed is handed to a logger.

#include "core/diagnostics/auto_logger.h"
#include "ipc/gui_client.h"
#include "ipc/gui_connection.h"

using namespace ccrypto;

namespace {

enum class Reply { pin, pinThenMore, pinAndPuk };

/// Calls the server and takes the result and the secrets from its reply. All or nothing: on failure both are empty.
bool AskSecret(CGUI_IPC& pipe, Reply reply, element& pin, element* puk, CCryptoAutoLogger& logger)
{
    std::uint32_t result = 0;
    const std::uint8_t* pinBytes = nullptr;
    const std::uint8_t* pukBytes = nullptr;
    std::uint32_t pinLength = 0;
    std::uint32_t pukLength = 0;
    const bool answered = pipe.Call() && pipe.GetInt(result, false) && pipe.GetData(pinBytes, pinLength, reply == Reply::pin) &&
                          (reply != Reply::pinAndPuk || pipe.GetData(pukBytes, pukLength, true));
    if (!logger.setResult(answered && result != 0))
        return false;

    pin = element(pinBytes, pinLength);
    if (puk != nullptr)
        *puk = element(pukBytes, pukLength);
    return true;
}

} // namespace

bool CGUIClient::PinDialog(const SGUIPinRequest& request, element& pin)
{
    CCryptoAutoLogger logger("CGUIClient::PinDialog");
    pin = element();
    if (status_ != guiPresent)
        return logger.setResult(false);
    CGUI_IPC pipe(GuiRequestType::pinDialog, request.title, request.minimumLength, request.maximumLength, request.text);
    return AskSecret(pipe, Reply::pin, pin, nullptr, logger);
}

bool CGUIClient::PinDialogEx(const SGUIPinRequest& request, element& pin)
{
    CCryptoAutoLogger logger("CGUIClient::PinDialogEx");
    pin = element();
    if (status_ != guiPresent)
        return logger.setResult(false);
    CGUI_IPC pipe(GuiRequestType::pinDialogEx, request.title, request.minimumLength, request.maximumLength, request.text,
                  request.triesLeft, request.details);
    return AskSecret(pipe, Reply::pinThenMore, pin, nullptr, logger);
}

bool CGUIClient::PINAndPUKDialog(const SGUIPukRequest& request, element& pin, element& puk)
{
    CCryptoAutoLogger logger("CGUIClient::PINAndPUKDialog");
    pin = element();
    puk = element();
    if (status_ != guiPresent)
        return logger.setResult(false);
    CGUI_IPC pipe(GuiRequestType::pinAndPukDialog, request.kind, request.title, request.minimumLength, request.maximumLength,
                  request.triesLeft);
    return AskSecret(pipe, Reply::pinAndPuk, pin, &puk, logger);
}

bool CGUIClient::SetPinCache(std::uint32_t number, const CCryptoString& card, const CCryptoString& pin)
{
    CCryptoAutoLogger logger("CGUIClient::SetPinCache");
    if (status_ != guiPresent)
        return logger.setResult(false);
    CGUI_IPC pipe(GuiRequestType::setPinCache, number, card, pin);
    return logger.setResult(pipe.Call());
}

bool CGUIClient::GetPinCache(std::uint32_t number, const CCryptoString& card, element& pin)
{
    CCryptoAutoLogger logger("CGUIClient::GetPinCache");
    pin = element();
    if (status_ != guiPresent)
        return logger.setResult(false);
    CGUI_IPC pipe(GuiRequestType::getPinCache, number, card);
    return AskSecret(pipe, Reply::pinThenMore, pin, nullptr, logger);
}

bool CGUIClient::Authenticate(const SGUIPinRequest& request, const PinCheck& check)
{
    CCryptoAutoLogger logger("CGUIClient::Authenticate");
    if (!check)
        return logger.fail(false, "Nothing is there to check a PIN with");

    element pin;
    if (!PinDialogEx(request, pin)) {
        logger.WriteLog("Authenticate.res = %s", "false");
        return logger.fail(false, "PinDialog() failed");
    }

    CCryptoString reason;
    const bool right = check(pin, reason);
    logger.WriteLog("Authenticate.res = %s", right ? "true" : "false");
    if (!right)
        return logger.fail(false, "Authentication failed: %s", reason.c_str());
    return logger.setResult(true);
}
