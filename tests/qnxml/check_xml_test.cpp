// Telling XML and its encoding from the first bytes.
#include <gtest/gtest.h>

#include "qnxml/check_xml.h"
#include "qnxml/errors.h"
#include "tests/qnxml/documents.h"
#include "tests/support/exact_buffer.h"

namespace {

using namespace std::string_literals;

/// A form of code units: how many bytes, and which is the low one.
struct Form {
    std::size_t unit;
    std::size_t low_byte;
};

constexpr Form utf8{1, 0};
constexpr Form utf16{2, 0};
constexpr Form utf16be{2, 1};
constexpr Form ucs4{4, 0};
constexpr Form ucs4be{4, 3};

/// The mark and the ASCII text in a form, and blanks up to the least size.
std::string block(const Form& form, const std::string& mark, const std::string& text) {
    std::string bytes = mark;
    for (std::size_t i = 0; i < text.size() || bytes.size() < 32; ++i) {
        std::string unit(form.unit, '\0');
        unit[form.low_byte] = i < text.size() ? text[i] : ' ';
        bytes += unit;
    }
    return bytes;
}

std::string declaration(const std::string& attributes) {
    return "<?xml version=\"1.0\" " + attributes + "?><root/>";
}

/// "+" or "-" for the result, "?" for a declaration, and the encoding; "! " and an error's text.
std::string check(const std::string& bytes) {
    const support::ExactBuffer data(bytes);
    bool passes = false;
    bool declared = true;
    std::string encoding = "untouched";
    const qncore::ErrorInfoPtr error = qnxml_test::error_of(
        [&] { passes = qnxml::check_xml(data.data(), data.size(), &declared, &encoding); });
    if (error) {
        EXPECT_EQ(error->location().function.view(), "qnxml::check_xml()");
        EXPECT_EQ(error->code(), qnxml::error::qnxml);
        return "! " + error->text();
    }
    return (passes ? "+" : "-") + std::string(declared ? "?" : "") + " " + encoding;
}

TEST(CheckXml, TellsXmlAndItsEncoding) {
    const struct {
        std::string bytes;
        const char* expected;
    } cases[] = {
        {"", "-? untouched"},
        {std::string(31, '<'), "-? untouched"},
        {std::string(32, '<'), "+ UTF-8"},
        {block(utf8, "", "hello"), "- UTF-8"},
        {block(utf8, "", " <root/>"), "- UTF-8"},
        {block(utf8, "", "<root/>"), "+ UTF-8"},
        // The mark and the zero bytes, both and the latter alone.
        {block(utf16, "\xFF\xFE", "<root/>"), "+ UTF-16"},
        {block(utf16be, "", "<root/>"), "+ UTF-16BE"},
        {block(ucs4be, "", "<root/>"), "+ UCS-4BE"},
        // Two units tell UTF-16, four UCS-4; less than that tells nothing.
        {"<\0a\0"s + std::string(28, 'x'), "+ UTF-16"},
        {"<\0"s + std::string(30, 'x'), "+ UTF-8"},
        {"\0<\0a"s + std::string(28, 'x'), "+ UTF-16BE"},
        {"<\0\0\0a\0\0\0b\0\0\0c\0\0\0"s + std::string(16, 'x'), "+ UCS-4"},
        {"<\0\0\0a\0\0\0b\0\0\0"s + std::string(20, 'x'), "+ UTF-8"},
        // They disagree; the usual mark of UCS-4 is one of UTF-16.
        {block(utf16be, "\xFF\xFE", "<root/>"), "- untouched"},
        {block(utf16, "\xEF\xBB\xBF", "<root/>"), "- untouched"},
        {block(ucs4, "\xFF\xFE\0\0"s, "<root/>"), "- UTF-16"},
        // Any character but "<".
        {block(utf16be, "", "hello"), "- UTF-16BE"},
        // What is a declaration.
        {block(utf8, "", "<?xml ?>"), "+? UTF-8"},
        {block(utf8, "", "<?xml-stylesheet encoding='x'?>"), "+ UTF-8"},
        {block(utf8, "", "<?xml\tencoding\r\n =\t'x' ?>"), "+? x"},
        {block(utf8, "", "<?xml\rencoding=\"it's\"?>"), "+? it's"},
        {block(utf8, "", "<?xml\nversion='1.0'?>"), "+? UTF-8"},
        // The name counts in the declaration alone, once; the word counts wherever it stands.
        {block(utf8, "", "<?xml version='1.0'?><a encoding='x'/>"), "+? UTF-8"},
        {block(utf8, "", "<?xml a='encoding' encoding='x'?>"), "+? UTF-8"},
        {block(utf8, "", "<?xml a=' encoding=\"y\" ' encoding='x'?>"), "+? y"},
        {block(utf8, "", "<?xml encoding=x?>"), "+? UTF-8"},
        {block(utf8, "", "<?xml encoding='x\"?>'"), "+? UTF-8"},
        {block(utf8, "", "<?xml version='1.0' encoding"), "+? UTF-8"},
        {block(utf8, "", "<?xml version='1.0' encoding='x'"),
         "+? x"}, // no end: up to the last byte
        // Nothing recognised: any name, as it stands.
        {block(utf8, "", declaration("encoding=\"UTF-8\"")), "+? UTF-8"},
        {block(utf8, "", declaration("encoding=\"Shift_JIS\"")), "+? Shift_JIS"},
        {block(utf8, "", declaration("encoding='UTF-16'")), "+? UTF-16"},
        {block(utf8, "", declaration("encoding=''")), "+? "},
        {block(utf16be, "", declaration("encoding='UTF-16'")),
         "! XML has mismatched encoding. Input appears to be UTF-16BE, but xml declaration claims "
         "it is UTF-16"},
        {block(utf16, "\xFF\xFE", declaration("encoding='UTF-8'")),
         "! XML has mismatched encoding. Input appears to be UTF-16, but xml declaration claims it "
         "is UTF-8"},
        {block(utf8, "\xEF\xBB\xBF", declaration("encoding=''")),
         "! XML has mismatched encoding. Input appears to be UTF-8, but xml declaration claims it "
         "is "},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(check(test.bytes), test.expected) << testing::PrintToString(test.bytes);
    }
}

TEST(CheckXml, ComparesADeclaredNameWithTheEncodingRecognised) {
    const struct {
        Form form;
        std::string mark;
        std::vector<std::string> names;
        const char* other;
    } families[] = {
        {utf8, "\xEF\xBB\xBF", {"utf8"}, "utf16"},
        {utf16,
         "\xFF\xFE",
         {"utf16", "utf-16LE", "ucs2", "UCS-2LE", "ISO-10646-UCS-2"},
         "utf-16be"},
        {utf16be, "\xFE\xFF", {"UTF-16BE", "ucs2be"}, "ucs2"},
        {ucs4,
         "\0\0\xFF\xFE"s,
         {"UTF-32", "utf32le", "UCS-4", "ucs4le", "ISO-10646-UCS-4"},
         "ucs2"},
        {ucs4be, "\xFE\xFF\0\0"s, {"UTF-32BE", "ucs4be"}, "ucs-4"},
    };
    for (const auto& family : families) {
        const auto declared = [&](const std::string& name) {
            return check(block(family.form, family.mark, declaration("encoding='" + name + "'")));
        };
        for (const std::string& name : family.names) {
            EXPECT_EQ(declared(name), "+? " + name);
        }
        EXPECT_TRUE(declared(family.other).starts_with("! ")) << family.other;
    }
}

TEST(CheckXml, RefusesAZeroInTheDeclaredName) {
    const std::string name = declaration("encoding=\"utf\0008\""s);
    const std::string marked = block(utf8, "\xEF\xBB\xBF", name);
    const auto error = qnxml_test::error_of(
        [&] { qnxml::check_xml(marked.data(), marked.size(), nullptr, nullptr); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), qncore::error::qncore_embeddedNul);
    EXPECT_EQ(check(block(utf8, "", name)), "+? utf\0008"s); // nothing recognised
}

} // namespace
