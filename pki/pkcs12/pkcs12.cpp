#include "pki/pkcs12/pkcs12.h"

#include "asn1/der/der_cursor.h"
#include "core/diagnostics/auto_logger.h"
#include "core/diagnostics/failure.h"
#include "pki/cms/ber_gathering.h"
#include "pki/cms/content_info.h"
#include "pki/cms/encrypted_data.h"
#include "pki/keys/key_objects.h"

#include <utility>

using namespace ccrypto;

namespace {

constexpr std::uint8_t integerTag = 0x02;
constexpr std::uint8_t octetStringTag = 0x04;
constexpr std::uint8_t oidTag = 0x06;
constexpr std::uint8_t sequenceTag = 0x30;
constexpr std::uint8_t contentTag = 0xA0;
constexpr std::uint8_t fileVersion = 3;
/// One text for a MAC that differs and for content that does not decrypt: which of them it was would help to guess.
constexpr const char* wrongPasswordText = "The password is wrong, or the file is damaged";
constexpr const char* tooManyIterationsText = "The file asks for more than 50,000,000 iterations";

element CopyOf(std::span<const std::uint8_t> octets)
{
    return {octets.data(), static_cast<std::uint32_t>(octets.size())};
}

/// ContentInfo: its type, and the one element that is its content.
struct ContentFields {
    Oid type;
    DerItem content;
};

ContentFields ReadContentFields(const DerItem& info)
{
    DerCursor fields(info.value);
    const DerItem type = fields.read(oidTag);
    DerCursor inside(fields.read(contentTag).value);
    const DerItem content = inside.read();
    if (!type || !content || !inside.atEnd() || !fields.atEnd())
        return {};
    return {Oid(type.value), content};
}

bool IsClosed(const PKCS12Bag& bag)
{
    return bag.kind == PKCS12Bag::Kind::key && bag.key == nullptr && bag.type == pkcs12::shroudedKeyBag;
}

} // namespace

void CCryptoPKCS12::clear()
{
    contents_ = {};
    mac_.reset();
    safeContents_.clear();
    safes_.clear();
    bags_.clear();
    certificates_.clear();
    iterationsLeft_ = maxIterations;
}

PKCS12Outcome CCryptoPKCS12::Read(std::span<const std::uint8_t> bytes)
{
    CCryptoAutoLogger logger("CCryptoPKCS12::Read");
    clear();
    outcome_ = readFile(bytes);
    if (outcome_ == PKCS12Outcome::opened)
        outcome_ = readSafes();
    const bool isRead = outcome_ == PKCS12Outcome::opened || outcome_ == PKCS12Outcome::locked;
    if (!isRead)
        clear();
    logger.setResult(isRead);
    return outcome_;
}

/// PFX (RFC 7292, 4), and the list of contents.
PKCS12Outcome CCryptoPKCS12::readFile(std::span<const std::uint8_t> bytes)
{
    CCryptoAutoLogger logger("CCryptoPKCS12::readFile");
    const element file = GatherBer(bytes);
    const auto outermost = OnlyValue(file.bytes(), sequenceTag);
    if (!outermost)
        return logger.fail(PKCS12Outcome::malformed, "Not a file of PKCS#12");
    DerCursor fields(*outermost);
    const DerItem version = fields.read(integerTag);
    if (version.value.size() != 1 || version.value[0] != fileVersion)
        return logger.fail(PKCS12Outcome::malformed, "Not a file of PKCS#12 version 3");
    const ContentFields safe = ReadContentFields(fields.read(sequenceTag));
    if (safe.type == OidOfContentType(ContentType::signedData))
        return logger.fail(PKCS12Outcome::unsupported, "The file is signed instead of having a MAC, which is not supported");
    if (safe.type != OidOfContentType(ContentType::data) || safe.content.identifier != octetStringTag)
        return logger.fail(PKCS12Outcome::malformed, "The file has no contents");
    contents_ = CopyOf(safe.content.value);
    if (!fields.atEnd()) {
        mac_ = std::make_unique<CCryptoPKCS12MacData>();
        if (!mac_->ParseDer(CopyOf(fields.read(sequenceTag).octets)) || !fields.atEnd())
            return logger.fail(PKCS12Outcome::malformed, "The MAC cannot be read");
    }

    const element list = GatherBer(contents_.bytes());
    const auto infos = OnlyValue(list.bytes(), sequenceTag);
    if (!infos)
        return logger.fail(PKCS12Outcome::malformed, "The contents are not a list");
    for (DerCursor cursor(*infos); !cursor.atEnd();) {
        const ContentFields info = ReadContentFields(cursor.read(sequenceTag));
        if (info.type.isNone() || safes_.size() == PKCS12SafeReader::maxBags)
            return logger.fail(PKCS12Outcome::malformed, "The contents are not a list, or too many");
        const bool isData = info.type == OidOfContentType(ContentType::data);
        if (isData && info.content.identifier != octetStringTag)
            return logger.fail(PKCS12Outcome::malformed, "The contents are no octets");
        safes_.push_back({info.type, {}, false});
        safeContents_.push_back(CopyOf(isData ? info.content.value : info.content.octets));
    }
    return logger.succeed(PKCS12Outcome::opened);
}

