#include "pki/ocsp/structure.h"

#include "asn1/der/der_parser.h"
#include "asn1/types/asn1_values.h"
#include "core/diagnostics/auto_logger.h"
#include "pki/x509/x509_time.h"

using namespace ccrypto;

namespace CCryptoOCSP {

bool CStructure::load(const element& octets, bool& isDer)
{
    CCryptoAutoLogger logger("CCryptoOCSP::CStructure::load");
    Reset();
    if (octets.isEmpty())
        return logger.fail(false, "value is empty");
    CCryptoDERParser decoder;
    const ElementNodePtr tree = decoder.Decode(octets.bytes());
    if (tree == nullptr)
        return logger.fail(false, "Loading failed!");
    if (tree->next() != nullptr || decoder.leavesOctets())
        return logger.fail(false, "Octets follow the end of the structure");
    isDer = decoder.isDer();
    return logger.setResult(Parse(tree.get()));
}

const elementNode* CStructure::findOnly(std::string_view name) const
{
    const elementNode* const node = find(name);
    return node != nullptr && node->next() == nullptr ? node : nullptr;
}

bool CStructure::hasVersion1() const
{
    if (!isBound("version"))
        return true;
    const elementNode* const node = findOnly("version");
    return node != nullptr && node->type() == ElementType::asn1Integer && findBytes("version").view() == std::string_view("\0", 1);
}

bool CStructure::findExtensions(std::string_view name, CCrypto_X509_ValueList& extensions) const
{
    if (!isBound(name))
        return true;
    const elementNode* const list = findOnly(name);
    return list != nullptr && list->type() == ElementType::sequence && list->content() != nullptr &&
           extensions.Parse(list->content(), false);
}

bool CStructure::fillTime(std::string_view name, const CCryptoDateTime& time)
{
    const CCryptoString text = time.isValid() ? time.toUtcDateTime().toGeneralizedTime() : CCryptoString();
    if (text.isEmpty())
        return false;
    ElementNodePtr node = elementNode::Make(ElementType::generalizedType);
    node->set(LinkKind::shortValue, element(text.view()));
    return builder().fill_tree(name, node.get());
}

bool CStructure::fillDer(std::string_view name, const element& der)
{
    const ElementNodePtr tree = CCryptoDERParser().Decode(der.bytes());
    return tree != nullptr && tree->next() == nullptr && builder().fill_tree(name, tree.get());
}

bool CStructure::fillExtensions(std::string_view name, const CCrypto_X509_ValueList& extensions)
{
    if (extensions.isEmpty())
        return true;
    ElementNodePtr items = extensions.BuildItems(false);
    if (items == nullptr)
        return false;
    const ElementNodePtr list = elementNode::Make(ElementType::sequence);
    list->set(LinkKind::content, std::move(items));
    return builder().fill_tree(name, list.get());
}

bool CStructure::fillAlgorithm(std::string_view name, CCryptoAlgorithmIdentifier& algorithm)
{
    if (!algorithm.isSupported())
        return fillDer(name, algorithm.readOctets());
    const ElementNodePtr tree = algorithm.BuildTree();
    return tree != nullptr && builder().fill_tree(name, tree.get());
}

} // namespace CCryptoOCSP

namespace ccrypto::internal {

CCryptoDateTime ReadOcspTime(const elementNode* node)
{
    return node != nullptr && node->type() == ElementType::generalizedType ? ReadX509Time(node) : CCryptoDateTime();
}

bool IsWithinLimit(const elementNode* first)
{
    CCryptoAutoLogger logger("CCryptoOCSP::CStructure::IsWithinLimit");
    std::uint32_t count = 0;
    for (const elementNode* node = first; node != nullptr; node = node->next())
        if (++count > CCryptoOCSP::CStructure::maxMembers)
            return logger.fail(false, "More than %u in one object", CCryptoOCSP::CStructure::maxMembers);
    return logger.setResult(true);
}

element IntegerOfOctets(const element& octets)
{
    element number(octets.data(), octets.length(), ElementType::integer);
    number.setNegative(!octets.isEmpty() && octets[0] >= 0x80);
    return number;
}

} // namespace ccrypto::internal
