#include "tests/support/temporary_directory.h"
#include "tests/tools/cryptotool/memory_console.h"
#include "tests/tools/cryptotool/small_files.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <sstream>

using namespace ccrypto;

namespace {

/// One file of every structure that openssl makes, as DER in *.der; what it writes with indefinite lengths in *.ber.
constexpr const char* zooScript = R"(set -e
cat >ca.cnf <<'END'
[ca]
default_ca = me
[me]
database = index
crlnumber = number
default_md = sha256
default_crl_days = 30
END
: >index
echo 01 >number
make() { name=$1; shift; openssl req -x509 -nodes -utf8 -days 30 -subj "/C=FI/O=Päivä/CN=$name" -keyout $name.key -out $name.pem "$@"
    openssl x509 -in $name.pem -outform DER -out $name.der; }
make rsa -newkey rsa:2048 -addext 'subjectAltName=DNS:a.example,IP:10.0.0.1,email:a@example.org' -addext 'keyUsage=critical,digitalSignature'
make ec -newkey ec -pkeyopt ec_paramgen_curve:P-256 -addext 'certificatePolicies=1.2.3.4'
make ed -newkey ed25519 -addext 'extendedKeyUsage=OCSPSigning,timeStamping'
openssl req -new -key ec.key -subj '/CN=request' -addext 'subjectAltName=DNS:b.example' -outform DER -out csr.der
openssl x509 -req -in csr.der -inform DER -CA rsa.pem -CAkey rsa.key -set_serial 0x80FF -days 30 -out issued.pem
openssl ca -config ca.cnf -cert rsa.pem -keyfile rsa.key -revoke issued.pem
openssl ca -config ca.cnf -cert rsa.pem -keyfile rsa.key -gencrl -out crl.pem
openssl crl -in crl.pem -outform DER -out crl.der
for key in rsa ec ed; do
    openssl pkcs8 -topk8 -nocrypt -in $key.key -outform DER -out $key.pkcs8.der
    openssl pkcs8 -topk8 -passout pass:x -in $key.key -outform DER -out $key.encrypted.der
    openssl pkey -in $key.key -pubout -outform DER -out $key.public.der
done
openssl pkcs12 -export -in rsa.pem -inkey rsa.key -certfile ec.pem -name päivä -passout pass:x -out p12.der
openssl cms -sign -binary -nodetach -noindef -signer rsa.pem -inkey rsa.key -in ec.pem -outform DER -out signed.der
openssl cms -encrypt -aes256 -noindef -in ec.pem -outform DER -out enveloped.der rsa.pem
openssl cms -sign -binary -nodetach -stream -signer rsa.pem -inkey rsa.key -in ec.pem -outform DER -out signed.ber
openssl cms -encrypt -aes256 -stream -in ec.pem -outform DER -out enveloped.ber rsa.pem
openssl ocsp -issuer rsa.pem -cert issued.pem -reqout ocsp_request.der
openssl ocsp -index index -rsigner rsa.pem -rkey rsa.key -CA rsa.pem -reqin ocsp_request.der -respout ocsp_answer.der
openssl ts -query -data ec.pem -sha256 -cert -out timestamp.der
)";

/// A folder of such files, made once.
class CryptotoolZoo : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        folder_ = new TemporaryDirectory;
        PutFile(*folder_ / u8"make.sh", zooScript);
        const std::string command = "cd '" + folder_->path().string() + "' && sh make.sh >log 2>&1";
        made_ = std::system(command.c_str()) == 0;
    }
    static void TearDownTestSuite()
    {
        delete folder_;
        folder_ = nullptr;
    }
    void SetUp() override { ASSERT_TRUE(made_) << GetFile(*folder_ / u8"log"); }

    static std::vector<std::filesystem::path> Files(const std::string& extension)
    {
        std::vector<std::filesystem::path> files;
        for (const auto& entry : std::filesystem::directory_iterator(folder_->path())) {
            if (entry.path().extension() == extension)
                files.push_back(entry.path());
        }
        return files;
    }

    static TemporaryDirectory* folder_;
    static bool made_;
};