/// What is not encrypted, and how the rest is.
PKCS12Outcome CCryptoPKCS12::readSafes()
{
    CCryptoAutoLogger logger("CCryptoPKCS12::readSafes");
    bool isLocked = mac_ != nullptr;
    std::vector<PKCS12Bag> bags;
    PKCS12SafeReader reader(bags, [](std::span<const std::uint8_t> encrypted, PKCS12Bag& bag) {
        CCryptoEncryptedPrivateKeyInfo info;
        if (!info.ParseDer(CopyOf(encrypted)))
            return PKCS12SafeReader::KeyResult::failed;
        bag.encryption = CCryptoPasswordEncryption::ParametersOf(info.algorithm);
        return PKCS12SafeReader::KeyResult::closed;
    });
    for (std::uint32_t index = 0; index < safes_.size(); ++index) {
        PKCS12Safe& safe = safes_[index];
        if (safe.type == OidOfContentType(ContentType::data)) {
            if (!reader.read(safeContents_[index].bytes(), index))
                return logger.fail(PKCS12Outcome::malformed);
            safe.isOpen = true;
        } else if (safe.type == OidOfContentType(ContentType::encryptedData)) {
            CCryptoPKCS7encryptedDataObject data;
            if (!data.ParseDer(safeContents_[index]) || data.encryptedContentInfo.contentType() != ContentType::data)
                return logger.fail(PKCS12Outcome::malformed, "The encrypted contents are malformed, or no octets");
            safe.encryption = CCryptoPasswordEncryption::ParametersOf(data.encryptedContentInfo.contentEncryptionAlgorithm);
            isLocked = true;
        }
    }
    for (const PKCS12Bag& bag : bags)
        isLocked |= IsClosed(bag);
    setBags(std::move(bags));
    return logger.succeed(isLocked ? PKCS12Outcome::locked : PKCS12Outcome::opened);
}

PKCS12Outcome CCryptoPKCS12::Open(std::string_view password)
{
    CCryptoAutoLogger logger("CCryptoPKCS12::Open");
    if (outcome_ == PKCS12Outcome::opened)
        return logger.succeed(outcome_);
    if (contents_.isEmpty())
        return logger.fail(outcome_, "Nothing was read");
    iterationsLeft_ = maxIterations;
    outcome_ = openWith(password);
    if (outcome_ == PKCS12Outcome::wrongPassword && password.empty())
        outcome_ = openWith({});
    if (outcome_ == PKCS12Outcome::wrongPassword)
        return logger.fail(outcome_, "%s", wrongPasswordText);
    logger.setResult(outcome_ == PKCS12Outcome::opened);
    return outcome_;
}

std::uint64_t CCryptoPKCS12::iterationsAskedFor() const
{
    std::uint64_t sum = mac_ != nullptr ? mac_->iterations() : 0;
    for (const PKCS12Safe& safe : safes_)
        sum += safe.encryption ? safe.encryption->iterations : 0;
    for (const PKCS12Bag& bag : bags_)
        sum += bag.encryption ? bag.encryption->iterations : 0;
    return sum;
}

bool CCryptoPKCS12::spend(std::uint32_t iterations)
{
    CCryptoAutoLogger logger("CCryptoPKCS12::spend");
    if (iterations > iterationsLeft_)
        return logger.fail(false, "%s", tooManyIterationsText);
    iterationsLeft_ -= iterations;
    return logger.setResult(true);
}

