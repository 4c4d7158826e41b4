#include "pki/validation/identity.h"
#include "tests/pki/validation/test_names.h"

#include <gtest/gtest.h>

#include <string>

using namespace ccrypto;

namespace {

struct IdentityCase {
    Finding (*check)(const ReadExtensions& extensions, std::string_view asked);
    std::string_view asked;
    std::string_view name; ///< the alternative name of the certificate; empty for none
    bool answers;
};

} // namespace

TEST(Identity, IsInTheAlternativeNames)
{
    const IdentityCase cases[] = {
        {CheckHost, "example.com", "dns:example.com", true},
        {CheckHost, "EXAMPLE.com", "dns:Example.COM", true},
        {CheckHost, "example.com.", "dns:example.com", true},
        {CheckHost, "example.com", "dns:example.com.", false},
        {CheckHost, "a.example.com", "dns:example.com", false},
        {CheckHost, "example.com", "dns:a.example.com", false},
        {CheckHost, "localhost", "dns:localhost", true},
        {CheckHost, "a_b.example.com", "dns:a_b.example.com", true},
        {CheckHost, "a.example.com", "dns:*.example.com", true},
        {CheckHost, "A.EXAMPLE.com", "dns:*.example.COM", true},
        {CheckHost, "xn--4ca.example.com", "dns:*.example.com", true},
        {CheckHost, "example.com", "dns:*.example.com", false},
        {CheckHost, "a.b.example.com", "dns:*.example.com", false},
        {CheckHost, "a.badexample.com", "dns:*.example.com", false},
        {CheckHost, "example.com", "dns:*.com", false},
        {CheckHost, "com", "dns:*", false},
        {CheckHost, "ab.example.com", "dns:a*.example.com", false},
        {CheckHost, "a.b.example.com", "dns:a.*.example.com", false},
        {CheckHost, "a.b.example.com", "dns:*.*.example.com", false},
        {CheckHost, "a.example.com", "dns:*.*.com", false},
        {CheckHost, "*.example.com", "dns:*.example.com", false},
        {CheckHost, "*.example.com", "dns:a.example.com", false},
        {CheckHost, ".example.com", "dns:*.example.com", false},
        {CheckHost, "example.com", {"dns:example.com\0.org", 20}, false},
        {CheckHost, {"example.com\0", 12}, "dns:example.com", false},
        {CheckHost, "ex\xC3\xA4mple.com", "dns:ex\xC3\xA4mple.com", false},
        {CheckHost, "192.0.2.1", "dns:192.0.2.1", false},
        {CheckHost, "192.0.2.1", "ip:C0000201", false},
        {CheckHost, "a.0.2.1", "dns:*.0.2.1", true},
        {CheckHost, "1.0.2.1", "dns:*.0.2.1", false},
        {CheckHost, "example.com", "uri:http://example.com/", false},
        {CheckHost, "example.com", "dir:CN=example.com", false},
        {CheckHost, "example.com", "email:example.com", false},
        {CheckHost, "example.com", "", false},
        {CheckHost, "", "dns:", false},

        {CheckIpAddress, "192.0.2.1", "ip:C0000201", true},
        {CheckIpAddress, "192.0.2.2", "ip:C0000201", false},
        {CheckIpAddress, "0.0.0.0", "ip:00000000", true},
        {CheckIpAddress, "192.0.2.1", "ip:C0000201FFFFFFFF", false},
        {CheckIpAddress, "192.0.2.1", "ip:00000000000000000000FFFFC0000201", false},
        {CheckIpAddress, "::ffff:192.0.2.1", "ip:00000000000000000000FFFFC0000201", true},
        {CheckIpAddress, "2001:db8::1", "ip:20010DB8000000000000000000000001", true},
        {CheckIpAddress, "2001:0DB8:0:0:0:0:0:1", "ip:20010DB8000000000000000000000001", true},
        {CheckIpAddress, "::", "ip:00000000000000000000000000000000", true},
        {CheckIpAddress, "::1", "ip:00000000000000000000000000000001", true},
        {CheckIpAddress, "1::", "ip:00010000000000000000000000000000", true},
        {CheckIpAddress, "1:2:3:4:5:6:7::", "ip:00010002000300040005000600070000", true},
        {CheckIpAddress, "1:2:3:4:5:6:192.0.2.1", "ip:000100020003000400050006C0000201", true},
        {CheckIpAddress, "1:2:3:4:5:6:7:8::", "ip:00010002000300040005000600070008", false},
        {CheckIpAddress, "1:2:3:4:5:6:7:8:9", "ip:00010002000300040005000600070008", false},
        {CheckIpAddress, "1:2:3:4:5:6:7", "ip:0001000200030004000500060007", false},
        {CheckIpAddress, "1::2::3", "ip:00010000000000000000000200000003", false},
        {CheckIpAddress, "1:", "ip:0001", false},
        {CheckIpAddress, ":1::", "ip:00000001000000000000000000000000", false},
        {CheckIpAddress, "1::2:", "ip:00010000000000000000000000000002", false},
        {CheckIpAddress, "192.0.2.1::", "ip:C0000201000000000000000000000000", false},
        {CheckIpAddress, "00001::", "ip:00010000000000000000000000000000", false},
        {CheckIpAddress, "fe80::1%eth0", "ip:FE800000000000000000000000000001", false},
        {CheckIpAddress, "192.0.2", "ip:C0000002", false},
        {CheckIpAddress, "192.0.2.1.1", "ip:C0000201", false},
        {CheckIpAddress, "192.0.2.01", "ip:C0000201", false},
        {CheckIpAddress, "192.0.2.256", "ip:C0000200", false},
        {CheckIpAddress, "192.0.2.-1", "ip:C00002FF", false},
        {CheckIpAddress, " 192.0.2.1", "ip:C0000201", false},
        {CheckIpAddress, "192.0.2.", "ip:C0000200", false},
        {CheckIpAddress, "", "ip:", false},
        {CheckIpAddress, "192.0.2.1", "dns:192.0.2.1", false},

        {CheckEmail, "Me@example.com", "email:Me@EXAMPLE.com", true},
        {CheckEmail, "me@example.com", "email:Me@example.com", false},
        {CheckEmail, "me@a.example.com", "email:me@example.com", false},
        {CheckEmail, "me@example.com", {"email:me@example.com\0.org", 24}, false},
        {CheckEmail, "me", "email:me", false},
        {CheckEmail, "me@example.com", "uri:me@example.com", false},
        {CheckEmail, "", "email:", false},
        {CheckEmail, "me@example.com", "dir:E=me@example.com", false},
    };
    for (const IdentityCase& test : cases) {
        ReadExtensions extensions;
        if (!test.name.empty())
            extensions.subjectAlternativeName = TestGeneralNames({"other:x", test.name});
        const Finding finding = test.check(extensions, test.asked);
        EXPECT_EQ(finding.passed(), test.answers) << test.asked << " by " << test.name;
        EXPECT_EQ(finding.reason, test.answers ? Reason::none : Reason::name) << test.asked << " by " << test.name;
    }
}

TEST(Identity, HostNamesAreShort)
{
    const auto answers = [](const std::string& host) {
        ReadExtensions extensions;
        extensions.subjectAlternativeName = TestGeneralNames({"dns:" + host});
        return CheckHost(extensions, host).passed();
    };
    const std::string label(63, 'a');
    EXPECT_TRUE(answers(label));
    EXPECT_FALSE(answers(label + "a"));
    const std::string three = label + "." + label + "." + label + ".";
    EXPECT_TRUE(answers(three + std::string(61, 'a')));
    EXPECT_FALSE(answers(three + std::string(62, 'a')));
}