TemporaryDirectory* CryptotoolZoo::folder_ = nullptr;
bool CryptotoolZoo::made_ = false;

/// One element, as both programs tell of it.
struct ElementLine {
    unsigned long offset = 0;
    unsigned long depth = 0;
    unsigned long headerLength = 0;
    std::string length; ///< "inf" for an indefinite one
    bool isConstructed = false;
    std::string tagClass;
    unsigned long tag = 0;

    bool operator==(const ElementLine&) const = default;
};

void PrintTo(const ElementLine& line, std::ostream* stream)
{
    *stream << line.offset << " depth " << line.depth << " header " << line.headerLength << " length " << line.length
            << (line.isConstructed ? " constructed " : " primitive ") << line.tagClass << ' ' << line.tag;
}

using Lines = std::vector<ElementLine>;

const std::map<std::string, unsigned long> tagNumbers = {
    {"EOC", 0},      {"BOOLEAN", 1},          {"INTEGER", 2},          {"BIT STRING", 3},  {"OCTET STRING", 4},
    {"NULL", 5},     {"OBJECT", 6},           {"ENUMERATED", 10},      {"UTF8STRING", 12}, {"SEQUENCE", 16},
    {"SET", 17},     {"NUMERICSTRING", 18},   {"PRINTABLESTRING", 19}, {"T61STRING", 20},  {"IA5STRING", 22},
    {"UTCTIME", 23}, {"GENERALIZEDTIME", 24}, {"VISIBLESTRING", 26},   {"BMPSTRING", 30},
};

const std::map<std::string, std::string> classNames = {
    {"cont", "context-specific"},
    {"appl", "application"},
    {"priv", "private"},
};

/// "  4:d=1  hl=2 l=  13 cons:  SEQUENCE   :...", or " cont [ 0 ]" instead of the name. \return false for another line.
bool ReadAsn1ParseLine(const std::string& text, ElementLine& line)
{
    char length[16] = {};
    char form[8] = {};
    int place = -1;
    std::sscanf(text.c_str(), " %lu:d=%lu hl=%lu l= %15s %7[a-z]: %n", &line.offset, &line.depth, &line.headerLength, length, form,
                &place);
    if (place < 0)
        return false;
    line.length = length;
    line.isConstructed = form == std::string("cons");
    char tagClass[8] = {};
    if (std::sscanf(text.c_str() + place, "%7[a-z] [ %lu ]", tagClass, &line.tag) == 2) {
        line.tagClass = classNames.at(tagClass);
        return true;
    }
    const std::string rest = text.substr(static_cast<std::size_t>(place));
    const std::string name = rest.substr(0, rest.find_last_not_of(' ', rest.find_first_of(":[") - 1) + 1);
    line.tagClass = "universal";
    line.tag = tagNumbers.at(name);
    return true;
}

/// What "openssl asn1parse -i" printed, the elements of each file after a line "== FILE".
std::map<std::string, Lines> ReadAsn1Parse(const std::string& printed)
{
    std::map<std::string, Lines> files;
    Lines* lines = nullptr;
    std::istringstream stream(printed);
    for (std::string text; std::getline(stream, text);) {
        ElementLine line;
        if (text.starts_with("== "))
            lines = &files[text.substr(3)];
        else if (ReadAsn1ParseLine(text, line))
            lines->push_back(line);
    }
    return files;
}

Lines ReadOutline(const std::string& json)
{
    Lines lines;
    std::istringstream stream(json);
    for (std::string text; std::getline(stream, text);) {
        ElementLine line;
        char length[16] = {};
        char tagClass[32] = {};
        char constructed[8] = {};
        const int count = std::sscanf(text.c_str(),
                                      R"({"offset":%lu,"headerLength":%lu,"length":%15[0-9a-z],"depth":%lu,"type":"%*[^"]",)"
                                      R"("class":"%31[a-z-]","tag":%lu,"constructed":%7[a-z])",
                                      &line.offset, &line.headerLength, length, &line.depth, tagClass, &line.tag, constructed);
        if (count != 7)
            continue;
        line.length = length == std::string("null") ? "inf" : length;
        line.tagClass = tagClass;
        line.isConstructed = constructed == std::string("true");
        lines.push_back(line);
    }
    return lines;
}

