#include "tools/cryptotool/asn1/template_input.h"

#include "asn1/template/gen_parser.h"
#include "core/platform/file.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/input/encoding_detection.h"
#include "tools/cryptotool/input/file_input.h"

namespace ccrypto {

namespace {

constexpr std::string_view blanks = " \t\r\n\f\v";

/// Included files, under the limit that holds for every input.
class IncludedFiles : public ICryptoIncludeLoader {
public:
    bool Load(const CCryptoString& name, element& text) override
    {
        platform::File file;
        if (!file.open(name.c_str(), platform::FileMode::read) || file.size() < 0 ||
            file.size() > static_cast<std::int64_t>(maxInput))
            return false;
        const auto size = static_cast<std::uint32_t>(file.size());
        text = element(ElementType::text);
        text.resize(size);
        return file.readAt(0, text.data(), size) == size;
    }
};

std::string FormOfTemplate(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return "template";
    if (text[first] == '<')
        return "xml";
    return text[first] == '{' || text[first] == '[' ? "json" : "template";
}

CCryptoString FolderOf(const std::string& name)
{
    const std::size_t end = name.find_last_of("/\\");
    return end == std::string::npos ? CCryptoString() : CCryptoString(std::string_view(name).substr(0, end + 1));
}

bool HoldsAsn1(const elementNode* first)
{
    for (const elementNode* node = first; node != nullptr; node = node->next()) {
        if (IsAsn1Type(node->type()))
            return true;
    }
    return false;
}

} // namespace

bool ReadTemplate(Console& console, const std::string& name, std::string form, CCryptoParser& tree, std::string& reason)
{
    element bytes;
    if (!ReadWhole(console, name, bytes, reason))
        return false;
    const std::string_view text = WithoutByteOrderMark(bytes.view());
    if (form.empty())
        form = FormOfTemplate(text);

    StartReason();
    IncludedFiles included;
    bool loaded = false;
    if (form == "json") {
        loaded = tree.Load_JSON_Memory(text);
    } else if (form == "xml") {
        loaded = tree.Load_XML_Memory(text);
    } else {
        tree.setRoot(CCryptoGENParser(&included, FolderOf(name)).Parse(text));
        loaded = !tree.isEmpty();
    }
    if (!loaded) {
        reason = LastReason("it does not parse");
        return false;
    }
    if (form != "template" && !HoldsAsn1(tree.root())) {
        reason = form == "json" ? "it describes no ASN.1: no member has the name of a type, such as SEQUENCE"
                                : "it describes no ASN.1: elements need the namespace urn:x-asn1:template";
        return false;
    }
    return true;
}

} // namespace ccrypto
