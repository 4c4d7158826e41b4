#include "asn1/template/template_cache.h"

#include "asn1/template/gen_parser.h"
#include "core/base/never_destroyed.h"

#include <map>
#include <mutex>
#include <shared_mutex>
#include <string>

namespace ccrypto {

namespace {

struct Cache {
    std::shared_mutex lock;
    std::map<std::string, ElementNodePtr, std::less<>> templates;
};

Cache& TheCache()
{
    static NeverDestroyed<Cache> cache;
    return *cache;
}

} // namespace

const elementNode* ParsedTemplate(std::string_view text)
{
    Cache& cache = TheCache();
    {
        const std::shared_lock reading(cache.lock);
        const auto found = cache.templates.find(text);
        if (found != cache.templates.end())
            return found->second.get();
    }
    ElementNodePtr parsed = CCryptoGENParser().Parse(text);
    if (parsed == nullptr)
        return nullptr;
    const std::unique_lock writing(cache.lock);
    return cache.templates.try_emplace(std::string(text), std::move(parsed)).first->second.get();
}

ElementNodePtr ParseInlineTemplate(std::string_view text)
{
    NoIncludes noIncludes;
    return CCryptoGENParser(&noIncludes).Parse(text);
}

} // namespace ccrypto
