#include "core/diagnostics/error_handler.h"

#include "core/base/never_destroyed.h"
#include "core/diagnostics/error_descriptions.h"
#include "core/platform/process.h"
#include "core/text/utf8.h"

#include <atomic>
#include <cstdio>
#include <memory>
#include <string>

namespace {

constexpr std::size_t longestSystemText = 255;

using SharedText = std::shared_ptr<const CCryptoString>;

/// Null when the text is empty.
constinit NeverDestroyed<std::atomic<SharedText>> lastErrorText;

SharedText Share(const CCryptoString& text)
{
    return text.isEmpty() ? nullptr : std::make_shared<const CCryptoString>(text);
}

std::string ErrorText(std::uint32_t code)
{
    std::string text = ErrorDescription(code);
    if (text.empty())
        text = platform::SystemErrorText(code);
    if (text.empty()) {
        char unknown[32];
        std::snprintf(unknown, sizeof unknown, " Last error (%08X)", static_cast<unsigned>(code));
        return unknown;
    }
    if (text.size() > 2 && text.ends_with("\r\n"))
        text.resize(text.size() - 2);
    text.resize(Utf8Prefix(text, longestSystemText).size());
    return text;
}

} // namespace

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
    if (message_ == nullptr)
        message_.reset(new CCryptoString);
    if (!message_->isEmpty())
        message_->append(" ");
    message_->append(text);
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
    lastErrorText->store(Share(text));
}

void CCryptoErrorHandler::setWindowsError(std::uint32_t code)
{
    status_ = ResultStatus::error;
    errorCode_ = code;
    const std::string text = ErrorText(code);
    if (message().isEmpty())
        lastErrorText->store(Share(CCryptoString(std::string_view(text))));
    addText(text);
}

void CCryptoErrorHandler::setLastWindowsError()
{
    setWindowsError(platform::LastError());
}

CCryptoString CCryptoErrorHandler::LastErrorText()
{
    const SharedText text = lastErrorText->load();
    return text != nullptr ? *text : CCryptoString();
}

void CCryptoErrorHandler::ClearLastErrorText()
{
    lastErrorText->store(nullptr);
}

void CCryptoErrorHandler::StartLastErrorText(const CCryptoString& text)
{
    SharedText none;
    lastErrorText->compare_exchange_strong(none, Share(text));
}
