#include "core/base/algorithm.h"
#include "core/platform/random_bytes.h"
#include "core/text/hex.h"
#include "crypto/kdf/key_derivation.h"
#include "tools/cryptotool/cipher/cipher_header.h"
#include "tools/cryptotool/cipher/cipher_transfer.h"
#include "tools/cryptotool/cli/command_table.h"
#include "tools/cryptotool/cli/reason.h"
#include "tools/cryptotool/input/secret_input.h"

#include <algorithm>

namespace ccrypto {

namespace {

constexpr std::string_view defaultCipher = "aes-256-gcm";
constexpr std::string_view defaultOpensslCipher = "aes-256-cbc";
constexpr std::uint64_t defaultIterations = 600000;
/// The default of `openssl enc -pbkdf2`.
constexpr std::uint64_t opensslIterations = 10000;
constexpr std::string_view opensslMagic = "Salted__";
constexpr std::size_t opensslSaltSize = 8;

/// What a file's header may ask for without --max-iterations: it comes from whoever wrote the file.
constexpr std::uint64_t defaultMaxIterations = 10'000'000;

constexpr std::string_view encryptDetails =
    R"(Encrypts FILE, or standard input, with a password (PBKDF2 with HMAC-SHA-256 makes the key from it) or with a key. Cipher, salt and
initialisation vector are in a header before the result; the input of PBKDF2 is printed as a remark. Ciphers: aes-128-, aes-192- or
aes-256- with gcm, cbc, ctr, ofb, cfb or ecb; old ones are des-, des-ede-, des-ede3- or rc2- with cbc, ofb, cfb or ecb, and rc4. Only
GCM detects that the result was changed.
)";

constexpr std::string_view decryptDetails =
    R"(Decrypts what "cipher enc" wrote, or with --raw or --openssl what other programs wrote. An output file appears only when all of it
is right. GCM is verified before anything is written, for which a file is read twice; from standard input it may have 64 MiB. Any
other cipher does not detect changes, and must be named by --cipher.
)";

constexpr Option cipherOption = {OptionKind::text, 0, "cipher", "NAME", "the cipher (aes-256-gcm; with --openssl aes-256-cbc)"};
constexpr Option iterationsOption = {OptionKind::number, 0, "iterations", "N",
                                     "iterations of PBKDF2 (600000; with --openssl 10000)"};
constexpr Option maxIterationsOption = {OptionKind::number, 0, "max-iterations", "N",
                                        "refuse a file whose header asks for more iterations (10000000)"};
constexpr Option rawOption = {OptionKind::flag, 0, "raw", "", "no header: the cipher text alone, with a key and --iv"};
constexpr Option ivOption = {OptionKind::text, 0, "iv", "HEX", "the initialisation vector for --raw; '' where the cipher has none"};
constexpr Option opensslOption = {OptionKind::flag, 0, "openssl", "", "the format of \"openssl enc -pbkdf2\", with a password"};

constexpr Option encryptOptions[] = {
    cipherOption,     keySecret.file,      keySecret.descriptor,
    hexKeyOption,     passwordSecret.file, passwordSecret.descriptor,
    iterationsOption, rawOption,           ivOption,
    opensslOption,    outputOption,
};
constexpr Option decryptOptions[] = {
    cipherOption,
    keySecret.file,
    keySecret.descriptor,
    hexKeyOption,
    passwordSecret.file,
    passwordSecret.descriptor,
    maxIterationsOption,
    iterationsOption,
    rawOption,
    ivOption,
    opensslOption,
    outputOption,
};

class CipherFiles {
public:
    CipherFiles(Invocation& invocation, CipherDirection direction)
        : invocation_(invocation), arguments_(invocation.arguments()), encrypts_(direction == CipherDirection::encrypt),
          input_(invocation.console(), arguments_.fileOperand(0)),
          output_(invocation.console(), arguments_.value(outputOption.name), Output::Content::binary)
    {
    }

    int run();

private:
    int checkOptions();
    int findCipher(std::string_view name);
    int readKey();
    int readPassword(element& password);
    int derive(std::span<const std::uint8_t> salt, std::uint32_t iterations, std::size_t ivSize);
    int runRaw();
    int runOpenssl();
    int encrypt();
    int decrypt();
    bool has(const Option& option) const { return arguments_.has(option.name); }
    bool hasKey() const { return has(keySecret.file) || has(keySecret.descriptor); }
    std::uint32_t iterations(std::uint64_t otherwise) const;
    int random(std::span<std::uint8_t> bytes);

    Invocation& invocation_;
    const Arguments& arguments_;
    bool encrypts_;
    CipherInput input_;
    Output output_;
    CipherSetting setting_;
};

