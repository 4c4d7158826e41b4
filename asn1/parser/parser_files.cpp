#include "asn1/json/json_parser.h"
#include "asn1/parser/parser.h"
#include "asn1/template/gen_parser.h"
#include "asn1/xml/xml_parser.h"
#include "core/diagnostics/auto_logger.h"
#include "core/settings/settings.h"
#include "core/system/file.h"

using namespace ccrypto;

namespace {

constexpr std::int64_t maxFileSize = 256 << 20;

bool ReadFile(const CCryptoString& name, element& content, CCryptoAutoLogger& logger)
{
    CCryptoFile file;
    if (!file.Open(name, platform::FileMode::read))
        return logger.fail(false, "%s cannot be opened", name.c_str());
    if (file.Size() > maxFileSize)
        return logger.fail(false, "%s is longer than 256 MiB", name.c_str());
    content = element();
    if (file.Size() != 0 && !file.Read(0, static_cast<std::uint32_t>(file.Size()), content))
        return logger.fail(false, "%s cannot be read", name.c_str());
    return true;
}

/// Where templates are included from.
CCryptoString FolderOfSettings()
{
    ICryptoSettings* const settings = CCryptoSettings::InstanceOrNull();
    return settings != nullptr ? CCryptoString(settings->GetLongString("includePath")) : CCryptoString();
}

bool WriteFile(const CCryptoString& name, const element& content, CCryptoAutoLogger& logger)
{
    CCryptoFile file;
    const bool written = file.Open(name, platform::FileMode::write) && (content.isEmpty() || file.Write(content.bytes(), 0));
    return written ? logger.setResult(true) : logger.fail(false, "%s cannot be written", name.c_str());
}

bool WriteText(const CCryptoString& name, const CCryptoString& text, CCryptoAutoLogger& logger)
{
    return text.isEmpty() ? logger.fail(false, "There is no tree to save") : WriteFile(name, text.data(), logger);
}

} // namespace

bool CCryptoParser::Load_ASCII_File(const CCryptoString& name, TemplateIncludes includes)
{
    CCryptoAutoLogger logger("CCryptoParser::Load_ASCII_File", ccrypto::LoggerMode::resultExpected, "filename=%s", name.c_str());
    clear();
    element text;
    return ReadFile(name, text, logger) && logger.setResult(Load_ASCII_Memory(text.view(), includes));
}

bool CCryptoParser::Load_DER_File(const CCryptoString& name, const DerOptions& options)
{
    CCryptoAutoLogger logger("CCryptoParser::Load_DER_File", ccrypto::LoggerMode::resultExpected, "filename=%s", name.c_str());
    clear();
    element der;
    return ReadFile(name, der, logger) && logger.setResult(Load_DER_Memory(der, options));
}

bool CCryptoParser::Load_JSON_File(const CCryptoString& name)
{
    CCryptoAutoLogger logger("CCryptoParser::Load_JSON_File", ccrypto::LoggerMode::resultExpected, "filename=%s", name.c_str());
    clear();
    element text;
    return ReadFile(name, text, logger) && logger.setResult(Load_JSON_Memory(text.view()));
}

bool CCryptoParser::Load_XML_File(const CCryptoString& name)
{
    CCryptoAutoLogger logger("CCryptoParser::Load_XML_File", ccrypto::LoggerMode::resultExpected, "filename=%s", name.c_str());
    clear();
    element text;
    return ReadFile(name, text, logger) && logger.setResult(Load_XML_Memory(text.view()));
}

bool CCryptoParser::Load_RAW_File(const CCryptoString& name)
{
    CCryptoAutoLogger logger("CCryptoParser::Load_RAW_File", ccrypto::LoggerMode::resultExpected, "filename=%s", name.c_str());
    clear();
    element content;
    if (!ReadFile(name, content, logger))
        return false;
    setRoot(elementNode::Make(ElementType::none));
    root()->set(LinkKind::content, std::move(content));
    return logger.setResult(true);
}

