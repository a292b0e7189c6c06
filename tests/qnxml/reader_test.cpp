// The nodes of documents and the failures of the reader.
#include <gmock/gmock.h>

#include "qnxml/errors.h"
#include "tests/qnxml/documents.h"

namespace {

using qnxml::XmlNodeType;
using qnxml_test::Document;
using qnxml_test::error_of;
using qnxml_test::failure_of;
using qnxml_test::nodes;
using testing::EndsWith;

constexpr const char* bom = "\xEF\xBB\xBF";
using Cases = std::vector<std::pair<std::string, std::string>>;

TEST(Reader, TurnsDocumentsIntoNodes) {
    const Cases cases = {
        {" \n\t", ""},
        {"<!-- a --> <!--b-->", "Comment( a ); Comment(b)"},
        {"<a/><b/>", "Element a; Element b"},
        {"<a xml:space='preserve'> <b> </b><c xml:space='default'> </c></a>",
         "Element a xml:space{http://www.w3.org/XML/1998/namespace}=preserve; Text( ); "
         "Element b; Text( ); EndElement b; "
         "Element c xml:space{http://www.w3.org/XML/1998/namespace}=default; EndElement c; "
         "EndElement a"},
        {"<a> &#65;<b/>&lt; &gt;</a>", "Element a; Text( A); Element b; Text(< >); EndElement a"},
        {"<a>x<![CDATA[y&]]>z<!-- --><![CDATA[]]></a>",
         "Element a; Text(x); CDATA(y&); Text(z); Comment( ); CDATA; EndElement a"},
        {"<?xml version='1.0' encoding='utf8' standalone='no'?>\n<?t:p d ?><a/>",
         "XmlDeclaration version=1.0 encoding=utf8 standalone=no; PI t:p( d ); Element a"},
        {bom + std::string("<?xml version='1.0'?><a/>"), "XmlDeclaration version=1.0; Element a"},
        {"<!DOCTYPE a [<!ENTITY b 'c'>]><a/><!DOCTYPE b>", "Element a"},
        {"<?p d?><a><?p?>x</a>", "PI p( d); Element a; PI p; Text(x); EndElement a"},
        {"<a> <!--c--></a>", "Element a; Comment(c); EndElement a"},
        // The first colon ends the prefix. A declaration applies to its whole element.
        {"<a p:b:c='1' xmlns:p='u'/>",
         "Element a p:b:c{u}=1 xmlns:p{http://www.w3.org/2000/xmlns/}=u"},
        {"<a b='x&#10;y\nz\r\n\t&apos;&quot;'/>", "Element a b=x\ny z  '\""},
        {"<a>\xE4\xB8\x80&#x4E00;&#128512;</a>",
         "Element a; Text(\xE4\xB8\x80\xE4\xB8\x80\xF0\x9F\x98\x80); EndElement a"},
    };
    for (const auto& [text, expected] : cases) {
        Document document(text);
        EXPECT_EQ(nodes(document.reader), expected) << text;
        EXPECT_EQ(document.reader.node_type(), XmlNodeType::End);
        EXPECT_EQ(error_of([&] { document.reader.read_next(); })->text().substr(0, 5), "[line");
    }
}

TEST(Reader, ReportsWhiteSpaceIfItIsNotSkipped) {
    const char* const outside =
        "Element a; ! Unexpected non-whitespace content encountered outside scope of elements";
    const Cases cases = {
        {" <a> <b/>\n<!-- --> x </a>\n",
         "Whitespace( ); Element a; Whitespace( ); Element b; Whitespace(\n); Comment( ); "
         "Text( x ); EndElement a; Whitespace(\n)"},
        {bom + std::string("\n\n<a/>"), "Whitespace(\n\n); Element a"},
        {"<a/>\n&amp;", outside},
        {"x<b/>", "! Unexpected non-whitespace content encountered"},
    };
    for (const auto& [text, expected] : cases) {
        Document document(text);
        document.reader.set_skip_whitespace(false);
        EXPECT_EQ(nodes(document.reader), expected) << text;
    }
    // Required: outside of the elements each chunk has the length of the first one.
    Document document("<a/>" + std::string(1018, ' ') + "\n\n<b/>");
    document.reader.set_skip_whitespace(false);
    EXPECT_TRUE(document.reader.next_element());
    EXPECT_TRUE(document.reader.read_next());
    EXPECT_EQ(document.reader.value(),
              std::string(1018, ' ') + std::string("\n\n\0", 3) + std::string(1015, ' '));
}

struct Failure {
    const char* function;
    std::vector<std::string_view> documents;
    const char* message = ""; ///< if it has parameters or is required to be odd
};

const Failure failures[] = {
    {"state_start", {"<![CDATA[x]]>", "&amp;", "&#65;", "\xC3\xA9<a/>", "abc", "\xEF\xBB\xBFx"}},
    {"state_content",
     {" <?xml version='1.0'?>", "<a><?xml version='1.0'?></a>", "<a><!DOCTYPE a></a>", "<a/>&amp;",
      "<a/>&#65;", "<a/>x"}},
    {"state_content", {"<a>"}, "Unexpected end of document; expecting closing tag for element 'a'"},
    // Required: the blank at the end.
    {"state_content",
     {"<a/><![CDATA[x]]>"},
     "Unexpected CDATA section outside scope of an element "},
    {"read_endtag", {"</a>", "<a/></a>"}, "Unexpected end tag: a"},
    {"read_endtag",
     {"<p:a xmlns:p='u' xmlns:q='u'></q:a>"},
     "End element name mismatch: Expecting='p:a', Found='q:a'"},
    {"read_xmldecl", {"<?xml?>", "<?xml encoding='UTF-8'?>", "<?xml version='1.1'?>"}},
    {"read_xmldecl",
     {"<?xml version='1.0' encoding='latin1'?>"},
     "Mismatched encodings. Expected: UTF-8 Found: latin1"},
    {"read_attributes", {"<a b='1' b='2'/>"}, "Duplicate attribute name: 'b'"},
    {"read_attributes", {"<a p:='1'/>"}, "Invalid attribute name: 'p:'"},
    {"read_starttag", {"<p:/>"}, "Invalid element name: 'p:'"},
    {"read_starttag", {"<a p:b='1'/>"}, "Undeclared namespace 'p' referenced by attribute 'p:b'"},
    {"read_starttag",
     {"<p:b/>", "<a xmlns:p='u'><b xmlns:p=''><p:b/></b></a>", "<a xmlns:q='u' q:p='v'><p:b/></a>",
      "<a xmlns:q='http://www.w3.org/2000/xmlns/' q:p='v'><p:b/></a>",
      "<r><a xmlns:p='u'/><p:b/></r>"},
     "Undeclared namespace 'p' referenced by element 'p:b'"},
    {"read_starttag",
     {"<a xml:space='keep'/>"},
     "Unexpected value of 'xml:space' attribute: \"keep\" expecting 'preserve' or 'default'"},
    // Required: the parameter has another name than the placeholder.
    {"eval_char_ref",
     {"<a>&#0;</a>", "<a>&#xD800;</a>", "<a>&#9999999999;</a>"},
     "Invalid character reference: '{@charReference}'"},
    {"resolve_entity_ref",
     {"<a b='&foo;'/>", "<a>x&foo;</a>"},
     "Unable to resolve entity reference 'foo'; no entity resolver specified"},
};

void read_all(qnxml::XmlReader& reader) {
    while (reader.read_next()) {
    }
}

TEST(Reader, FailsWithMessagePlaceAndCodeForGood) {
    for (const auto& [function, documents, message] : failures) {
        for (const std::string_view text : documents) {
            SCOPED_TRACE(text);
            Document document(text);
            qnxml::XmlReader& reader = document.reader;
            const qncore::ErrorInfoPtr error = error_of([&] { read_all(reader); });
            ASSERT_TRUE(error);
            EXPECT_THAT(error->text(), testing::StartsWith(qnxml::format_location(
                                           document.tokenizer.location(), message)));
            EXPECT_EQ(error->code(), qnxml::error::qnxml_reader);
            EXPECT_EQ(error->location().function.view(),
                      std::string("qnxml::XmlReader::") + function + "()");
            EXPECT_EQ(reader.node_type(), XmlNodeType::Error);
            EXPECT_THAT(failure_of([&] { reader.read_next(); }),
                        EndsWith("() Cannot continue after error"));
            const std::string broken = "() Value cannot be read after a parse error";
            EXPECT_THAT(failure_of([&] { reader.value(); }), EndsWith(broken));
            EXPECT_THAT(failure_of([&] { reader.value_stream().available(); }), EndsWith(broken));
        }
    }
    Document document("<a\n b/>");
    const qncore::ErrorInfoPtr error = error_of([&] { document.reader.read_next(); });
    EXPECT_EQ(error, document.tokenizer.last_error());
}

TEST(Reader, RefusesTokensThatDoNotFit) {
    using T = qnxml::XmlTokenType;
    const std::pair<const char*, std::vector<qnxml_test::ScriptedToken>> cases[] = {
        {"state_start", {T::PIEnd}},
        {"state_content", {T::StartTagStart, T::StartTagEnd, T::CommentEnd}},
        {"discard_chardata", {T::CommentStart, T::PIEnd}},
        {"read_xmldecl", {T::XmldeclStart, T::StartTagEnd}},
        {"read_attributes", {T::StartTagStart, T::AttributeStart, T::PIEnd}},
        {"fetch_token", {T::Error}}, // without a record
    };
    for (const auto& [function, script] : cases) {
        qnxml_test::ScriptedTokenizer tokenizer(script);
        qnxml::XmlReader reader(&tokenizer);
        std::ostringstream expected;
        expected << "error.qnxml.reader.unexpected.token qnxml::XmlReader::" << function
                 << "() Unexpected tokenizer token: " << script.back().type;
        EXPECT_EQ(failure_of([&] { read_all(reader); }), expected.str());
    }
}

TEST(Reader, WalksTheChildrenOfAnElement) {
    Document document("<r> <s a='1'><deep><s/></deep>x</s><!-- --><e/>t<s/></r><z/>");
    qnxml::XmlReader& reader = document.reader;
    ASSERT_TRUE(reader.next_element());
    auto root = reader.current_element();
    std::string children;
    while (reader.next_child_element(root)) {
        auto child = reader.current_element();
        children += child->qualified_name();
        while (reader.next_child_element(child)) {
            children += "(" + reader.current_element()->qualified_name() + ")";
        }
    }
    EXPECT_EQ(children, "s(deep)es");
    EXPECT_FALSE(reader.next_child_element(root));
    EXPECT_TRUE(reader.skip_to_element_end(root));

    qnxml::XmlReader::ElementPtr current;
    EXPECT_FALSE(reader.next_child_element(current));
    EXPECT_EQ(current, root);
    EXPECT_TRUE(reader.next_element());
    EXPECT_FALSE(reader.next_child_element(root));
    EXPECT_FALSE(reader.skip_to_element_end(root));
    EXPECT_FALSE(reader.read_next());
    EXPECT_EQ(reader.current_element()->kind(), qnxml::XmlElementKind::null);
}

TEST(Reader, SkipsAndFindsElements) {
    Document document("<r xmlns='u'><a><b/></a><c xmlns='v'/><b/>"
                      "<p:b xmlns:p='v'/></r>");
    qnxml::XmlReader& reader = document.reader;
    qnxml::XmlReader::ElementPtr none;
    EXPECT_FALSE(reader.skip_to_element_end(none));
    EXPECT_TRUE(reader.next_child_element(none));
    EXPECT_FALSE(none);
    EXPECT_TRUE(reader.next_element_named("a"));
    reader.skip_current_element();
    EXPECT_EQ(reader.node_type(), XmlNodeType::EndElement);
    EXPECT_TRUE(reader.next_element_named("v", "c"));
    reader.skip_current_element();
    EXPECT_EQ(reader.node_type(), XmlNodeType::Element);
    EXPECT_TRUE(reader.next_element_named(qnxml::any_namespace, "b"));
    EXPECT_EQ(*reader.current_element()->namespace_name(), "u");
    EXPECT_TRUE(reader.next_element_named("v", ""));
    EXPECT_EQ(reader.current_element()->prefix(), "p");
    EXPECT_FALSE(reader.next_element_named("v", "b"));
}

TEST(Reader, ReadsTheTextOfAnElement) {
    const Cases cases = {
        {"<a> x <b>&lt;<c/></b><!-- n --><![CDATA[y]]><?n n?> z </a>", " x <y z "},
        {"<a> </a>", ""},
        {"<a/>", ""},
    };
    for (const auto& [text, expected] : cases) {
        Document document(text);
        EXPECT_EQ(document.reader.read_element_text(), "");
        ASSERT_TRUE(document.reader.next_element());
        EXPECT_EQ(document.reader.read_element_text(), expected) << text;
        EXPECT_EQ(document.reader.read_element_text(), "");
        EXPECT_FALSE(document.reader.read_next());
    }
    Document spaces("<a> <b> </b>\n</a>");
    spaces.reader.set_skip_whitespace(false);
    spaces.reader.next_element();
    EXPECT_EQ(spaces.reader.read_element_text(), "  \n");
}

TEST(Reader, ReportsUnexpectedElements) {
    const auto location = QN_LOCATION("somewhere()");
    const std::string head = "error.qnxml.reader.unexpected.element somewhere() Unexpected "
                             "element: ";
    Document plain("<?xml version='1.0' encoding='latin1'?><a/>");
    plain.reader.set_expected_encoding("");
    EXPECT_TRUE(plain.reader.next_element());
    EXPECT_EQ(failure_of([&] { plain.reader.throw_unexpected_element(location); }),
              head + "Name='a', Namespace=<>");
    EXPECT_EQ(plain.reader.node_type(), XmlNodeType::Error);
    Document named("<p:a xmlns:p='u'/>");
    named.reader.next_element();
    EXPECT_EQ(failure_of([&] { named.reader.throw_unexpected_element("v", "b", location); }),
              head + "Name='p:a', Namespace=<u>.  ExpectedLocalName='b', ExpectedNamespace=<v>");
}

TEST(Reader, PrintsUnknownNamesInDecimal) {
    std::ostringstream out;
    out << std::hex << static_cast<XmlNodeType>(23) << static_cast<qnxml::XmlTokenType>(23);
    EXPECT_EQ(out.str(), "##UNKNOWN(23)####UNKNOWN(23)##");
}

} // namespace