int CipherFiles::checkOptions()
{
    const bool hasPassword = has(passwordSecret.file) || has(passwordSecret.descriptor);
    if (has(rawOption) && has(opensslOption))
        return invocation_.misuse("--raw and --openssl are mutually exclusive");
    if (hasKey() && (hasPassword || has(opensslOption)))
        return invocation_.misuse("a key and a password are mutually exclusive");
    if (has(rawOption) && (hasPassword || !hasKey()))
        return invocation_.misuse("--raw requires --key-file or --key-fd");
    if (has(ivOption) != has(rawOption))
        return invocation_.misuse("--raw and --iv require each other");
    if (has(iterationsOption) && hasKey())
        return invocation_.misuse("--iterations requires a password");
    if (has(cipherOption) && ICryptoCipher::CreateByName(arguments_.value(cipherOption.name)) == nullptr)
        return invocation_.misuse("unknown cipher " + arguments_.value(cipherOption.name));
    if (has(hexKeyOption) && !hasKey())
        return invocation_.misuse("--hex-key requires --key-file or --key-fd");
    if (const int code = CheckOneStandardInput(invocation_, {input_.name()}, {keySecret, passwordSecret}); code != exitDone)
        return code;
    for (const Option& option : {iterationsOption, maxIterationsOption}) {
        const std::uint64_t count = arguments_.number(option.name, 1);
        if (count < 1 || count > CCryptoKeyDerivation::maxIterations)
            return invocation_.misuse("--" + std::string(option.name) + " must be from 1 to " +
                                      std::to_string(CCryptoKeyDerivation::maxIterations));
    }
    return exitDone;
}

std::uint32_t CipherFiles::iterations(std::uint64_t otherwise) const
{
    return static_cast<std::uint32_t>(arguments_.number(iterationsOption.name, otherwise));
}

int CipherFiles::findCipher(std::string_view name)
{
    setting_.cipher = ICryptoCipher::CreateByName(name);
    return setting_.cipher != nullptr ? exitDone : invocation_.refuse(input_.name(), "unknown cipher " + std::string(name));
}

int CipherFiles::readKey()
{
    return ReadSecretKey(invocation_, setting_.key);
}

int CipherFiles::readPassword(element& password)
{
    return ReadSecret(invocation_, passwordSecret, encrypts_ ? Asking::twice : Asking::once, password);
}

/// From a password: the key, followed by the vector unless its size is 0.
int CipherFiles::derive(std::span<const std::uint8_t> salt, std::uint32_t count, std::size_t ivSize)
{
    element password;
    if (const int code = readPassword(password); code != exitDone)
        return code;
    setting_.isFromPassword = true;
    invocation_.remark({}, "PBKDF2 with HMAC-SHA-256, " + std::to_string(count) + " iterations, salt " + HexText(salt).c_str());
    StartReason();
    const auto keySize = static_cast<std::uint32_t>(setting_.cipher->keySize());
    const element both = CCryptoKeyDerivation::PBKDF2(algorithm::sha256, password.bytes(), salt, count,
                                                      keySize + static_cast<std::uint32_t>(ivSize));
    if (both.isEmpty())
        return invocation_.refuse(input_.name(), LastReason("no key can be made from this password"));
    setting_.key = element(both.data(), keySize);
    if (ivSize != 0)
        setting_.iv = element(both.data() + keySize, static_cast<std::uint32_t>(ivSize));
    return exitDone;
}

int CipherFiles::random(std::span<std::uint8_t> bytes)
{
    return platform::RandomBytes(bytes.data(), bytes.size()) ? exitDone : invocation_.refuse("random numbers", SystemReason());
}

int CipherFiles::runRaw()
{
    if (const int code = findCipher(arguments_.value(cipherOption.name, defaultCipher)); code != exitDone)
        return code;
    if (!BytesFromHex(arguments_.value(ivOption.name), setting_.iv))
        return invocation_.misuse("--iv must be hexadecimal digits, two per byte");
    if (const int code = readKey(); code != exitDone)
        return code;
    return encrypts_ ? EncryptTo(invocation_, setting_, input_, output_, {}) : DecryptTo(invocation_, setting_, input_, output_);
}

int CipherFiles::runOpenssl()
{
    if (const int code = findCipher(arguments_.value(cipherOption.name, defaultOpensslCipher)); code != exitDone)
        return code;
    if (std::string_view(setting_.cipher->name()).ends_with("gcm"))
        return invocation_.misuse("openssl enc does not support GCM");
    element header;
    header.append(opensslMagic);
    if (encrypts_) {
        std::uint8_t salt[opensslSaltSize];
        if (const int code = random(salt); code != exitDone)
            return code;
        header.append(salt, sizeof salt);
    } else {
        std::span<const std::uint8_t> front;
        if (!input_.peek(opensslMagic.size() + opensslSaltSize, front))
            return invocation_.refuse(input_.name(), input_.reason());
        if (front.size() < opensslMagic.size() + opensslSaltSize || !std::equal(header.data(), header.data() + 8, front.begin()))
            return invocation_.refuse(input_.name(), "it does not begin with \"Salted__\" and a salt, as openssl enc writes");
        header.assign(front.data(), static_cast<std::uint32_t>(front.size()));
        input_.skip(front.size());
    }
    const std::size_t ivSize = setting_.cipher->ivSize();
    if (const int code = derive(header.bytes().subspan(opensslMagic.size()), iterations(opensslIterations), ivSize);
        code != exitDone)
        return code;
    return encrypts_ ? EncryptTo(invocation_, setting_, input_, output_, header.bytes())
                     : DecryptTo(invocation_, setting_, input_, output_);
}

