// Elements and attributes: names, namespaces, lookups, lifetime.
#include <gmock/gmock.h>

#include "tests/qnxml/documents.h"

namespace {

using qnxml::XmlAttribute;
using qnxml::XmlReader;
using qnxml_test::Document;

XmlReader::ElementPtr element_named(XmlReader& reader, std::string_view name) {
    EXPECT_TRUE(reader.next_element_named(name));
    return reader.current_element();
}

std::string value_of(const XmlAttribute* attribute) {
    return attribute != nullptr ? attribute->value() : "none";
}

TEST(Element, HasItsNamesAndAttributes) {
    Document document(
        "<p:a p:x='1' x=\"2\" q:x='3' xmlns:p='u' xmlns:q='u' xmlns='d' xml:lang='en'>"
        "<b:c:d xmlns:b='v'/></p:a>");
    const auto element = element_named(document.reader, "p:a");
    const auto inner = element_named(document.reader, "b:c:d");
    EXPECT_EQ(std::string(element->prefix()) + "|" + std::string(element->local_name()) + "|" +
                  *element->namespace_name() + "|" + *element->default_namespace() + "|" +
                  std::string(inner->local_name()),
              "p|a|u|d|c:d");
    EXPECT_EQ(inner->parent(), element);
    EXPECT_EQ(inner->kind(), qnxml::XmlElementKind::empty);
    const auto attributes = element->attributes();
    EXPECT_EQ(attributes[0].quote(), '\'');
    EXPECT_EQ(attributes[1].quote(), '"');
    EXPECT_TRUE(attributes[6].is_xml_namespace());
    EXPECT_FALSE(attributes[1].is_xml_namespace());
    const std::pair<const XmlAttribute*, const char*> found[] = {
        {element->find_attribute("x"), "2"},
        {element->find_attribute("q:x"), "3"},
        {element->find_attribute("u", "x"), "1"},
        {element->find_attribute("", "x"), "2"},
        {element->find_attribute(qnxml::any_namespace, "x"), "1"},
        {element->find_attribute("v", "x"), "none"},
        {element->find_attribute(qnxml::xmlns_namespace(), "q"), "u"},
        {inner->find_attribute_inherited("x"), "2"},
        {inner->find_attribute_inherited("u", "x"), "1"},
        {inner->find_xml_attribute_inherited("lang"), "en"},
        {inner->find_xml_attribute_inherited("space"), "none"},
    };
    for (const auto& [attribute, value] : found) {
        EXPECT_EQ(value_of(attribute), value);
    }
}

TEST(Element, FindsTheInnermostNamespace) {
    Document document("<a xmlns='1' xmlns:p='2'><b xmlns='' p:x=''><c xmlns:q='3'>"
                      "<p:d/><e xmlns='4' xmlns:p='5'><p:f/><g/></e></c></b><h/></a>"
                      "<xml:i/><xmlns:j/><k/>");
    std::string found;
    while (document.reader.next_element()) {
        const auto element = document.reader.current_element();
        const std::string* const space = element->namespace_name();
        found += element->qualified_name() + "=" + (space != nullptr ? *space : "none") + " ";
    }
    EXPECT_EQ(found, "a=1 b= c= p:d=2 e=4 p:f=5 g=4 h=1 xml:i=" + qnxml::xml_namespace() +
                         " xmlns:j=" + qnxml::xmlns_namespace() + " k=none ");
}

TEST(Element, OutlivesItsReader) {
    XmlReader::ElementPtr kept;
    XmlReader::ElementPtr root;
    {
        Document document("<r xmlns='u' long='" + std::string(100, 'v') +
                          "'><k a='1'/><x/><y><z/></y></r><r2/>");
        root = element_named(document.reader, "r");
        kept = element_named(document.reader, "k");
        while (document.reader.next_element()) {
            EXPECT_NE(document.reader.current_element(), kept);
        }
    }
    root.reset();
    EXPECT_EQ(kept->qualified_name(), "k");
    EXPECT_EQ(value_of(kept->find_attribute("a")), "1");
    EXPECT_EQ(*kept->namespace_name(), "u");
    EXPECT_EQ(value_of(kept->find_attribute_inherited("long")), std::string(100, 'v'));
}

TEST(Element, IsCleanWhenUsedAgain) {
    // The test holds no element, so each one is used again.
    Document document("<r><p:a xmlns:p='u' xmlns='d' xml:space='preserve' b='1'/><c> </c>"
                      "<p:a xmlns:p='u'/><?p:q?><p:q xmlns:p='u' b='2'/><d c='1' b='2'/></r>");
    element_named(document.reader, "p:a");
    EXPECT_EQ(element_named(document.reader, "c")->space(), qnxml::XmlSpace::not_set);
    EXPECT_EQ(document.reader.current_element()->default_namespace(), nullptr);
    EXPECT_EQ(qnxml_test::nodes(document.reader),
              "EndElement c; Element p:a{u} xmlns:p{http://www.w3.org/2000/xmlns/}=u; PI p:q; "
              "Element p:q{u} xmlns:p{http://www.w3.org/2000/xmlns/}=u b=2; Element d c=1 b=2; "
              "EndElement r");
    // Names that remain from the element before are no duplicates, and do not hide any.
    Document names("<r><a b='' c='' d=''/><a c=''/><a c='' b='' d=''/><a b=''/><a b='' b=''/></r>");
    EXPECT_TRUE(qnxml_test::nodes(names.reader).ends_with("! Duplicate attribute name: 'b'"));
}

TEST(Element, MayHaveMoreAttributesThanRoom) {
    std::string text = "<r><a";
    for (int i = 0; i < 300; ++i) {
        text += " n" + std::to_string(i) + "='" + std::to_string(i) + "' p:n" + std::to_string(i) +
                "='x'";
    }
    const std::string tag = text.substr(3) + " xmlns:p='u'/>";
    Document document("<r>" + tag + tag + "<a n='1'/></r>");
    for (int use = 0; use < 2; ++use) {
        const auto element = element_named(document.reader, "a");
        EXPECT_EQ(element->attributes().size(), 601U);
        EXPECT_EQ(value_of(element->find_attribute("n299")), "299");
        EXPECT_EQ(value_of(element->find_attribute("u", "n0")), "x");
    }
    EXPECT_EQ(element_named(document.reader, "a")->attributes().size(), 1U);

    for (const char* duplicate : {"n0", "p:n31", "n32", "p:n299", "xmlns:p"}) {
        Document refused(text + " xmlns:p='u' " + duplicate + "='1'/>");
        EXPECT_THAT(
            qnxml_test::failure_of([&] { element_named(refused.reader, "a"); }),
            testing::EndsWith("Duplicate attribute name: '" + std::string(duplicate) + "'"));
    }
}

} // namespace