PKCS12Outcome CCryptoPKCS12::openWith(Password password)
{
    CCryptoAutoLogger logger("CCryptoPKCS12::openWith");
    // Before the first of them is spent.
    if (iterationsAskedFor() > maxIterations)
        return logger.fail(PKCS12Outcome::unsupported, "%s", tooManyIterationsText);
    if (mac_ != nullptr) {
        if (!mac_->isSupported() || !spend(mac_->iterations()))
            return logger.fail(PKCS12Outcome::unsupported);
        if (!mac_->verify(password, contents_.bytes()))
            return logger.fail(PKCS12Outcome::wrongPassword);
    }

    std::vector<PKCS12Bag> bags;
    std::vector<PKCS12Safe> safes = safes_;
    PKCS12Outcome keyOutcome = PKCS12Outcome::opened;
    PKCS12SafeReader reader(bags, [&](std::span<const std::uint8_t> encrypted, PKCS12Bag& bag) {
        CCryptoEncryptedPrivateKeyInfo info;
        if (!info.ParseDer(CopyOf(encrypted)))
            return PKCS12SafeReader::KeyResult::failed;
        bag.encryption = CCryptoPasswordEncryption::ParametersOf(info.algorithm);
        keyOutcome = PKCS12Outcome::unsupported;
        if (!bag.encryption || !spend(bag.encryption->iterations))
            return PKCS12SafeReader::KeyResult::failed;
        element plain;
        keyOutcome = PKCS12Outcome::wrongPassword;
        if (!CCryptoPasswordEncryption::Decrypt(info.algorithm, password, info.encryptedData.bytes(), plain) ||
            !ReadPKCS12Key(plain, bag))
            return PKCS12SafeReader::KeyResult::failed;
        keyOutcome = PKCS12Outcome::opened;
        return PKCS12SafeReader::KeyResult::opened;
    });
    for (std::uint32_t index = 0; index < safes.size(); ++index) {
        PKCS12Safe& safe = safes[index];
        const bool isEncrypted = safe.type == OidOfContentType(ContentType::encryptedData);
        if (!isEncrypted && safe.type != OidOfContentType(ContentType::data))
            continue;
        element plain;
        if (isEncrypted) {
            CCryptoPKCS7encryptedDataObject data;
            if (!safe.encryption || !spend(safe.encryption->iterations) || !data.ParseDer(safeContents_[index]))
                return logger.fail(PKCS12Outcome::unsupported);
            if (!data.Decrypt(password, plain))
                return logger.fail(PKCS12Outcome::wrongPassword);
        }
        if (!reader.read(isEncrypted ? plain.bytes() : safeContents_[index].bytes(), index)) {
            if (keyOutcome != PKCS12Outcome::opened)
                return logger.fail(keyOutcome);
            // Without a MAC a wrong password may leave a padding that looks right.
            return logger.fail(isEncrypted ? PKCS12Outcome::wrongPassword : PKCS12Outcome::malformed);
        }
        safe.isOpen = true;
    }
    setBags(std::move(bags));
    safes_ = std::move(safes);
    return logger.succeed(PKCS12Outcome::opened);
}

bool CCryptoPKCS12::Load(std::span<const std::uint8_t> bytes, const PasswordSource& password)
{
    CCryptoAutoLogger logger("CCryptoPKCS12::Load");
    ForgetFailure();
    if (Read(bytes) == PKCS12Outcome::locked) {
        element secret;
        if (mac_ != nullptr && !mac_->isSupported()) {
            outcome_ = PKCS12Outcome::unsupported;
        } else if (!password || !password(secret)) {
            outcome_ = PKCS12Outcome::noPassword;
            logger.fail(false, "The file is encrypted, and there is no password");
        } else {
            static_cast<void>(Open(secret.view()));
        }
    }
    if (outcome_ == PKCS12Outcome::opened)
        return logger.setResult(true);
    clear();
    return logger.fail(false);
}

void CCryptoPKCS12::setBags(std::vector<PKCS12Bag> bags)
{
    bags_ = std::move(bags);
    certificates_.clear();
    for (std::size_t index = 0; index < bags_.size(); ++index) {
        const PKCS12Bag& bag = bags_[index];
        if (bag.certificate == nullptr)
            continue;
        const std::string key(bag.certificate->publicKey()->publicKeyInfo().view());
        const std::string keyId(bag.localKeyId.view());
        for (const auto& [ofKey, ofId] : {std::pair(key, keyId), std::pair(key, std::string()), std::pair(std::string(), keyId)})
            certificates_.try_emplace({ofKey, ofId}, index);
    }
}

const PKCS12Bag* CCryptoPKCS12::certificateOf(const PKCS12Bag& key) const
{
    const std::string publicKey(key.key != nullptr ? key.key->publicKeyInfo().view() : std::string_view());
    if (publicKey.empty() && key.localKeyId.isEmpty())
        return nullptr;
    auto found = certificates_.find({publicKey, std::string(key.localKeyId.view())});
    // An identifier is chosen by whoever wrote the file; a public key that is another one shows that it is wrong.
    if (found == certificates_.end() && !publicKey.empty())
        found = certificates_.find({publicKey, {}});
    return found != certificates_.end() ? &bags_[found->second] : nullptr;
}
