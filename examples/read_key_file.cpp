// Says what key a file holds, in DER or PEM, encrypted or not.
//
//     read_key_file FILE [PASSWORD]

#include "core/core.h"
#include "pki/pki.h"

#include <cstdio>

int main(int count, char** arguments)
{
    if (count < 2) {
        std::fputs("usage: read_key_file FILE [PASSWORD]\n", stderr);
        return 2;
    }
    CCryptoFile file(CCryptoString(arguments[1]), CCryptoFile::Mode::read);
    element bytes;
    if (!file.isOpen() || !file.Read(0, static_cast<std::uint32_t>(file.Size()), bytes)) {
        std::fputs("the file cannot be read\n", stderr);
        return 1;
    }

    // Asked only when the key is encrypted.
    const auto askPassword = [&](element& password) {
        password = element(count > 2 ? arguments[2] : "");
        return count > 2;
    };
    CCryptoKeyFile keyFile;
    const std::unique_ptr<ICryptoKeyPair> key = keyFile.Load(bytes.bytes(), askPassword);
    if (key == nullptr) {
        std::fprintf(stderr, "not read: %s\n", ccrypto::LastFailure().value_or(ccrypto::Failure{}).text.c_str());
        return 1;
    }
    std::printf("%s key of %s, %u bits\n", key->hasPrivate() ? "private" : "public", key->name(), key->keySize());
    return 0;
}
