#include "tools/cryptotool/pki/validation_input.h"

#include "pki/validation/name_forms.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/pki/names.h"
#include "tools/cryptotool/pki/object_input.h"
#include "tools/cryptotool/pki/time_text.h"

#include <algorithm>
#include <limits>

namespace ccrypto {

namespace {

std::int64_t SecondsOf(const Arguments& arguments, const Option& option, std::uint64_t otherwise)
{
    constexpr std::uint64_t maxSeconds = 100'000'000'000; // three thousand years
    return static_cast<std::int64_t>(std::min(arguments.number(option.name, otherwise), maxSeconds));
}

ValidationOptions::Status RequiredStatus(const Arguments& arguments)
{
    const bool isGiven = arguments.has(crlOption.name) || arguments.has(ocspOption.name);
    const std::string word = arguments.value(statusOption.name, isGiven ? "chain" : "none");
    if (word == "none")
        return ValidationOptions::Status::none;
    return word == "leaf" ? ValidationOptions::Status::leaf : ValidationOptions::Status::chain;
}

/// The identifiers that the values of an option stand for. \return exitDone or exitUsage.
int ReadOids(Invocation& invocation, const Option& option, Oid (*parse)(std::string_view), std::vector<Oid>& oids)
{
    for (const std::string& value : invocation.arguments().values(option.name)) {
        oids.push_back(parse(value));
        if (oids.back().isNone())
            return invocation.misuse("--" + std::string(option.name) + " needs " + std::string(option.value) + ", not " + value);
    }
    return exitDone;
}

int ReadKeyUsageOption(Invocation& invocation, std::uint16_t& bits)
{
    for (const std::string& name : invocation.arguments().values(keyUsageOption.name)) {
        const std::optional<KeyUsageBit> bit = KeyUsageBitOf(name);
        if (!bit)
            return invocation.misuse(UnknownKeyUsageText(name));
        bits = static_cast<std::uint16_t>(bits | static_cast<std::uint16_t>(*bit));
    }
    return exitDone;
}

/// Names that are asked for are not empty: nothing would be asked.
int ReadNameOption(Invocation& invocation, const Option& option, std::string& name)
{
    const Arguments& arguments = invocation.arguments();
    name = arguments.value(option.name);
    const bool isEmpty = arguments.has(option.name) && name.empty();
    return isEmpty ? invocation.misuse("--" + std::string(option.name) + " needs a value: " + std::string(option.value)) : exitDone;
}

int AddCertificates(Invocation& invocation, const Option& option, bool areAnchors, CertificatePool& pool)
{
    for (const std::string& file : invocation.arguments().values(option.name)) {
        std::vector<CertificatePtr> certificates;
        if (const int exit = ReadCertificates(invocation, file, certificates); exit != exitDone)
            return exit;
        for (CertificatePtr& certificate : certificates)
            if (pool.add(std::move(certificate), areAnchors) == nullptr)
                return invocation.refuse(file, "more than " + std::to_string(CertificatePool::maxCertificates) +
                                                   " certificates are given");
    }
    return exitDone;
}

} // namespace

int ReadTimeOption(Invocation& invocation, const Option& option, CCryptoDateTime& time)
{
    time = UtcNow();
    if (!invocation.arguments().has(option.name))
        return exitDone;
    const std::string text = invocation.arguments().value(option.name);
    const std::optional<CCryptoDateTime> given = ParseRfc3339(text);
    time = given.value_or(CCryptoDateTime());
    return given ? exitDone
                 : invocation.misuse("--" + std::string(option.name) + " needs a time like 2026-11-23T12:00:00Z, not " + text);
}

int ReadValidationOptions(Invocation& invocation, ValidationOptions& options)
{
    const Arguments& arguments = invocation.arguments();
    options.status = RequiredStatus(arguments);
    options.clockSkewSeconds = SecondsOf(arguments, clockSkewOption, 300);
    if (arguments.has(maxAgeOption.name))
        options.maxAgeSeconds = SecondsOf(arguments, maxAgeOption, 0);
    options.explicitPolicy = arguments.has(explicitPolicyOption.name);
    options.inhibitAnyPolicy = arguments.has(inhibitAnyPolicyOption.name);
    options.inhibitMapping = arguments.has(inhibitMappingOption.name);
    options.strict = arguments.has(strictOption.name);
    options.allowWeak = arguments.has(allowWeakOption.name);
    if (arguments.has(maxDepthOption.name))
        options.maxDepth = static_cast<std::uint32_t>(
            std::min<std::uint64_t>(arguments.number(maxDepthOption.name, 0), std::numeric_limits<std::uint32_t>::max()));
    int exit = ReadTimeOption(invocation, timeOption, options.at);
    if (exit == exitDone)
        exit = ReadOids(invocation, policyOption, OidOf, options.policies);
    if (exit == exitDone)
        exit = ReadOids(invocation, purposeOption, PurposeOf, options.extendedKeyUsages);
    if (exit == exitDone)
        exit = ReadKeyUsageOption(invocation, options.keyUsage);
    if (exit == exitDone)
        exit = ReadNameOption(invocation, hostOption, options.host);
    if (exit == exitDone)
        exit = ReadNameOption(invocation, ipOption, options.ipAddress);
    if (exit == exitDone && !options.ipAddress.empty() && !ReadIpAddress(options.ipAddress))
        exit = invocation.misuse("--ip needs an IP address, not " + options.ipAddress);
    return exit == exitDone ? ReadNameOption(invocation, emailOption, options.email) : exit;
}

std::vector<std::string> ValidationFiles(const Invocation& invocation)
{
    std::vector<std::string> files;
    for (const Option& option : {trustOption, untrustedOption, crlOption, ocspOption}) {
        const std::vector<std::string>& given = invocation.arguments().values(option.name);
        files.insert(files.end(), given.begin(), given.end());
    }
    return files;
}

int ReadResponses(Invocation& invocation, const std::string& file,
                  std::vector<std::shared_ptr<const CCryptoOCSP::COCSPResponse>>& responses)
{
    std::vector<DataBlock> blocks;
    if (const int exit = ReadObjectsOrWarn(invocation, file, ObjectKind::message, blocks); exit != exitDone)
        return exit;
    for (std::size_t index = 0; index < blocks.size(); ++index) {
        StartReason();
        auto response = std::make_shared<CCryptoOCSP::COCSPResponse>();
        if (response->LoadResponse(blocks[index].bytes))
            responses.push_back(std::move(response));
        else
            invocation.warn(file, BlockName(blocks, index) + "ignored: " + LastReason("it is not an OCSP response"));
    }
    return exitDone;
}

int ReadStatusFiles(Invocation& invocation, StatusSources& sources)
{
    int exit = exitDone;
    for (const std::string& file : invocation.arguments().values(crlOption.name))
        if (exit == exitDone)
            exit = ReadLists(invocation, file, sources.crls);
    for (const std::string& file : invocation.arguments().values(ocspOption.name))
        if (exit == exitDone)
            exit = ReadResponses(invocation, file, sources.responses);
    return exit;
}

const char* MissingAnchorText(const Invocation& invocation, Reason reason)
{
    return reason == Reason::noPath && !invocation.arguments().has(trustOption.name) ? "; --trust was not given" : "";
}

int ReadValidationFiles(Invocation& invocation, ValidationInput& input)
{
    int exit = AddCertificates(invocation, trustOption, true, input.pool);
    if (exit == exitDone)
        exit = AddCertificates(invocation, untrustedOption, false, input.pool);
    return exit == exitDone ? ReadStatusFiles(invocation, input.sources) : exit;
}

} // namespace ccrypto
