#include "tests/pki/validation/path_cases.h"

#include <gtest/gtest.h>

namespace ccrypto {
namespace {

constexpr const char* serverAuthOid = "1.3.6.1.5.5.7.3.1";
constexpr const char* clientAuthOid = "1.3.6.1.5.5.7.3.2";

void NamesKeyOfRoot(Cert& certificate)
{
    certificate.extension(TestAuthorityKeyIdentifier(*World::Who("Root").key));
}

void NamesKeyOfSub(Cert& certificate)
{
    certificate.extension(TestAuthorityKeyIdentifier(*World::Who("Sub").key));
}

Bytes Unknown(bool critical)
{
    return TestExtension("1.3.6.1.4.1.55555.7", Bytes{0x05, 0x00}, critical);
}

INSTANTIATE_TEST_SUITE_P(
    Extensions, PathCases,
    ::testing::Values(
        WorldCase{"unknown", [](World& w) { ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.extension(Unknown(false)); }); },
                  "VALID"},
        WorldCase{"unknown and critical",
                  [](World& w) { ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.extension(Unknown(true)); }); },
                  "critical-extension 0"},
        WorldCase{"unknown and critical between",
                  [](World& w) {
                      ChainOf(
                          w, Unchanged, [](Cert& c) { c.extension(Unknown(true)); }, Unchanged);
                  },
                  "critical-extension 1"},
        WorldCase{"unknown and critical after unique identifiers",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged, [](Cert& c) {
                          c.extensionsDer(Joined({Tlv(der::Context(1, false), {0, 1}), Tlv(der::Context(2, false), {0, 2}),
                                                  Tlv(der::Context(3), Tlv(der::sequence, Unknown(true)))}));
                      });
                  },
                  "critical-extension 0"},
        WorldCase{"unknown and critical of the anchor",
                  [](World& w) {
                      ChainOf(
                          w, [](Cert& c) { c.extension(Unknown(true)); }, Unchanged, Unchanged);
                  },
                  "critical-extension 2"},
        WorldCase{"twice",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged,
                              [](Cert& c) { c.extension(TestKeyUsage(0x80)).extension(TestKeyUsage(0x80)); });
                  },
                  "malformed 0"},
        WorldCase{"malformed between",
                  [](World& w) {
                      ChainOf(
                          w, Unchanged,
                          [](Cert& c) {
                              c.extension(TestExtension("2.5.29.30", {0x30, 0x01}));
                          },
                          Unchanged);
                  },
                  "malformed 1"},
        WorldCase{"a purpose",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.extension(TestExtendedKeyUsage({serverAuthOid})); });
                      w.options.extendedKeyUsages = {oids::serverAuth};
                  },
                  "VALID"},
        WorldCase{"another purpose",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.extension(TestExtendedKeyUsage({clientAuthOid})); });
                      w.options.extendedKeyUsages = {oids::serverAuth};
                  },
                  "extended-key-usage 0"},
        WorldCase{"one of two purposes",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.extension(TestExtendedKeyUsage({serverAuthOid})); });
                      w.options.extendedKeyUsages = {oids::serverAuth, oids::clientAuth};
                  },
                  "extended-key-usage 0"},
        WorldCase{"any purpose",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.extension(TestExtendedKeyUsage({"2.5.29.37.0"})); });
                      w.options.extendedKeyUsages = {oids::serverAuth};
                  },
                  "VALID"},
        WorldCase{"another purpose between",
                  [](World& w) {
                      ChainOf(
                          w, Unchanged, [](Cert& c) { c.extension(TestExtendedKeyUsage({clientAuthOid})); }, Unchanged);
                      w.options.extendedKeyUsages = {oids::serverAuth};
                  },
                  "extended-key-usage 1"},
        WorldCase{"another purpose that nobody asks about",
                  [](World& w) {
                      ChainOf(
                          w, Unchanged, [](Cert& c) { c.extension(TestExtendedKeyUsage({clientAuthOid})); }, Unchanged);
                  },
                  "VALID"},
        WorldCase{"a key usage",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.extension(TestKeyUsage(0xC0)); });
                      w.options.keyUsage = 3;
                  },
                  "VALID"},
        WorldCase{"half of a key usage",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.extension(TestKeyUsage(0x80)); });
                      w.options.keyUsage = 3;
                  },
                  "key-usage 0"},
        WorldCase{"no key usage to miss",
                  [](World& w) {
                      Chain(w);
                      w.options.keyUsage = 3;
                  },
                  "VALID"},
        WorldCase{"a host",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.extension(TestAlternativeNames({TestDns("a.example")})); });
                      w.options.host = "a.example";
                  },
                  "VALID"},
        WorldCase{"another host",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.extension(TestAlternativeNames({TestDns("a.example")})); });
                      w.options.host = "b.example";
                  },
                  "name 0"},
        WorldCase{"another address",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged, [](Cert& c) {
                          c.extension(TestAlternativeNames({TestIp({192, 0, 2, 1})}));
                      });
                      w.options.ipAddress = "192.0.2.2";
                  },
                  "name 0"},
        WorldCase{"another mailbox",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged,
                              [](Cert& c) { c.extension(TestAlternativeNames({TestEmail("a@a.example")})); });
                      w.options.email = "b@a.example";
                  },
                  "name 0"},
        WorldCase{"another address of the host",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.extension(TestAlternativeNames({TestDns("a.example")})); });
                      w.options.host = "a.example";
                      w.options.ipAddress = "192.0.2.2";
                  },
                  "name 0"},
        WorldCase{"another mailbox of the host",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged, [](Cert& c) { c.extension(TestAlternativeNames({TestDns("a.example")})); });
                      w.options.host = "a.example";
                      w.options.email = "b@a.example";
                  },
                  "name 0"},
        WorldCase{"the profile",
                  [](World& w) {
                      Chain(w);
                      w.options.strict = true;
                  },
                  "profile 1"},
        WorldCase{"the profile, kept",
                  [](World& w) {
                      ChainOf(w, Unchanged, NamesKeyOfRoot, NamesKeyOfSub);
                      w.options.strict = true;
                  },
                  "VALID"},
        WorldCase{"the profile of an anchor that does not say that it is an authority",
                  [](World& w) {
                      ChainOf(
                          w,
                          [](Cert& c) {
                              c.extensionsDer(
                                  Tlv(der::Context(3), Tlv(der::sequence, TestSubjectKeyIdentifier(*World::Who("Root").key))));
                          },
                          NamesKeyOfRoot, NamesKeyOfSub);
                      w.options.strict = true;
                  },
                  "profile 2"},
        WorldCase{"the profile: the key identifier of another",
                  [](World& w) {
                      ChainOf(w, Unchanged, NamesKeyOfRoot, NamesKeyOfRoot);
                      w.options.strict = true;
                  },
                  "profile 0"},
        WorldCase{"the profile of an anchor",
                  [](World& w) {
                      ChainOf(
                          w, [](Cert& c) { c.serial(0); }, NamesKeyOfRoot, NamesKeyOfSub);
                      w.options.strict = true;
                  },
                  "profile 2"},
        WorldCase{"the profile of an anchor that is asked for",
                  [](World& w) {
                      w.subject("Leaf", "Sub", NamesKeyOfSub);
                      w.anchors.push_back(w.subjectDer);
                      w.options.strict = true;
                  },
                  "VALID"}),
    NameOfCase);