std::unique_ptr<element> CCryptoParser::SLoad_RAW_Element(const CCryptoString& name)
{
    CCryptoAutoLogger logger("CCryptoParser::SLoad_RAW_Element", ccrypto::LoggerMode::resultExpected, "filename=%s", name.c_str());
    auto content = std::make_unique<element>();
    if (!ReadFile(name, *content, logger))
        return nullptr;
    logger.setResult(true);
    return content;
}

bool CCryptoParser::Load_ASCII_Memory(std::string_view text)
{
    return Load_ASCII_Memory(text, TemplateIncludes::files);
}

// What is loaded may be a part of the tree held before, which is destroyed after it was read.

bool CCryptoParser::Load_ASCII_Memory(std::string_view text, TemplateIncludes includes)
{
    CCryptoAutoLogger logger("CCryptoParser::Load_ASCII_Memory");
    NoIncludes noIncludes;
    const bool reads = includes == TemplateIncludes::files;
    setRoot(reads ? CCryptoGENParser(FolderOfSettings).Parse(text) : CCryptoGENParser(&noIncludes).Parse(text));
    return logger.setResult(!isEmpty());
}

bool CCryptoParser::Load_DER_Memory(const element& der, const DerOptions& options)
{
    CCryptoAutoLogger logger("CCryptoParser::Load_DER_Memory");
    CCryptoDERParser decoder(options);
    setRoot(decoder.Decode(der.bytes()));
    isDer_ = decoder.isDer();
    return logger.setResult(!isEmpty());
}

bool CCryptoParser::Load_JSON_Memory(std::string_view text)
{
    CCryptoAutoLogger logger("CCryptoParser::Load_JSON_Memory");
    setRoot(CCryptoJSONParser().Parse(text));
    return logger.setResult(!isEmpty());
}

bool CCryptoParser::Load_XML_Memory(std::string_view text)
{
    CCryptoAutoLogger logger("CCryptoParser::Load_XML_Memory");
    setRoot(CCryptoXMLParser().Parse(text));
    return logger.setResult(!isEmpty());
}

bool CCryptoParser::Save_ASCII_File(const CCryptoString& name) const
{
    return Save_ASCII_File(name, root());
}

bool CCryptoParser::Save_ASCII_File(const CCryptoString& name, const elementNode* node)
{
    CCryptoAutoLogger logger("CCryptoParser::Save_ASCII_File", ccrypto::LoggerMode::resultExpected, "filename=%s", name.c_str());
    return WriteText(name, ToText(node), logger);
}

bool CCryptoParser::Save_JSON_File(const CCryptoString& name) const
{
    return Save_JSON_File(name, root());
}

bool CCryptoParser::Save_JSON_File(const CCryptoString& name, const elementNode* node)
{
    CCryptoAutoLogger logger("CCryptoParser::Save_JSON_File", ccrypto::LoggerMode::resultExpected, "filename=%s", name.c_str());
    return WriteText(name, ToJson(node), logger);
}

bool CCryptoParser::Save_XML_File(const CCryptoString& name) const
{
    return Save_XML_File(name, root());
}

bool CCryptoParser::Save_XML_File(const CCryptoString& name, const elementNode* node)
{
    CCryptoAutoLogger logger("CCryptoParser::Save_XML_File", ccrypto::LoggerMode::resultExpected, "filename=%s", name.c_str());
    return WriteText(name, ToXml(node), logger);
}

bool CCryptoParser::Save_DER_File(const CCryptoString& name) const
{
    return Save_DER_File(name, root());
}

bool CCryptoParser::Save_DER_File(const CCryptoString& name, const elementNode* node)
{
    CCryptoAutoLogger logger("CCryptoParser::Save_DER_File", ccrypto::LoggerMode::resultExpected, "filename=%s", name.c_str());
    const element der = ToDer(node);
    if (der.isEmpty())
        return logger.fail(false, "There is no tree to save");
    return WriteFile(name, der, logger);
}

bool CCryptoParser::Save_RAW_File(const CCryptoString& name) const
{
    CCryptoAutoLogger logger("CCryptoParser::Save_RAW_File", ccrypto::LoggerMode::resultExpected, "filename=%s", name.c_str());
    const elementNode* const value = isEmpty() ? nullptr : root()->value();
    if (value == nullptr)
        return logger.fail(false, "There is no value to save");
    return WriteFile(name, value->token(), logger);
}
