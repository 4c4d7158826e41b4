#pragma once

/// Front header of ipc: everything of the module that clients use.

#include "ipc/gui_client.h"
#include "ipc/gui_request.h"
#include "ipc/pipe_client.h"
#include "ipc/pipe_request_data.h"
#include "ipc/pipe_server.h"
