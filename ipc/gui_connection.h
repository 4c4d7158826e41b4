#pragma once

#include "core/text/string.h"
#include "ipc/gui_request.h"
#include "ipc/pipe_client.h"

#include <cstdint>

/// The GUI server.
class CGUI {
public:
    /// The pipe it listens on, without the suffix of the logon session.
    static constexpr const char* pipeName = "\\\\.\\pipe\\PennwickGUIServer";
    virtual ~CGUI() = default;
};

/// One request to the GUI server, on a connection of its own.
class CGUI_IPC : public CGUI, public CCryptoPipeClient {
public:
    /// The items follow in order: integers, and texts that are sent with their terminator.
    template <typename... Items>
    explicit CGUI_IPC(ccrypto::GuiRequestType type, const Items&... items)
        : CCryptoPipeClient(pipeName, static_cast<std::int32_t>(type), true)
    {
        (Add(items), ...);
    }

    /// Whether the reply holds no item after those read; the status is otherwise -1.
    [[nodiscard]] bool IsReadToItsEnd() { return CheckStatus(true); }

    void Add(std::uint32_t value) { AddInt(value); }
    void Add(const CCryptoString& text) { AddData(text.c_str()); }
};