INSTANTIATE_TEST_SUITE_P(
    NameConstraints, PathCases,
    ::testing::Values(
        WorldCase{"permitted",
                  [](World& w) {
                      ChainOf(
                          w, Unchanged, [](Cert& c) { c.extension(TestNameConstraints({TestDns("example")}, {})); },
                          [](Cert& c) { c.extension(TestAlternativeNames({TestDns("a.example")})); });
                  },
                  "VALID"},
        WorldCase{"not permitted",
                  [](World& w) {
                      ChainOf(
                          w, Unchanged, [](Cert& c) { c.extension(TestNameConstraints({TestDns("example")}, {})); },
                          [](Cert& c) { c.extension(TestAlternativeNames({TestDns("a.test")})); });
                  },
                  "name-constraints 0"},
        WorldCase{"excluded by the anchor",
                  [](World& w) {
                      ChainOf(
                          w, [](Cert& c) { c.extension(TestNameConstraints({}, {TestDns("example")})); }, Unchanged,
                          [](Cert& c) { c.extension(TestAlternativeNames({TestDns("a.example")})); });
                  },
                  "name-constraints 0"},
        WorldCase{"an intermediate",
                  [](World& w) {
                      w.anchor("Root")
                          .authority("A", "Root",
                                     [](Cert& c) { c.extension(TestNameConstraints({}, {TestDirectoryName("C=FI,O=Test,CN=B")})); })
                          .authority("B", "A")
                          .subject("Leaf", "B");
                  },
                  "name-constraints 1"},
        WorldCase{"one that issued itself is exempt",
                  [](World& w) {
                      w.anchor("Root")
                          .authority("A", "Root",
                                     [](Cert& c) { c.extension(TestNameConstraints({}, {TestDirectoryName("C=FI,O=Test,CN=A")})); })
                          .authority("A/2", "A")
                          .subject("Leaf", "A/2");
                  },
                  "VALID"},
        WorldCase{"a subject that issued itself is not",
                  [](World& w) {
                      w.anchor("Root")
                          .authority("A", "Root",
                                     [](Cert& c) { c.extension(TestNameConstraints({}, {TestDirectoryName("C=FI,O=Test,CN=A")})); })
                          .subjectAuthority("A/2", "A");
                  },
                  "name-constraints 0"},
        WorldCase{"of the subject itself",
                  [](World& w) {
                      ChainOf(w, Unchanged, Unchanged, [](Cert& c) {
                          c.extension(TestNameConstraints({}, {TestDns("example")}))
                              .extension(TestAlternativeNames({TestDns("a.example")}));
                      });
                  },
                  "VALID"}),
    NameOfCase);

} // namespace
} // namespace ccrypto
