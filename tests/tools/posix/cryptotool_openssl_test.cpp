#include "tests/core/temporary_directory.h"
#include "tests/tools/memory_console.h"
#include "tests/tools/small_files.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <regex>
#include <sstream>

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

/// "offset depth headerLength length constructed class tag" of each element.
using Lines = std::vector<std::string>;

const std::map<std::string, std::string> tagNumbers = {
    {"EOC", "0"},      {"BOOLEAN", "1"},          {"INTEGER", "2"},          {"BIT STRING", "3"},  {"OCTET STRING", "4"},
    {"NULL", "5"},     {"OBJECT", "6"},           {"ENUMERATED", "10"},      {"UTF8STRING", "12"}, {"SEQUENCE", "16"},
    {"SET", "17"},     {"NUMERICSTRING", "18"},   {"PRINTABLESTRING", "19"}, {"T61STRING", "20"},  {"IA5STRING", "22"},
    {"UTCTIME", "23"}, {"GENERALIZEDTIME", "24"}, {"VISIBLESTRING", "26"},   {"BMPSTRING", "30"},
};

const std::map<std::string, std::string> classNames = {
    {"cont", "context-specific"},
    {"appl", "application"},
    {"priv", "private"},
};

/// What "openssl asn1parse -i" printed, the elements of each file behind a line "== FILE".
std::map<std::string, Lines> ReadAsn1Parse(const std::string& printed)
{
    static const std::regex pattern(
        R"(^ *(\d+):d=(\d+) +hl=(\d+) +l= *(\d+|inf) +(cons|prim): *(?:(cont|appl|priv) \[ (\d+) \]|([A-Z0-9 ]*[A-Z0-9])).*$)");
    std::map<std::string, Lines> files;
    Lines* lines = nullptr;
    std::istringstream stream(printed);
    for (std::string line; std::getline(stream, line);) {
        std::smatch part;
        if (line.starts_with("== ")) {
            lines = &files[line.substr(3)];
        } else if (std::regex_match(line, part, pattern)) {
            const bool isUniversal = part[8].matched;
            const std::string tag = isUniversal ? tagNumbers.at(part[8]) : std::string(part[7]);
            lines->push_back(part[1].str() + " " + part[2].str() + " " + part[3].str() + " " + part[4].str() + " " +
                             (part[5] == "cons" ? "true" : "false") + " " + (isUniversal ? "universal" : classNames.at(part[6])) +
                             " " + tag);
        }
    }
    return files;
}

Lines ReadOutline(const std::string& json)
{
    static const std::regex pattern(
        R"re(^\{"offset":(\d+),"headerLength":(\d+),"length":(\d+|null),"depth":(\d+),"type":"\w+","class":"([a-z-]+)","tag":(\d+),"constructed":(true|false).*$)re");
    Lines lines;
    std::istringstream stream(json);
    for (std::string line; std::getline(stream, line);) {
        std::smatch part;
        if (std::regex_match(line, part, pattern))
            lines.push_back(part[1].str() + " " + part[4].str() + " " + part[2].str() + " " +
                            (part[3] == "null" ? "inf" : part[3].str()) + " " + part[7].str() + " " + part[5].str() + " " +
                            part[6].str());
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
    const auto files = Asn1Parse("/etc/ssl/certs/*.pem", "", folder);
    ASSERT_GT(files.size(), 50U);
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
