#include "tools/guiserver/request_reader.h"

#include <algorithm>

namespace ccrypto {

namespace {

constexpr std::uint32_t maxListItems = 100000;
/// A list and whatever else a request may hold. An empty item takes 5 bytes of a body and a multiple of that here.
constexpr std::size_t maxItems = maxListItems + 16;

/// Walks the items a request should have: those of its table row, a list unfolded into as many texts as its count says.
class ExpectedItems {
public:
    explicit ExpectedItems(const GuiRequest* request) : request_(request) {}

    GuiItem Next()
    {
        if (request_ == nullptr)
            return {};
        if (listRemains_ == 0 && Current().kind == GuiItemKind::list)
            ++index_; // an empty list
        if (Current().kind != GuiItemKind::list)
            return index_ < request_->items.size() ? request_->items[index_++] : GuiItem{};
        const GuiItem item = {GuiItemKind::text, Current().name};
        if (--listRemains_ == 0)
            ++index_;
        return item;
    }

    void SetListLength(std::uint32_t length) { listRemains_ = std::min(length, maxListItems); }

    bool AtEnd() const { return request_ == nullptr || Current().kind == GuiItemKind::none; }

private:
    GuiItem Current() const { return index_ < request_->items.size() ? request_->items[index_] : GuiItem{}; }

    const GuiRequest* request_;
    std::size_t index_ = 0;
    std::uint32_t listRemains_ = 0;
};

bool Suits(const ReceivedItem& item, GuiItemKind expected)
{
    switch (expected) {
    case GuiItemKind::integer:
        return item.kind == ReceivedItem::Kind::integer;
    case GuiItemKind::secret:
        return item.kind == ReceivedItem::Kind::secret || item.kind == ReceivedItem::Kind::empty;
    case GuiItemKind::text:
    case GuiItemKind::fileNames:
        return item.kind == ReceivedItem::Kind::text || item.kind == ReceivedItem::Kind::empty;
    default:
        return false;
    }
}

bool ReadData(CCryptoPipeRequestData& message, bool secret, ReceivedItem& item)
{
    const std::uint8_t* data = nullptr;
    if (!message.GetData(data, item.length, false))
        return false;
    if (data == nullptr)
        return true;
    item.kind = ReceivedItem::Kind::secret;
    if (secret)
        return true;
    const std::uint8_t* end = std::find(data, data + item.length, std::uint8_t{0});
    const bool text = end == data + item.length - 1;
    item.kind = text ? ReceivedItem::Kind::text : ReceivedItem::Kind::bytes;
    item.bytes = element(data, text ? item.length - 1 : item.length);
    return true;
}

bool ReadValue(CCryptoPipeRequestData& message, ReceivedItem& item)
{
    std::unique_ptr<PipeValue> value;
    if (!message.GetValue(value, false))
        return false;
    if (value == nullptr)
        return true;
    const bool isText = value->kind == PipeValue::Kind::text;
    item.kind = isText ? ReceivedItem::Kind::text : ReceivedItem::Kind::integer;
    item.integer = value->integer;
    if (isText)
        item.bytes = element(value->text);
    return true;
}

bool ReadItem(CCryptoPipeRequestData& message, bool secret, ReceivedItem& item)
{
    switch (message.NextTag()) {
    case CCryptoPipeRequestData::tagInteger:
        item.kind = ReceivedItem::Kind::integer;
        return message.GetInt(item.integer, false);
    case CCryptoPipeRequestData::tagValue:
        return ReadValue(message, item);
    default:
        return ReadData(message, secret, item);
    }
}

bool HasSecret(const GuiRequest* request)
{
    return request != nullptr && std::any_of(request->items.begin(), request->items.end(),
                                             [](const GuiItem& item) { return item.kind == GuiItemKind::secret; });
}

/// Hides the payload that ends at the cursor.
void Hide(std::string& body, std::uint32_t cursor, std::uint32_t length)
{
    std::fill_n(body.begin() + (cursor - length), length, 'x');
}

} // namespace

ReceivedRequest ReadGuiRequest(CCryptoPipeRequestData& message)
{
    ReceivedRequest request;
    request.type = message.requestType();
    request.status = message.status();
    request.known = FindGuiRequest(request.type);
    request.body.assign(message.body().begin(), message.body().end());
    message.StartMessage();

    ExpectedItems expected(request.known);
    request.wellFormed = request.known != nullptr;
    while (message.position() < message.body().size()) {
        if (request.items.size() == maxItems) {
            request.wellFormed = false;
            break;
        }
        const GuiItem next = expected.Next();
        ReceivedItem item;
        item.name = next.kind != GuiItemKind::none ? next.name : "item " + std::to_string(request.items.size() + 1);
        const bool secret = next.kind == GuiItemKind::secret;
        if (!ReadItem(message, secret, item)) {
            request.wellFormed = false;
            break;
        }
        if (secret && item.kind == ReceivedItem::Kind::secret)
            Hide(request.body, message.position(), item.length);
        if (std::string_view(next.name) == "count")
            expected.SetListLength(item.integer);
        if (next.kind == GuiItemKind::fileNames)
            request.files = item.bytes.view();
        request.wellFormed &= Suits(item, next.kind);
        request.items.push_back(std::move(item));
    }

    request.wellFormed &= expected.AtEnd();
    // Where items are not as expected, the secret may be any of the bytes.
    if (!request.wellFormed && HasSecret(request.known)) {
        Hide(request.body, static_cast<std::uint32_t>(request.body.size()), static_cast<std::uint32_t>(request.body.size()));
        request.items.clear();
    }
    return request;
}

} // namespace ccrypto
