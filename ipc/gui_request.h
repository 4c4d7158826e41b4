#pragma once

#include <array>
#include <cstdint>

/// The operations of the GUI server, as they stand in the request type of a message.
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
/// it says. A secret is a PIN or PUK: text in a request, bytes in a reply; nobody prints it.
enum class GuiItemKind : std::uint8_t { none, integer, result, text, list, fileNames, secret };

struct GuiItem {
    GuiItemKind kind = GuiItemKind::none;
    const char* name = "";
};

/// One operation: what the request carries, whether a reply is read, and what it carries.
struct GuiRequest {
    GuiRequestType type;
    const char* name;
    std::array<GuiItem, 6> items;
    bool replies;
    std::array<GuiItem, 3> reply;
};

inline constexpr GuiRequest guiRequests[] = {
    {GuiRequestType::greeting, "Greeting", {}, true, {}},
    {GuiRequestType::manager,
     "Manager",
     {{{GuiItemKind::integer, "command"}, {GuiItemKind::integer, "argument"}}},
     true,
     {{{GuiItemKind::integer, "answer"}}}},
    {GuiRequestType::selectionDialog,
     "SelectionDialog",
     {{{GuiItemKind::integer, "kind"}, {GuiItemKind::integer, "count"}, {GuiItemKind::list, "items"}, {GuiItemKind::text, "text"}}},
     true,
     {{{GuiItemKind::result, "result"}, {GuiItemKind::integer, "selection"}}}},
    {GuiRequestType::pinDialog,
     "PinDialog",
     {{{GuiItemKind::text, "title"},
       {GuiItemKind::integer, "minimumLength"},
       {GuiItemKind::integer, "maximumLength"},
       {GuiItemKind::text, "text"}}},
     true,
     {{{GuiItemKind::result, "result"}, {GuiItemKind::secret, "pin"}}}},
    {GuiRequestType::setDataToSign, "SetDataToSign", {{{GuiItemKind::text, "text"}}}, false, {}},
    {GuiRequestType::popUpInfo, "PopUpInfo", {{{GuiItemKind::integer, "value"}, {GuiItemKind::text, "text"}}}, true, {}},
    {GuiRequestType::popUpWarning, "PopUpWarning", {{{GuiItemKind::integer, "value"}, {GuiItemKind::text, "text"}}}, true, {}},
    {GuiRequestType::popUpError, "PopUpError", {{{GuiItemKind::integer, "value"}, {GuiItemKind::text, "text"}}}, true, {}},
    {GuiRequestType::confirm,
     "Confirm",
     {{{GuiItemKind::integer, "kind"}, {GuiItemKind::integer, "buttons"}, {GuiItemKind::text, "text"}}},
     true,
     {{{GuiItemKind::integer, "answer"}}}},
    {GuiRequestType::cancel, "Cancel", {}, true, {}},
    {GuiRequestType::farewell, "Farewell", {}, true, {}},
    {GuiRequestType::pinDialogEx,
     "PinDialogEx",
     {{{GuiItemKind::text, "title"},
       {GuiItemKind::integer, "minimumLength"},
       {GuiItemKind::integer, "maximumLength"},
       {GuiItemKind::text, "text"},
       {GuiItemKind::integer, "triesLeft"},
       {GuiItemKind::text, "details"}}},
     true,
     {{{GuiItemKind::result, "result"}, {GuiItemKind::secret, "pin"}}}},
    {GuiRequestType::pinAndPukDialog,
     "PINAndPUKDialog",
     {{{GuiItemKind::integer, "kind"},
       {GuiItemKind::text, "title"},
       {GuiItemKind::integer, "minimumLength"},
       {GuiItemKind::integer, "maximumLength"},
       {GuiItemKind::integer, "triesLeft"}}},
     true,
     {{{GuiItemKind::result, "result"}, {GuiItemKind::secret, "pin"}, {GuiItemKind::secret, "puk"}}}},
    {GuiRequestType::setPinCache,
     "SetPinCache",
     {{{GuiItemKind::integer, "number"}, {GuiItemKind::text, "card"}, {GuiItemKind::secret, "pin"}}},
     true,
     {}},
    {GuiRequestType::getPinCache,
     "GetPinCache",
     {{{GuiItemKind::integer, "number"}, {GuiItemKind::text, "card"}}},
     true,
     {{{GuiItemKind::result, "result"}, {GuiItemKind::secret, "pin"}}}},
    {GuiRequestType::runScript,
     "RunScript",
     {{{GuiItemKind::text, "name"}, {GuiItemKind::text, "function"}, {GuiItemKind::text, "arguments"}}},
     true,
     {{{GuiItemKind::integer, "answer"}}}},
    {GuiRequestType::updateKvApp, "UpdateKVApp", {}, true, {{{GuiItemKind::integer, "answer"}}}},
    {GuiRequestType::beginGuiTransaction,
     "BeginGuiTransaction",
     {{{GuiItemKind::text, "name"}}},
     true,
     {{{GuiItemKind::result, "granted"}}}},
    {GuiRequestType::endGuiTransaction, "EndGuiTransaction", {{{GuiItemKind::text, "name"}}}, true, {}},
    {GuiRequestType::setPdfDocumentToSign, "SetPdfDocumentToSign", {{{GuiItemKind::fileNames, "files"}}}, false, {}},
};

/// Null for a number that stands for no operation.
constexpr const GuiRequest* FindGuiRequest(std::uint32_t type)
{
    for (const GuiRequest& request : guiRequests) {
        if (static_cast<std::uint32_t>(request.type) == type)
            return &request;
    }
    return nullptr;
}
