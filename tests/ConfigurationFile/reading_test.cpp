#include "tests/ConfigurationFile/store_fixture.h"
#include "tests/support/failure.h"

namespace store_test {
namespace {

using vdcertificates::ConfigurationFile;
using vdcertificates::ConfigurationFileAccess;
using vdcertificates::ConfigurationFileNodes;

class ReadingTest : public StoreTest {
  protected:
    std::string read(const std::string& text, const std::string& section = "Notifiers") {
        write_configuration(text);
        ConfigurationFileNodes nodes;
        nodes.certificates = {entry("old")};
        nodes.notifiers["old"] = {};
        ConfigurationFileAccess::read(file, section, nodes);
        return show(nodes);
    }

    ConfigurationFile file;
};

TEST_F(ReadingTest, FormsOfTheDocument) {
    struct Case {
        std::string text;
        const char* nodes;
    };
    const std::string server =
        "<Notifier Name='S'><A><PublicKeyPath>p</PublicKeyPath></A></Notifier>";
    const Case cases[] = {
        {"", ""},
        {" \n<!-- nothing -->", ""},
        {"<ORVACertificates/>", ""},
        {"<orvaCertificates><Notifiers><A/></Notifiers></orvaCertificates>", ""},
        {"<Other>" + document("<A/>") + "</Other>", ""},
        {document(""), ""},
        {document(server), "[S:A(p,,,,)]"},
        {"<?xml version='1.0' encoding='utf-8'?>\n<!-- c --><?pi?>" + document(server),
         "[S:A(p,,,,)]"},
        {"\xEF\xBB\xBF" + document(server), "[S:A(p,,,,)]"},
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
        {document("<A><x><PublicKeyPath>deep</PublicKeyPath></x></A>"), "A(,,,,)"},
        {document("<A><PublicKeyPath>a&amp;<![CDATA[<b>]]>&#x63;<i>d</i></PublicKeyPath></A>"),
         "A(a&<b>cd,,,,)"},
        {document("<A><publickeypath>x</publickeypath></A>"), "A(,,,,)"},
        {document("<notifier Name=\"X\"><A/></notifier>"), "notifier(,,,,)"},
        {document("<Notifier><A/></Notifier>"), "[:A(,,,,)]"},
        {document("<Notifier name=\"X\"><A/></Notifier>"), "[:A(,,,,)]"},
        {document("<Notifier Name=\"empty\"></Notifier>"), ""},
        {document("<Notifier Name=\"S\"><A/></Notifier><Notifier Name=\"S\"><A/></Notifier>"
                  "<Notifier Name=\"s\"><B/></Notifier>"),
         "[S:A(,,,,)A(,,,,)][s:B(,,,,)]"},
        {"<ORVACertificates><Notifiers><A/></Notifiers><x/>text<Notifiers><B/></Notifiers>"
         "<notifiers><C/></notifiers></ORVACertificates>",
         "A(,,,,)B(,,,,)"},
        {document("<A/>") + document("<B/>") + "<&", "A(,,,,)"},
    };
    for (const Case& test : cases) {
        EXPECT_EQ(read(test.text), test.nodes) << test.text;
    }
}

TEST_F(ReadingTest, AFaultEndsTheReadingAndLeavesWhatStoodBeforeIt) {
    struct Case {
        std::string text;
        const char* nodes;
        const char* message;
    };
    const std::string junk = "<A><Password>no cipher text</Password></A>";
    const Case cases[] = {
        {document("<A/><B>"), "A(,,,,)",
         "[line 1, pos 48]: End element name mismatch: Expecting='B', Found='Notifiers'"},
        {"<ORVACertificates><Notifiers><A/></Notifiers>&", "A(,,,,)",
         "[line 1, pos 46]: End of data in entity or character reference"},
        {document("<A/>" + junk + "<B/>"), "A(,,,,)", ""},
        {"<ORVACertificates><Notifiers><A/></Notifiers>", "A(,,,,)",
         "[line 1, pos 45]: Unexpected end of document; expecting closing tag for element "
         "'ORVACertificates'"},
    };
    for (const Case& test : cases) {
        write_configuration(test.text);
        ConfigurationFileNodes nodes;
        nodes.certificates = {entry("old")};
        const auto error =
            support::error_of([&] { ConfigurationFileAccess::read(file, "Notifiers", nodes); });
        ASSERT_TRUE(error) << test.text;
        EXPECT_THAT(error->text(), testing::StartsWith(test.message));
        EXPECT_EQ(show(nodes), test.nodes) << test.text;
        std::string publicKey = "kept";
        std::string other;
        EXPECT_FALSE(file.get_cluster_certificate_information(publicKey, other, other, other));
        EXPECT_EQ(publicKey, "kept");
    }
}

TEST_F(ReadingTest, AMissingFileIsAFailure) {
    ConfigurationFileNodes nodes;
    const auto error =
        support::error_of([&] { ConfigurationFileAccess::read(file, "Notifiers", nodes); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code().path(), "error.qnfile.io.open");
    EXPECT_EQ(error->text(), "Unable to open file \"" + machine.default_file() + "\"");
    EXPECT_TRUE(error->nested());
    EXPECT_FALSE(file.get_additional_certificate_information(nodes));
}

} // namespace
} // namespace store_test
