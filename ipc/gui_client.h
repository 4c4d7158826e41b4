#pragma once

#include "core/text/element.h"
#include "core/text/string.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>

namespace ccrypto {

enum class GuiRequestType : std::uint32_t;

/// What a PIN dialog shows and accepts.
struct SGUIPinRequest {
    CCryptoString title;
    std::uint32_t minimumLength = 0;
    std::uint32_t maximumLength = 0;
    CCryptoString text;
    std::uint32_t triesLeft = 0; ///< sent by PinDialogEx alone
    CCryptoString details;       ///< sent by PinDialogEx alone
};

/// What the combined PIN and PUK dialog shows and accepts.
struct SGUIPukRequest {
    std::uint32_t kind = 0;
    CCryptoString title;
    std::uint32_t minimumLength = 0;
    std::uint32_t maximumLength = 0;
    std::uint32_t triesLeft = 0;
};

} // namespace ccrypto

/// The library's handle on the GUI server of the signing client, the process of the logged-on user that owns every dialog.
///
/// Made where the user is needed, used for a few operations and destroyed: the constructor greets the server, the destructor says
/// farewell. Each operation opens a connection of its own, sends one request (`ipc/gui_request.h` lists them) and reads the reply
/// where one is given, so an operation may wait 15 seconds for the server to become free and 4 minutes for the user to answer.
/// One thread at a time.
///
/// Operations fail at once, without touching the pipe, unless the status is 0; every failure is logged under the operation's name.
/// PINs are handed out in an `element`, which wipes its bytes when it releases them, and never reach the log.
class CGUIClient {
public:
    static constexpr std::uint32_t guiPresent = 0;
    static constexpr std::uint32_t guiBusy = 1; ///< the server exists, but did not become free while the client waited
    static constexpr std::uint32_t noGui = 2;   ///< not wanted, no interactive desktop, or no server

    /// \param withoutGui true to stay at status 2 without looking for a server.
    explicit CGUIClient(bool withoutGui);
    ~CGUIClient();
    CGUIClient(const CGUIClient&) = delete;
    CGUIClient& operator=(const CGUIClient&) = delete;

    /// 0 when the server answers, otherwise why not (the constants above). Never changes after construction.
    std::uint32_t status() const { return status_; }

    /// Hands the server the PDF files to sign: full paths joined by "*". No reply is read; the server shows its own windows.
    /// \return true when the request was written. The signing itself may still fail.
    [[nodiscard]] bool SetPdfDocumentToSign(CCryptoString files);
    /// Hands the server a text to sign, without reading a reply.
    [[nodiscard]] bool SetDataToSign(const CCryptoString& text);

    /// \return the server's answer; nothing when the call failed.
    [[nodiscard]] std::optional<std::uint32_t> Manager(std::uint32_t command, std::uint32_t argument);
    [[nodiscard]] std::optional<std::uint32_t> Confirm(std::uint32_t kind, std::uint32_t buttons, const CCryptoString& text);
    [[nodiscard]] std::optional<std::uint32_t> RunScript(const CCryptoString& name, const CCryptoString& function,
                                                         const CCryptoString& arguments);
    [[nodiscard]] std::optional<std::uint32_t> UpdateKVApp();

    /// Lets the user choose one of `items`. \return true with the index in `selection`; false, `selection` untouched, when the
    /// user chose none or the call failed.
    [[nodiscard]] bool SelectionDialog(std::uint32_t kind, std::span<const CCryptoString> items, const CCryptoString& text,
                                       std::uint32_t& selection);

    /// Ask the user for a PIN. \return true with the bytes in `pin`; false, `pin` empty, when the user gave none or the call
    /// failed.
    [[nodiscard]] bool PinDialog(const ccrypto::SGUIPinRequest& request, element& pin);
    [[nodiscard]] bool PinDialogEx(const ccrypto::SGUIPinRequest& request, element& pin);
    [[nodiscard]] bool PINAndPUKDialog(const ccrypto::SGUIPukRequest& request, element& pin, element& puk);

    /// Keeps a PIN at the server. \param number which PIN of the card. \param card names the card.
    [[nodiscard]] bool SetPinCache(std::uint32_t number, const CCryptoString& card, const CCryptoString& pin);
    /// \return false, `pin` empty, when the server holds none.
    [[nodiscard]] bool GetPinCache(std::uint32_t number, const CCryptoString& card, element& pin);

    /// Tries a PIN. \return true when it was right; otherwise `reason` is set to the text that is logged.
    using PinCheck = std::function<bool(const element& pin, CCryptoString& reason)>;
    /// Asks for a PIN with PinDialogEx, once, and has it tried. \return true when the user gave one and `check` found it right.
    [[nodiscard]] bool Authenticate(const ccrypto::SGUIPinRequest& request, const PinCheck& check);

    /// Show a text without waiting for more than the server's acknowledgement.
    bool PopUpInfo(std::uint32_t value, const CCryptoString& text);
    bool PopUpWarning(std::uint32_t value, const CCryptoString& text);
    bool PopUpError(std::uint32_t value, const CCryptoString& text);

    /// Closes whatever dialog the server shows.
    bool Cancel();

    /// Asks for the user's undivided attention under `name`, up to 60 times, 500 milliseconds apart, while another client has it.
    /// \return true when it was granted; EndGuiTransaction gives it back. A grant whose reply holds further items is malformed:
    /// false.
    [[nodiscard]] bool BeginGuiTransaction(const CCryptoString& name);
    bool EndGuiTransaction(const CCryptoString& name);

    /// The destructor's farewell on its own, for a host that knows it will not ask again soon. Not logged; the result is ignored.
    void SayFarewell();

private:
    bool PopUp(ccrypto::GuiRequestType type, std::uint32_t value, const CCryptoString& text);

    std::uint32_t status_ = noGui;
};
