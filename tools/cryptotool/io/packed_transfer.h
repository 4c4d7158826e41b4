#pragma once

#include "deflate/deflate_stream.h"
#include "tools/cryptotool/cli/command.h"
#include "tools/cryptotool/cli/invocation.h"
#include "tools/cryptotool/io/output.h"

#include <functional>

namespace ccrypto {

constexpr Option stdoutOption = {OptionKind::flag, 'c', "stdout", "", "write to standard output, which is the default"};

/// Takes the file of the first operand through a stream that packs or unpacks, piece by piece, to the place the options name.
/// \param start starts the stream with the sink it is given. \return the exit code.
int TransferPacked(Invocation& invocation, Output::Content content,
                   const std::function<bool(CDeflateStream& stream, const DeflateSink& sink)>& start);

} // namespace ccrypto