int CipherFiles::encrypt()
{
    CipherHeader header;
    if (const int code = findCipher(arguments_.value(cipherOption.name, defaultCipher)); code != exitDone)
        return code;
    header.cipher = setting_.cipher->name();
    header.hasPassword = !hasKey();
    std::uint8_t iv[16];
    const std::size_t ivSize = setting_.cipher->ivSize();
    if (const int code = random(std::span(iv).first(ivSize)); code != exitDone)
        return code;
    header.iv = element(iv, static_cast<std::uint32_t>(ivSize));
    if (header.hasPassword) {
        header.iterations = iterations(defaultIterations);
        if (header.iterations > defaultMaxIterations)
            invocation_.warn({}, "\"cipher dec\" will need --max-iterations " + std::to_string(header.iterations));
        if (const int code = random(header.salt); code != exitDone)
            return code;
    }
    if (const int code = header.hasPassword ? derive(header.salt, header.iterations, 0) : readKey(); code != exitDone)
        return code;
    setting_.iv = header.iv;
    setting_.authenticated = header.write();
    return EncryptTo(invocation_, setting_, input_, output_, setting_.authenticated.bytes());
}

int CipherFiles::decrypt()
{
    std::span<const std::uint8_t> front;
    if (!input_.peek(CipherHeader::maxSize, front))
        return invocation_.refuse(input_.name(), input_.reason());
    CipherHeader header;
    const std::size_t length = header.read(front);
    if (length == 0)
        return invocation_.refuse(input_.name(), "it does not begin with the header that \"cipher enc\" writes");
    if (has(iterationsOption))
        return invocation_.misuse("--iterations requires --openssl: the header of the file has its own");
    const std::uint64_t limit = arguments_.number(maxIterationsOption.name, defaultMaxIterations);
    if (header.hasPassword && header.iterations > limit)
        return invocation_.refuse(input_.name(), "its header asks for " + std::to_string(header.iterations) +
                                                     " iterations, more than --max-iterations allows (" + std::to_string(limit) +
                                                     ")");
    if (header.hasPassword == hasKey())
        return invocation_.refuse(input_.name(), hasKey() ? "it was encrypted with a password" : "it was encrypted with a key");
    setting_.authenticated = element(front.data(), static_cast<std::uint32_t>(length));
    setting_.iv = header.iv;
    if (const int code = findCipher(header.cipher); code != exitDone)
        return code;
    if (header.iv.length() != setting_.cipher->ivSize())
        return invocation_.refuse(input_.name(), "its header has an initialisation vector of the wrong length");
    // Whoever changed the text could also have changed the header, to a cipher that does not detect it.
    const std::unique_ptr<ICryptoCipher> allowed = ICryptoCipher::CreateByName(arguments_.value(cipherOption.name));
    const std::string name = setting_.cipher->name();
    if (has(cipherOption) ? allowed->name() != name : !name.ends_with("gcm"))
        return invocation_.refuse(input_.name(), "it was encrypted with " + name + ", which does not detect changes; --cipher " +
                                                     name + " accepts it");
    if (const int code = header.hasPassword ? derive(header.salt, header.iterations, 0) : readKey(); code != exitDone)
        return code;
    input_.skip(length);
    return DecryptTo(invocation_, setting_, input_, output_);
}

int CipherFiles::run()
{
    if (const int code = checkOptions(); code != exitDone)
        return code;
    if (!input_.open())
        return invocation_.refuse(input_.name(), input_.reason());
    if (has(rawOption))
        return runRaw();
    if (has(opensslOption))
        return runOpenssl();
    return encrypts_ ? encrypt() : decrypt();
}

int Encrypt(Invocation& invocation)
{
    return CipherFiles(invocation, CipherDirection::encrypt).run();
}

int Decrypt(Invocation& invocation)
{
    return CipherFiles(invocation, CipherDirection::decrypt).run();
}

} // namespace

const Command cipherEncCommand = {"cipher", "enc", "encrypts a file", "[FILE]", 0, 1, encryptDetails, encryptOptions, Encrypt};
const Command cipherDecCommand = {"cipher", "dec", "decrypts a file", "[FILE]", 0, 1, decryptDetails, decryptOptions, Decrypt};

} // namespace ccrypto
