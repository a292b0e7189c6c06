// Detection of XML and its encoding by the first bytes, and names of encodings.
#include <cstring>

#include <gtest/gtest.h>

#include "qnxml/check_xml.h"
#include "qnxml/encoding_names.h"
#include "qnxml/errors.h"
#include "tests/qnxml/documents.h"

namespace {

using namespace std::string_literals;

/// The mark and an ASCII text in code units of `unit_size` bytes, with blanks up to the least size.
std::string block(std::size_t unit_size, std::size_t low_byte, const std::string& mark,
                  const std::string& text) {
    std::string bytes = mark;
    for (std::size_t i = 0; i < text.size() || bytes.size() < 32; ++i) {
        std::string unit(unit_size, '\0');
        unit[low_byte] = i < text.size() ? text[i] : ' ';
        bytes += unit;
    }
    return bytes;
}

std::string utf8(const std::string& text) {
    return block(1, 0, "", text);
}

std::string declaration(const std::string& encoding) {
    return "<?xml version=\"1.0\" encoding='" + encoding + "'?><root/>";
}

/// "+" or "-" for the result, "?" for a declaration, and the encoding; "! " and an error's text.
std::string check(const std::string& bytes) {
    const std::vector<char> data(bytes.begin(), bytes.end()); // exactly: for the sanitizers
    bool passes = false;
    bool declared = true;
    std::string encoding = "untouched";
    const qncore::ErrorInfoPtr error = qnxml_test::error_of(
        [&] { passes = qnxml::check_xml(data.data(), data.size(), &declared, &encoding); });
    if (error) {
        return "! " + (error->code() == qnxml::error::qnxml ? error->text()
                                                            : std::string(error->code().path()));
    }
    return (passes ? "+" : "-") + std::string(declared ? "?" : "") + " " + encoding;
}

TEST(CheckXml, DetectsXmlAndItsEncoding) {
    const std::pair<std::string, std::string> cases[] = {
        {std::string(31, '<'), "-? untouched"},
        {std::string(32, '<'), "+ UTF-8"},
        {block(4, 3, "", "<root/>"), "+ UCS-4BE"},
        // Two units are needed to recognise UTF-16, four for UCS-4.
        {"<\0a\0"s + std::string(28, 'x'), "+ UTF-16"},
        {"<\0"s + std::string(30, 'x'), "+ UTF-8"},
        {"\0<\0a"s + std::string(28, 'x'), "+ UTF-16BE"},
        {"<\0\0\0a\0\0\0b\0\0\0c\0\0\0"s + std::string(16, 'x'), "+ UCS-4"},
        {"<\0\0\0a\0\0\0b\0\0\0"s + std::string(20, 'x'), "+ UTF-8"},
        // The mark and the units differ. The usual mark of UCS-4 is one of UTF-16.
        {block(2, 1, "\xFF\xFE", "<root/>"), "- untouched"},
        {block(2, 0, "\xEF\xBB\xBF", "<root/>"), "- untouched"},
        {block(4, 0, "\xFF\xFE\0\0"s, "<root/>"), "- UTF-16"},
        // What is a declaration.
        {utf8("<?xml-stylesheet encoding='x'?>"), "+ UTF-8"},
        {utf8("<?xml\tencoding\r\n =\t'x' ?>"), "+? x"},
        {utf8("<?xml\rencoding=\"it's\"?>"), "+? it's"},
        {utf8("<?xml\nversion='1.0'?>"), "+? UTF-8"},
        // Only the declaration counts, and in it the first "encoding" anywhere.
        {utf8("<?xml version='1.0'?><a encoding='x'/>"), "+? UTF-8"},
        {utf8("<?xml a='encoding' encoding='x'?>"), "+? UTF-8"},
        {utf8("<?xml a=' encoding=\"y\" ' encoding='x'?>"), "+? y"},
        {utf8("<?xml encoding='x\"?>'"), "+? UTF-8"},
        {utf8("<?xml version='1.0' encoding"), "+? UTF-8"},
        {utf8("<?xml version='1.0' encoding='x'"), "+? x"}, // no end: up to the last byte
        {utf8(declaration("utf\0008"s)), "+? utf\0008"s},   // nothing recognised: any name
        {block(1, 0, "\xEF\xBB\xBF", declaration("utf\0008"s)), "! error.qncore.embeddedNul"},
        {block(2, 1, "", declaration("UTF-16")),
         "! XML has mismatched encoding. Input appears to be UTF-16BE, but xml declaration claims "
         "it is UTF-16"},
    };
    for (const auto& [bytes, expected] : cases) {
        EXPECT_EQ(check(bytes), expected) << testing::PrintToString(bytes);
    }
}

TEST(CheckXml, ComparesADeclaredNameWithTheEncodingRecognised) {
    // Bytes of a unit, its low byte, the mark, and names, the last one of another encoding.
    const std::tuple<std::size_t, std::size_t, std::string, std::vector<std::string>> families[] = {
        {1, 0, "\xEF\xBB\xBF", {"utf8", "utf16"}},
        {2, 0, "\xFF\xFE", {"utf16", "utf-16LE", "ucs2", "UCS-2LE", "ISO-10646-UCS-2", "utf-16be"}},
        {2, 1, "\xFE\xFF", {"UTF-16BE", "ucs2be", "ucs2"}},
        {4, 0, "\0\0\xFF\xFE"s, {"UTF-32", "utf32le", "UCS-4", "ucs4le", "ISO-10646-UCS-4", "ucs"}},
        {4, 3, "\xFE\xFF\0\0"s, {"UTF-32BE", "ucs4be", "ucs-4"}},
    };
    for (const auto& [unit_size, low_byte, mark, names] : families) {
        for (const std::string& name : names) {
            EXPECT_EQ(check(block(unit_size, low_byte, mark, declaration(name))) == "+? " + name,
                      name != names.back())
                << name;
        }
    }
}

TEST(EncodingNames, AreComparedLoosely) {
    const std::tuple<const char*, const char*, bool> cases[] = {
        {"", "", true},
        {"UTF-8", "utf8", true},
        {"utf-0008", "UTF_8", true},
        {"iso-8859-1", "ISO-8859-01", true},
        {"x-100", "x_1-00", true},
        {"utf-80", "utf-8", true}, // required: an equal "8" begins no number
        {"utf10", "utf1", true},
        {"", "a", false},
        {"utf-8", "utf-16", false},
        {"x-20", "x.2a", false},
        {"utf_10", "utf-1", false},           // different bytes before a number begin one
        {"iso-8859-1", "ISO_8859-01", false}, // required: an equal "-" ends no number
    };
    for (const auto& [left, right, equal] : cases) {
        const std::size_t sizes[] = {std::strlen(left), std::strlen(right)};
        EXPECT_EQ(qnxml::encoding_names_equal(left, sizes[0], right, sizes[1]), equal) << left;
        EXPECT_EQ(qnxml::encoding_names_equal(right, sizes[1], left, sizes[0]), equal) << left;
    }
}

} // namespace
