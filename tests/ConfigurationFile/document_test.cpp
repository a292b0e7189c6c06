// What is read from a document, how sections merge, and the text that they give.
#include "tests/ConfigurationFile/store_fixture.h"
#include "tests/support/failure.h"

namespace store_test {
namespace {

using Access = vdcertificates::ConfigurationFileAccess;
using vdcertificates::ConfigurationFileNodes;

class DocumentTest : public StoreTest {
  protected:
    vdcertificates::ConfigurationFile file;
};

const std::string server = "<Notifier Name='S'><A><PublicKeyPath>p</PublicKeyPath></A></Notifier>";

TEST_F(DocumentTest, IsReadInManyForms) {
    const std::pair<std::string, const char*> cases[] = {
        {"", ""},
        {" \n<!-- nothing -->", ""},
        {"<ORVACertificates/>", ""},
        {"<orvaCertificates><Notifiers><A/></Notifiers></orvaCertificates>", ""},
        {"<Other>" + document("<A/>") + "</Other>", ""},
        {"\xEF\xBB\xBF<?xml version='1.0' encoding='utf-8'?>\n<!-- c --><?pi?>" + document(server),
         "[S:A(p,,,,)]"},
        {document("\n  <Notifier Name=\"S\">\r\n\t<A>\n <PublicKeyPath>p</PublicKeyPath>\n</A>\n"
                  "</Notifier>\n"),
         "[S:A(p,,,,)]"},
        {document("<A/><B></B>"), "A(,,,,)B(,,,,)"},
        {document("<A><PublicKeyPath>1</PublicKeyPath><PublicKeyPath>2</PublicKeyPath></A>"),
         "A(2,,,,)"},
        {document("<A><TrustedCertificatePath>t</TrustedCertificatePath><Other>x</Other>"
                  "<CertificatePath>c</CertificatePath><PrivateKeyPath>k</PrivateKeyPath>"
                  "<Password></Password></A>"),
         "A(,k,c,,t)"},
        {document("<A><x><PublicKeyPath>deep</PublicKeyPath></x><publickeypath>x</publickeypath>"
                  "</A>"),
         "A(,,,,)"},
        {document("<A><PublicKeyPath>a&amp;<![CDATA[<b>]]>&#x63;<i>d</i></PublicKeyPath></A>"),
         "A(a&<b>cd,,,,)"},
        {document("<notifier Name=\"X\"><A/></notifier>"), "notifier(,,,,)"},
        {document("<Notifier><A/></Notifier><Notifier name=\"X\"><A/></Notifier>"),
         "[:A(,,,,)A(,,,,)]"},
        {document("<Notifier Name=\"empty\"></Notifier>"), ""},
        {document(server + server + "<Notifier Name=\"s\"><B/></Notifier>"),
         "[S:A(p,,,,)A(p,,,,)][s:B(,,,,)]"},
        {"<ORVACertificates><Notifiers><A/></Notifiers><x/>text<Notifiers><B/></Notifiers>"
         "<notifiers><C/></notifiers></ORVACertificates>",
         "A(,,,,)B(,,,,)"},
        {document("<A/>") + document("<B/>") + "<&", "A(,,,,)"},
    };
    for (const auto& [text, expected] : cases) {
        write_configuration(text);
        ConfigurationFileNodes nodes;
        nodes.certificates = {entry("old")};
        nodes.notifiers["old"] = {};
        Access::read(file, "Notifiers", nodes);
        EXPECT_EQ(show(nodes), expected) << text;
    }
}

TEST_F(DocumentTest, KeepsWhatWasReadBeforeAFault) {
    const std::pair<std::string, const char*> cases[] = {
        // Where the fault is; for an undecipherable password nothing is said.
        {document("<A/><B>"), "[line 1, pos 48]: "},
        {"<ORVACertificates><Notifiers><A/></Notifiers>&", "[line 1, pos 46]: "},
        {document("<A/><A><Password>no cipher text</Password></A><B/>"), ""},
        {"<ORVACertificates><Notifiers><A/></Notifiers>", "[line 1, pos 45]: "},
    };
    for (const auto& [text, place] : cases) {
        write_configuration(text);
        ConfigurationFileNodes nodes;
        nodes.certificates = {entry("old")};
        const auto error = support::error_of([&] { Access::read(file, "Notifiers", nodes); });
        ASSERT_TRUE(error) << text;
        EXPECT_THAT(error->text(), testing::StartsWith(place));
        EXPECT_EQ(show(nodes), "A(,,,,)") << text;
        std::string publicKey = "kept";
        std::string other;
        EXPECT_FALSE(file.get_cluster_certificate_information(publicKey, other, other, other));
        EXPECT_EQ(publicKey, "kept");
    }
}

TEST_F(DocumentTest, MergesNewEntriesByFoldedName) {
    const auto a1 = entry("A", "1", "1", "1", "", "1");
    const auto a2 = entry("a", "2", "2", "2", "", "");
    const auto b1 = entry("B", "1");
    const struct {
        const char* what;
        ConfigurationFileNodes added;
        ConfigurationFileNodes existing;
        const char* merged;
    } cases[] = {
        {"new entries in their order", {{b1, a1}, {}}, {}, "B(1,,,,)A(1,1,1,,1)"},
        {"all of a name are overwritten and keep their spelling",
         {{a2}, {}},
         {{a1, b1, a1}, {}},
         "A(2,2,2,,)B(1,,,,)A(2,2,2,,)"},
        {"the last of two new ones wins", {{a1, a2}, {}}, {}, "A(2,2,2,,)"},
        {"a role new under a key comes after the others",
         {{}, {{"srv", {b1, a2}}}},
         {{}, {{"SRV", {a1}}}},
         "[SRV:A(2,2,2,,)B(1,,,,)]"},
        {"a new key is taken whole, with its doubles",
         {{}, {{"new", {a1, a2}}}},
         {{}, {{"SRV", {b1}}}},
         "[SRV:B(1,,,,)][new:A(1,1,1,,1)a(2,2,2,,)]"},
        {"every spelling of a key is changed",
         {{}, {{"sRv", {a2}}}},
         {{}, {{"SRV", {a1}}, {"srv", {b1}}}},
         "[SRV:A(2,2,2,,)][srv:B(1,,,,)a(2,2,2,,)]"},
        {"two new spellings of a key end under the first",
         {{}, {{"SRV", {a1}}, {"srv", {a2}}, {"T", {}}}},
         {},
         "[SRV:A(2,2,2,,)][T:]"},
        {"only ASCII letters fold",
         {{}, {{"\xC3\x84", {a2}}}},
         {{}, {{"\xC3\xA4", {a1}}}},
         "[\xC3\x84:a(2,2,2,,)][\xC3\xA4:A(1,1,1,,1)]"},
    };
    for (const auto& test : cases) {
        ConfigurationFileNodes nodes = test.existing;
        Access::merge(file, test.added, nodes, "S");
        EXPECT_EQ(show(nodes), test.merged) << test.what;
        Access::merge(file, nodes, nodes, "S");
        EXPECT_EQ(show(nodes), test.merged) << test.what << ", merged with itself";
    }
    // A cost that grew with the square would take minutes.
    ConfigurationFileNodes many;
    for (int i = 0; i < 20000; ++i) {
        many.certificates.push_back(entry("name" + std::to_string(i), "new"));
        many.notifiers[many.certificates.back().name] = {entry("E", "new")};
    }
    ConfigurationFileNodes nodes = many;
    nodes.certificates[7].publicKeyPath = "old";
    Access::merge(file, many, nodes, "S");
    EXPECT_TRUE(show(nodes) == show(many));
}

// Required: only the trusted path is escaped, and only three characters of it.
TEST_F(DocumentTest, HasServersInByteOrderAndOneEscapedField) {
    ConfigurationFileNodes nodes;
    nodes.notifiers["srv02"] = {entry("F")};
    nodes.notifiers["SRV03"] = {};
    nodes.notifiers["A\"b"] = {entry("E", "p&", "k\"", "a<b>&c", "", "a<b>&c\"'")};
    nodes.certificates = {entry("D")};
    EXPECT_EQ(Access::merge(file, {}, nodes, "S"),
              "<S>" + entry_text("D") +
                  "<Notifier Name=\"A\"b\"><E><PublicKeyPath>p&</PublicKeyPath>"
                  "<PrivateKeyPath>k\"</PrivateKeyPath><CertificatePath>a<b>&c</CertificatePath>"
                  "<Password></Password><TrustedCertificatePath>a&lt;b&gt;&amp;c\"'"
                  "</TrustedCertificatePath></E></Notifier><Notifier Name=\"SRV03\"></Notifier>"
                  "<Notifier Name=\"srv02\">" +
                  entry_text("F") + "</Notifier></S>");
}

} // namespace
} // namespace store_test
