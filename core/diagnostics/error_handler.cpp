#include "core/diagnostics/error_handler.h"

#include "core/base/never_destroyed.h"
#include "core/diagnostics/error_descriptions.h"
#include "core/diagnostics/failure.h"
#include "core/memory/out_of_memory.h"
#include "core/platform/process.h"
#include "core/text/utf8.h"

#include <cstdio>
#include <string>

using namespace ccrypto;

namespace {

constexpr std::size_t maxSystemText = 255;

std::string ErrorText(std::uint32_t code)
{
    const std::string described = ErrorDescription(code);
    return ccrypto::internal::TextOfWindowsError(code, described.empty() ? platform::SystemErrorText(code) : described);
}

} // namespace

namespace ccrypto {

std::string ccrypto::internal::TextOfWindowsError(std::uint32_t code, std::string_view known)
{
    if (known.empty()) {
        char unknown[32];
        std::snprintf(unknown, sizeof unknown, " Last error (%08X)", static_cast<unsigned>(code));
        return unknown;
    }
    if (known.size() > 2 && known.ends_with("\r\n"))
        known.remove_suffix(2);
    return std::string(Utf8Prefix(known, maxSystemText));
}

} // namespace ccrypto

const CCryptoString& CCryptoErrorHandler::message() const
{
    static const NeverDestroyed<CCryptoString> none;
    return message_ != nullptr ? *message_ : *none;
}

void CCryptoErrorHandler::DeleteText::operator()(CCryptoString* text) const
{
    delete text;
}

void CCryptoErrorHandler::addText(std::string_view text)
{
    ccrypto::internal::OrEndOutOfMemory([&] {
        if (message_ == nullptr)
            message_.reset(new CCryptoString);
        if (!message_->isEmpty())
            message_->append(" ");
        message_->append(text);
    });
}

void CCryptoErrorHandler::setInfo(const CCryptoString& text)
{
    status_ = ResultStatus::info;
    addText(text.view());
}

void CCryptoErrorHandler::setWarning(const CCryptoString& text)
{
    status_ = ResultStatus::warning;
    addText(text.view());
}

void CCryptoErrorHandler::setError(const CCryptoString& text)
{
    status_ = ResultStatus::error;
    addText(text.view());
    if (text.isEmpty())
        ccrypto::internal::RecordFailureWithoutReason(operation());
    else
        ccrypto::internal::RecordFailure(operation(), text.view(), errorCode_);
    ccrypto::internal::SetLastErrorText(text.view());
}

void CCryptoErrorHandler::setErrorWithoutText() noexcept
{
    status_ = ResultStatus::error;
    ccrypto::internal::RecordFailureWithoutReason(operation());
}

void CCryptoErrorHandler::setWindowsError(std::uint32_t code)
{
    const std::string text = ErrorText(code);
    const bool gaveReason = status_ == ResultStatus::error && !message().isEmpty();
    if (gaveReason)
        ccrypto::internal::AddWindowsError(code);
    else
        ccrypto::internal::RecordFailure(operation(), text, code);
    if (message().isEmpty())
        ccrypto::internal::SetLastErrorText(text);

    status_ = ResultStatus::error;
    errorCode_ = code;
    addText(text);
}

void CCryptoErrorHandler::setLastWindowsError()
{
    setWindowsError(platform::LastError());
}

CCryptoString CCryptoErrorHandler::LastErrorText()
{
    return CCryptoString(std::string_view(ccrypto::internal::LastErrorText()));
}

void CCryptoErrorHandler::ClearLastErrorText()
{
    ccrypto::internal::SetLastErrorText({});
}
