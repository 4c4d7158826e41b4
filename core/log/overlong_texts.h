#pragma once

#include <string_view>

/// What is written in place of a text beyond logTextLimit, by the writer that was asked for it.
namespace ccrypto::overlong {

constexpr std::string_view writeLog = "CCryptoAutoLogger::WriteLog: Very log message that is not displayed.";
constexpr std::string_view writeLogG = "CCryptoAutoLogger::WriteLog_G: Very log message that is not displayed.";
constexpr std::string_view writeError = "CCryptoAutoLogger::WriteError: Very log message that is not displayed.";
constexpr std::string_view writeErrorEx = "CCryptoAutoLogger::WriteErrorEx: Very log message that is not displayed.,";
constexpr std::string_view writeErrorExG = "CCryptoAutoLogger::WriteErrorEx_G: Very log message that is not displayed.";
constexpr std::string_view arguments =
    "00:00:00 CCryptoAutoLogger::CCryptoAutoLogger big log message. It will not be displayed. Please check your code.";
constexpr std::string_view result =
    "00:00:00 CCryptoAutoLogger::setRetValue Very big log message. It will not be displayed. Please check your code.";

} // namespace ccrypto::overlong
