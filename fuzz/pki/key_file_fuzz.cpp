#include "core/diagnostics/failure.h"
#include "pki/keys/key_file.h"
#include "pki/keys/password_objects.h"

#include <cstdlib>

using namespace ccrypto;

/// Keys in every form: what loads must be written so that it loads again as the same key. No password is given, since deriving a
/// key may be asked to take half a minute; the descriptions of encryptions are read by themselves.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::span<const std::uint8_t> input(data, size);
    CCryptoKeyFile file;
    if (const std::unique_ptr<ICryptoKeyPair> key = file.Load(input); key != nullptr) {
        const KeyForm form = file.form();
        const element saved = file.Save(*key, form);
        const std::unique_ptr<ICryptoKeyPair> again = file.Load(saved.bytes());
        if (again == nullptr || file.form() != form || !(again->publicKeyInfo() == key->publicKeyInfo()))
            std::abort();
    } else if (const auto failure = ccrypto::LastFailure(); !failure || failure->text.empty()) {
        std::abort();
    }

    const element der(data, static_cast<std::uint32_t>(size));
    for (const auto form : {CCryptoPBES2Parameters::Form::plain, CCryptoPBES2Parameters::Form::rc2})
        CCryptoPBES2Parameters(form).ParseDer(der);
    CCryptoPKCS12Parameters().ParseDer(der);
    return 0;
}