/// Runs openssl over the files that `list` names, words of the shell.
std::map<std::string, Lines> Asn1Parse(const std::string& list, const std::string& options, const TemporaryDirectory& folder)
{
    const std::string printed = folder / u8"printed";
    const std::string command = "for f in " + list + "; do echo \"== $f\"; openssl asn1parse -i " + options +
                                " -in \"$f\"; done >'" + printed + "' 2>/dev/null";
    EXPECT_EQ(std::system(command.c_str()), 0);
    return ReadAsn1Parse(GetFile(printed));
}

void ExpectSameElements(const std::map<std::string, Lines>& files)
{
    for (const auto& [file, lines] : files) {
        SCOPED_TRACE(file);
        EXPECT_GT(lines.size(), 2U);
        EXPECT_EQ(ReadOutline(RunTool({"asn1", "show", "--json", file}).output), lines);
    }
}

TEST_F(CryptotoolZoo, OutlineAgreesWithOpenssl)
{
    const std::string place = folder_->path().string();
    const auto files = Asn1Parse(place + "/*.der " + place + "/*.ber", "-inform DER", *folder_);
    EXPECT_GE(files.size(), 20U);
    ExpectSameElements(files);
}

TEST(CryptotoolOutline, AgreesWithOpensslOverTheSystemsCertificates)
{
    const TemporaryDirectory folder;
    // Some of them: each is a process of its own.
    const auto files = Asn1Parse("/etc/ssl/certs/[A-C]*.pem", "", folder);
    ASSERT_GT(files.size(), 20U);
    ExpectSameElements(files);
}

void ExpectComesBack(const std::string& der)
{
    for (const char* form : {"template", "json", "xml"}) {
        for (const bool inside : {false, true}) {
            SCOPED_TRACE(std::string(form) + (inside ? " --inside" : ""));
            std::vector<std::string> words = {"asn1", "show", "--as", form, "-"};
            if (inside)
                words.insert(words.end() - 1, "--inside");
            const ToolResult shown = RunTool(words, der);
            ASSERT_EQ(shown.code, exitDone) << shown.error;
            const ToolResult built = RunTool({"asn1", "build", "-"}, shown.output);
            EXPECT_EQ(built.error, "");
            EXPECT_TRUE(built.output == der);
        }
    }
}

TEST_F(CryptotoolZoo, EveryFormBuildsTheSameBytes)
{
    for (const std::filesystem::path& file : Files(".der")) {
        SCOPED_TRACE(file.filename());
        ExpectComesBack(GetFile(file.string()));
    }
}

TEST(CryptotoolShow, TheSystemsCertificatesComeBackTogether)
{
    const ToolResult all = RunTool({"asn1", "get", "--as", "der", "", "/etc/ssl/certs/ca-certificates.crt"});
    ASSERT_GT(all.output.size(), 50000U) << all.error;
    ExpectComesBack(all.output);
    const ToolResult shown = RunTool({"asn1", "show", "--as", "template", "/etc/ssl/certs/ca-certificates.crt"});
    EXPECT_TRUE(RunTool({"asn1", "build", "-"}, shown.output).output == all.output);
}

TEST_F(CryptotoolZoo, PemOfABuildIsReadByOpenssl)
{
    const std::string text = *folder_ / u8"text";
    const std::string pem = *folder_ / u8"built.pem";
    EXPECT_EQ(RunTool({"asn1", "show", "--as", "xml", *folder_ / u8"rsa.pem", "-o", text}).code, exitDone);
    EXPECT_EQ(RunTool({"asn1", "build", "--pem", "CERTIFICATE", text, "-o", pem}).code, exitDone);
    EXPECT_EQ(GetFile(pem), GetFile(*folder_ / u8"rsa.pem"));
}

} // namespace
