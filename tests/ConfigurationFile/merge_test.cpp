#include "tests/ConfigurationFile/store_fixture.h"

namespace store_test {
namespace {

using vdcertificates::ConfigurationFile;
using vdcertificates::ConfigurationFileAccess;
using vdcertificates::ConfigurationFileNodes;

using MergeTest = StoreTest;

TEST_F(MergeTest, NewEntriesOverwriteByFoldedName) {
    struct Case {
        const char* what;
        ConfigurationFileNodes added;
        ConfigurationFileNodes existing;
        const char* merged;
    };
    const auto a1 = entry("A", "1", "1", "1", "", "1");
    const auto a2 = entry("a", "2", "2", "2", "", "");
    const auto b1 = entry("B", "1");
    const Case cases[] = {
        {"nothing to nothing", {}, {}, ""},
        {"new entries in their order", {{b1, a1}, {}}, {}, "B(1,,,,)A(1,1,1,,1)"},
        {"an entry keeps its spelling, and empty fields empty it",
         {{a2}, {}},
         {{a1, b1}, {}},
         "A(2,2,2,,)B(1,,,,)"},
        {"all entries of one name are overwritten",
         {{a2}, {}},
         {{a1, a1}, {}},
         "A(2,2,2,,)A(2,2,2,,)"},
        {"the last of two new ones wins", {{a1, a2}, {}}, {}, "A(2,2,2,,)"},
        {"a key keeps its spelling",
         {{}, {{"srv", {a2}}}},
         {{}, {{"SRV", {a1}}}},
         "[SRV:A(2,2,2,,)]"},
        {"a role new under a key stands behind the others",
         {{}, {{"SRV", {b1}}}},
         {{}, {{"SRV", {a1}}}},
         "[SRV:A(1,1,1,,1)B(1,,,,)]"},
        {"a new key is taken whole, its doubles too",
         {{}, {{"new", {a1, a2}}}},
         {{}, {{"SRV", {b1}}}},
         "[SRV:B(1,,,,)][new:A(1,1,1,,1)a(2,2,2,,)]"},
        {"every spelling of a key is changed",
         {{}, {{"sRv", {a2}}}},
         {{}, {{"SRV", {a1}}, {"srv", {b1}}}},
         "[SRV:A(2,2,2,,)][srv:B(1,,,,)a(2,2,2,,)]"},
        {"two new spellings of a key end under the first",
         {{}, {{"SRV", {a1}}, {"srv", {a2}}}},
         {},
         "[SRV:A(2,2,2,,)]"},
        {"a key without entries", {{}, {{"SRV", {}}}}, {}, "[SRV:]"},
        {"only ASCII letters fold",
         {{}, {{"\xC3\x84", {a2}}}},
         {{}, {{"\xC3\xA4", {a1}}}},
         "[\xC3\x84:a(2,2,2,,)][\xC3\xA4:A(1,1,1,,1)]"},
    };
    ConfigurationFile file;
    for (const Case& test : cases) {
        ConfigurationFileNodes nodes = test.existing;
        ConfigurationFileAccess::merge(file, test.added, nodes, "S");
        EXPECT_EQ(show(nodes), test.merged) << test.what;
        const std::string text = ConfigurationFileAccess::merge(file, nodes, nodes, "S");
        EXPECT_EQ(show(nodes), test.merged) << test.what; // merged with itself
        ConfigurationFileNodes copy = nodes;
        EXPECT_EQ(ConfigurationFileAccess::merge(file, {}, copy, "S"), text);
    }
}

// Required: only the trusted path is escaped, and only three characters of it.
TEST_F(MergeTest, TheTextHasServersInByteOrderAndOneEscapedField) {
    ConfigurationFile file;
    ConfigurationFileNodes nodes;
    nodes.notifiers["srv02"] = {entry("F")};
    nodes.notifiers["SRV03"] = {};
    nodes.notifiers["A\"b"] = {entry("E", "p&", "k\"", "a<b>&c", "", "a<b>&c\"'")};
    nodes.certificates = {entry("D")};
    EXPECT_EQ(ConfigurationFileAccess::merge(file, {}, nodes, "S"),
              "<S>" + entry_text("D") +
                  "<Notifier Name=\"A\"b\"><E><PublicKeyPath>p&</PublicKeyPath>"
                  "<PrivateKeyPath>k\"</PrivateKeyPath><CertificatePath>a<b>&c</CertificatePath>"
                  "<Password></Password><TrustedCertificatePath>a&lt;b&gt;&amp;c\"'"
                  "</TrustedCertificatePath></E></Notifier><Notifier Name=\"SRV03\"></Notifier>"
                  "<Notifier Name=\"srv02\">" +
                  entry_text("F") + "</Notifier></S>");
}

// A cost that grew with the square would take minutes.
TEST_F(MergeTest, ThousandsOfNamesAreMergedAtOnce) {
    ConfigurationFile file;
    ConfigurationFileNodes added;
    for (int i = 0; i < 40000; ++i) {
        const std::string name = "name" + std::to_string(i);
        added.certificates.push_back(entry(name, "new"));
        added.notifiers[name].push_back(entry("E", "new"));
    }
    ConfigurationFileNodes nodes = added;
    nodes.certificates[7].publicKeyPath = "old";
    ConfigurationFileAccess::merge(file, added, nodes, "S");
    EXPECT_TRUE(show(nodes) == show(added));
}

} // namespace
} // namespace store_test
