// References: components, resolution and its inverse, casts, order.
#include <sstream>
#include <unordered_set>

#include <gtest/gtest.h>

#include "qnuri/escaped_text.h"
#include "qnuri/parse.h"
#include "qnuri/uri.h"

namespace qnuri {
namespace {

UriReference reference(std::string_view text) {
    return UriReference::parse(text);
}

Uri uri(std::string_view text) {
    return Uri::parse(text);
}

static_assert(!std::is_assignable_v<Uri&, const UriReference&>);

std::string printed(const UriReference& shown) {
    std::ostringstream stream;
    stream << shown;
    return stream.str();
}

std::string components(const UriReference& whole) {
    std::string all;
    for (const UriStringSlice& part : {whole.scheme(), whole.scheme_specific_part(),
                                       whole.authority(), whole.path(), whole.query()}) {
        all.append(part.view()).append(" ^ ");
    }
    return all.append(whole.fragment().view());
}

TEST(UriReference, ReturnsItsComponents) {
    // The text without its fragment, the fragment, and the components without it: scheme, specific
    // part, authority, path, query. And whether it is hierarchical.
    const std::tuple<std::string, const char*, const char*, bool> cases[] = {
        {"gen://u@h/p?q", "#f", "gen ^ //u@h/p?q ^ u@h ^ /p ^ q ^ ", true},
        {"gen:/p?", "#", "gen ^ /p? ^  ^ /p ^  ^ ", true},
        {"gen:", "", "gen ^  ^  ^  ^  ^ ", true},
        {"sip:u@h;p?q", "", "sip ^ u@h;p?q ^ u@h ^ ;p ^ q ^ ", false},
        {"sip:/xu@h", "", "sip ^ /xu@h ^ u@h ^  ^  ^ ", true},
        {"mailto:/", "", "mailto ^ / ^  ^  ^  ^ ", true},
        {"//h", "", " ^ //h ^ h ^  ^  ^ ", true},
        {"p", "#f", " ^ p ^  ^ p ^  ^ ", true},
        {"", "#f", " ^  ^  ^  ^  ^ ", false},
        {"", "", " ^  ^  ^  ^  ^ ", false},
    };
    for (const auto& [text, fragment, expected, hierarchical] : cases) {
        const UriReference whole = reference(text + fragment);
        const UriReference cut = whole.without_fragment();
        EXPECT_EQ(components(whole), expected + whole.fragment().str());
        EXPECT_EQ(whole.is_hierarchical(), hierarchical) << text;
        EXPECT_EQ(cut.text(), text);
        EXPECT_EQ(components(cut), expected);
        EXPECT_EQ(cut.is_empty(), whole.is_empty());
        EXPECT_EQ(cut, whole);
        EXPECT_EQ(cut.record() == whole.record(), !whole.has_fragment());
        std::ostringstream traced;
        traced << whole.trace_data();
        EXPECT_EQ(traced.str(), text);
        EXPECT_EQ(printed(whole), text + fragment);
    }
    EXPECT_EQ(reference("gen:|#|").without_fragment().flags(),
              std::uint32_t{invalid_path | invalid_scheme_specific_part});
    const UriStringSlice kept = reference("gen:path").path();
    EXPECT_EQ(kept.view(), "path") << "a slice keeps its text alive";
}

TEST(UriReference, ComparesItsScheme) {
    const UriReference file = reference("FILE:x");
    EXPECT_TRUE(file.scheme_equals("file") && file.scheme_equals("File:", 4));
    for (const char* name : {"", "fil", "file:", "filf", static_cast<const char*>(nullptr)}) {
        EXPECT_FALSE(file.scheme_equals(name));
    }
    EXPECT_FALSE(reference(":x").scheme_equals("", 0));
}

TEST(UriReference, MayBeUndefined) {
    UriReference moved = reference("gen:x");
    EXPECT_EQ(UriReference(std::move(moved)).text(), "gen:x");
    // NOLINTNEXTLINE(bugprone-use-after-move): a moved-from reference is undefined
    for (const UriReference& none : {moved, UriReference::undefined(), UriReference(nullptr),
                                     UriReference(Uri()), UriReference(RelativeUri())}) {
        EXPECT_TRUE(none.is_undefined() && none.is_empty());
        EXPECT_EQ(none.text(), "");
        EXPECT_EQ(printed(none), "<undefined>");
        EXPECT_EQ(none.without_fragment().record(), UriReference::undefined().record());
        EXPECT_TRUE(none.directory().is_undefined());
    }
    EXPECT_EQ(printed(UriReference()), "");
}

/// A base, a reference and the result.
using Triple = std::tuple<const char*, const char*, std::string>;

TEST(Resolve, MergesPaths) {
    const Triple cases[] = {
        {"gen://h/a/b/c", "d#", "gen://h/a/b/d#"},
        {"gen://h/a/b/c?z", "?", "gen://h/a/b/?"},
        {"gen://h/a/b/c", "", "<undefined>"},
        {"gen://h/a/b/c", "#f", "<undefined>"},
        {"gen://h/../a/./b/c", "../d", "gen://h/../a/./d"}, // the base's own dots stay
        {"gen://h//", "../x", "gen://h/x"},
        {"gen://h/a/", "b/.../..x/.", "gen://h/a/b/.../..x/"},
        {"gen://h", "../d", "gen://h/../d"}, // without a "/" nothing is examined
        {"gen:", "c", "gen:/c"},
        {"gen:a", "c", "<undefined>"}, // not hierarchical
        {"file:///c:/a/b", "../../x", "<undefined>"},
        {"file:///c:/a/b", "//srv/x", "file://srv/x"},
        {"file:///c:", "x", "file:///x"},
        {"file://srv/share/a", "../b", "<undefined>"},
        {"tel:/1;a/b", "../c", "tel:///c"}, // its path begins with no "/"
    };
    for (const auto& [base, text, result] : cases) {
        EXPECT_EQ(printed(resolve(reference(text), uri(base))), result) << base << ' ' << text;
        // The member drops the fragment, unless it returns the reference itself.
        EXPECT_EQ(printed(uri(base).resolve(reference(text))), result.substr(0, result.find('#')));
    }
    EXPECT_EQ(printed(uri("gen:/a").resolve(reference("g:h#f"))), "g:h#f");
    const Uri base = uri("gen://h/a b/c");
    EXPECT_EQ(printed(resolve_text("d e", 3, base, true)), "gen://h/a b/d%20e");
    EXPECT_EQ(printed(resolve_text("d e", std::string::npos, base, false)), "gen://h/a b/d e");
    EXPECT_EQ(printed(uri("c:/a/b").resolve(reference("d#f"))), "file:///c:/a/d");
}

/// RFC 3986, 5.4.1 and 5.4.2, without the departures, which are in MergesPaths.
TEST(Resolve, FollowsTheExamplesOfTheRfc) {
    std::istringstream as_in_the_rfc(R"(
        g:h g:h   g http://a/b/c/g   ./g http://a/b/c/g   g/ http://a/b/c/g/   /g http://a/g
        //g http://g   g?y http://a/b/c/g?y   g#s http://a/b/c/g#s   g?y#s http://a/b/c/g?y#s
        ;x http://a/b/c/;x   g;x http://a/b/c/g;x   g;x?y#s http://a/b/c/g;x?y#s
        . http://a/b/c/   ./ http://a/b/c/   .. http://a/b/   ../ http://a/b/
        ../g http://a/b/g   ../.. http://a/   ../../ http://a/   ../../g http://a/g
        g. http://a/b/c/g.   .g http://a/b/c/.g   g.. http://a/b/c/g..   ..g http://a/b/c/..g
        ./../g http://a/b/g   ./g/. http://a/b/c/g/   g/./h http://a/b/c/g/h
        g/../h http://a/b/c/h   g;x=1/./y http://a/b/c/g;x=1/y   g;x=1/../y http://a/b/c/y
        g?y/./x http://a/b/c/g?y/./x   g?y/../x http://a/b/c/g?y/../x
        g#s/./x http://a/b/c/g#s/./x   g#s/../x http://a/b/c/g#s/../x   http:g http:g)");
    const Uri base = uri("http://a/b/c/d;p?q");
    for (std::string from, result; as_in_the_rfc >> from >> result;) {
        EXPECT_EQ(printed(resolve(reference(from), base)), result) << from;
    }
}

/// A cost that grew with the square of these sizes would take minutes.
TEST(Uri, GrowsLinearly) {
    std::string escaped = "gen:/";
    std::string up;
    std::string down = "gen://h/";
    for (int i = 0; i < 100'000; ++i) {
        escaped += "%%341";
        up += i % 2 == 0 ? "../" : "a/../";
        down += "a/";
    }
    EXPECT_EQ(reference(escaped).text().size(), 5 + 100'000 * 3);
    EXPECT_EQ(resolve(reference(up), uri(down)).text().size(), 8 + 50'000 * 2);
    EXPECT_EQ(uri("gen://h/").relative_to(uri(down)).text().size(), 100'000 * 3);
}

TEST(RelativeTo, LeadsFromTheBase) {
    const Triple cases[] = {
        {"gen://h/a/c/g", "gen://h/a/b/f?q", "../b/f?q"},
        {"gen://h/a/b", "gen://h/a/c?q#f", "c?q#f"},
        {"gen://h/a/b/c/d", "gen://h/a/", "../../"},
        {"gen://h/x", "gen://h", ""},
        {"gen://h", "gen://h/a/f", "/a/f"},
        {"gen://h/a/x", "gen://h/ab/y", "/y"}, // required, although it leads elsewhere
        {"gen://h/a//x", "gen://h/a/y", "y"},  // likewise
        {"gen://h/a", "gen://h/b:c", "b:c"},   // likewise: the result has a scheme
        {"gen://h/a", "gen://k/a", "gen://k/a"},
        {"gen://h/a", "b/c", "b/c"},
        {"gen://h/a", "", "<undefined>"},
        {"gen://h/a", "gen:a", "<undefined>"},
        {"", "gen://h/a", "<undefined>"},
        {"file:///c:/y", "file:///d:/x", "file:///d:/x"},
    };
    for (const auto& [base, text, result] : cases) {
        EXPECT_EQ(printed(reference(text).relative_to(uri(base))), result);
    }
}

TEST(Directory, EndsWithTheLastSlash) {
    constexpr std::pair<const char*, const char*> cases[] = {
        {"gen://h/a/b?q#f", "gen://h/a/"}, {"gen://h?q", "gen://h"}, {"gen:/a/b/", "gen:/a/b/"},
        {"gen:///a/b", "gen:///a/"},       {"gen:", "gen:"},         {"c:/a/b", "file:///c:/a/"},
        {"gen:a/b", "<undefined>"},        {"#f", "<undefined>"},    {"a/b", ":a/"}, // required
    };
    for (const auto& [text, directory] : cases) {
        EXPECT_EQ(printed(reference(text).directory()), directory) << text;
    }
}

TEST(Casts, SeparateUrisFromRelativeReferences) {
    constexpr std::tuple<const char*, bool, bool> cases[] = {
        // Absolute or relative.
        {"x/y", false, true}, {"//h", false, true},    {"?q", false, true}, {"a:b", true, false},
        {"", false, false},   {"gen:#f", true, false}, {":", true, false},  {"#f", false, false},
    };
    for (const auto& [text, absolute, relative] : cases) {
        const UriReference from = reference(text);
        EXPECT_EQ(to_uri(from).is_undefined(), !absolute) << text;
        EXPECT_EQ(to_relative(from).is_undefined(), !relative) << text;
        EXPECT_TRUE(!absolute || to_uri(from).record() == from.record());
        try {
            EXPECT_EQ(RelativeUri::cast_from(from).record(), from.record());
            EXPECT_TRUE(relative) << text;
        } catch (const impl::BadUriCast& error) {
            EXPECT_FALSE(relative) << text;
            EXPECT_STREQ(error.cast(), "qnuri::RelativeUri::cast_from");
        }
    }
}

TEST(Order, IgnoresTheCaseOfEscapesAndTheFragment) {
    constexpr std::tuple<std::string_view, std::string_view, int> cases[] = {
        {"a%2Fb", "a%2fb", 0},       {"a%2Fb", "a%2eb", 1}, {"a%2", "a%2F", -1},
        {"%AbC", "%aBc", 'C' - 'c'}, // the third character is ordinary
        {"%%AA", "%%aa", 'A' - 'a'}, // a % among the digits begins no escape
        {"%GA", "%gA", 'G' - 'g'},   {"A", "a", 'A' - 'a'}, {"", "abc", -3},
        {"\x80", "a", -128 - 'a'},   {"", "", 0},
    };
    for (const auto& [left, right, order] : cases) {
        EXPECT_EQ(compare_escaped(left.data(), left.size(), right.data(), right.size()), order);
        EXPECT_EQ(compare_escaped(right.data(), right.size(), left.data(), left.size()), -order);
        EXPECT_EQ(hash_escaped(left.data(), left.size()) ==
                      hash_escaped(right.data(), right.size()),
                  order == 0);
    }
    EXPECT_EQ(hash_escaped("a%2F", 4), ((97U * 5 + 37) * 5 + 50) * 5 + 102);
    EXPECT_EQ(hash_escaped("\xFF", 1), 255U);
    EXPECT_LT(reference("gen:/a#z"), reference("gen:/b"));
    EXPECT_NE(reference("gen:/a").hash(), reference("gen:/b").hash());
    const std::unordered_set<UriReference> set{reference("gen:/%2F#a"), reference("gen:/%2f#b")};
    EXPECT_EQ(set.size(), 1);
}

} // namespace
} // namespace qnuri
