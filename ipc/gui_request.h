#pragma once

#include <array>
#include <cstdint>

namespace ccrypto {

/// The operations of the GUI server, by the request type of a message.
enum class GuiRequestType : std::uint32_t {
    greeting = 1,
    manager = 2,
    selectionDialog = 4,
    pinDialog = 5,
    setDataToSign = 6,
    popUpInfo = 7,
    popUpWarning = 8,
    popUpError = 9,
    confirm = 10,
    cancel = 11,
    farewell = 12,
    pinDialogEx = 13,
    pinAndPukDialog = 14,
    setPinCache = 15,
    getPinCache = 16,
    runScript = 17,
    updateKvApp = 18,
    beginGuiTransaction = 20,
    endGuiTransaction = 21,
    setPdfDocumentToSign = 22,
};

/// One item of a request or a reply. A result is an integer of a reply, 0 for "no". A list is as many texts as the `count` before
/// it says. A secret is a PIN or PUK: text in a request, bytes in a reply; it is never printed.
enum class GuiItemKind : std::uint8_t { none, integer, result, text, list, fileNames, secret };

struct GuiItem {
    GuiItemKind kind = GuiItemKind::none;
    const char* name = "";
};

/// One operation: whether a reply is read, what the request carries, and what the reply does.
struct GuiRequest {
    GuiRequestType type;
    bool replies;
    const char* name;
    std::array<GuiItem, 6> items;
    std::array<GuiItem, 3> reply;
};

inline constexpr GuiRequest guiRequests[] = {
    {GuiRequestType::greeting, true, "Greeting", {}, {}},
    {GuiRequestType::manager,
     true,
     "Manager",
     {{{GuiItemKind::integer, "command"}, {GuiItemKind::integer, "argument"}}},
     {{{GuiItemKind::integer, "answer"}}}},
    {GuiRequestType::selectionDialog,
     true,
     "SelectionDialog",
     {{{GuiItemKind::integer, "kind"}, {GuiItemKind::integer, "count"}, {GuiItemKind::list, "items"}, {GuiItemKind::text, "text"}}},
     {{{GuiItemKind::result, "result"}, {GuiItemKind::integer, "selection"}}}},
    {GuiRequestType::pinDialog,
     true,
     "PinDialog",
     {{{GuiItemKind::text, "title"},
       {GuiItemKind::integer, "minimumLength"},
       {GuiItemKind::integer, "maximumLength"},
       {GuiItemKind::text, "text"}}},
     {{{GuiItemKind::result, "result"}, {GuiItemKind::secret, "pin"}}}},
    {GuiRequestType::setDataToSign, false, "SetDataToSign", {{{GuiItemKind::text, "text"}}}, {}},
    {GuiRequestType::popUpInfo, true, "PopUpInfo", {{{GuiItemKind::integer, "value"}, {GuiItemKind::text, "text"}}}, {}},
    {GuiRequestType::popUpWarning, true, "PopUpWarning", {{{GuiItemKind::integer, "value"}, {GuiItemKind::text, "text"}}}, {}},
    {GuiRequestType::popUpError, true, "PopUpError", {{{GuiItemKind::integer, "value"}, {GuiItemKind::text, "text"}}}, {}},
    {GuiRequestType::confirm,
     true,
     "Confirm",
     {{{GuiItemKind::integer, "kind"}, {GuiItemKind::integer, "buttons"}, {GuiItemKind::text, "text"}}},
     {{{GuiItemKind::integer, "answer"}}}},
    {GuiRequestType::cancel, true, "Cancel", {}, {}},
    {GuiRequestType::farewell, true, "Farewell", {}, {}},
    {GuiRequestType::pinDialogEx,
     true,
     "PinDialogEx",
     {{{GuiItemKind::text, "title"},
       {GuiItemKind::integer, "minimumLength"},
       {GuiItemKind::integer, "maximumLength"},
       {GuiItemKind::text, "text"},
       {GuiItemKind::integer, "triesLeft"},
       {GuiItemKind::text, "details"}}},
     {{{GuiItemKind::result, "result"}, {GuiItemKind::secret, "pin"}}}},
    {GuiRequestType::pinAndPukDialog,
     true,
     "PINAndPUKDialog",
     {{{GuiItemKind::integer, "kind"},
       {GuiItemKind::text, "title"},
       {GuiItemKind::integer, "minimumLength"},
       {GuiItemKind::integer, "maximumLength"},
       {GuiItemKind::integer, "triesLeft"}}},
     {{{GuiItemKind::result, "result"}, {GuiItemKind::secret, "pin"}, {GuiItemKind::secret, "puk"}}}},
    {GuiRequestType::setPinCache,
     true,
     "SetPinCache",
     {{{GuiItemKind::integer, "number"}, {GuiItemKind::text, "card"}, {GuiItemKind::secret, "pin"}}},
     {}},
    {GuiRequestType::getPinCache,
     true,
     "GetPinCache",
     {{{GuiItemKind::integer, "number"}, {GuiItemKind::text, "card"}}},
     {{{GuiItemKind::result, "result"}, {GuiItemKind::secret, "pin"}}}},
    {GuiRequestType::runScript,
     true,
     "RunScript",
     {{{GuiItemKind::text, "name"}, {GuiItemKind::text, "function"}, {GuiItemKind::text, "arguments"}}},
     {{{GuiItemKind::integer, "answer"}}}},
    {GuiRequestType::updateKvApp, true, "UpdateKVApp", {}, {{{GuiItemKind::integer, "answer"}}}},
    {GuiRequestType::beginGuiTransaction,
     true,
     "BeginGuiTransaction",
     {{{GuiItemKind::text, "name"}}},
     {{{GuiItemKind::result, "granted"}}}},
    {GuiRequestType::endGuiTransaction, true, "EndGuiTransaction", {{{GuiItemKind::text, "name"}}}, {}},
    {GuiRequestType::setPdfDocumentToSign, false, "SetPdfDocumentToSign", {{{GuiItemKind::fileNames, "files"}}}, {}},
};

/// Null for a number that is not an operation.
constexpr const GuiRequest* FindGuiRequest(std::uint32_t type)
{
    for (const GuiRequest& request : guiRequests) {
        if (static_cast<std::uint32_t>(request.type) == type)
            return &request;
    }
    return nullptr;
}

} // namespace ccrypto
