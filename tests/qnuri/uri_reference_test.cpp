#include <sstream>

#include <gtest/gtest.h>

#include "qnuri/uri_reference.h"

namespace qnuri {
namespace {

std::string traced(const UriReference& uri) {
    std::ostringstream stream;
    stream << uri.trace_data();
    return stream.str();
}

/// The record of `gen:path#f`, or of `gen:path` without a fragment.
UriReference record(bool fragment) {
    auto made = qncore::make_ref_counted<impl::UriParseData>();
    made->text = fragment ? "gen:path#f" : "gen:path";
    made->scheme = {0, 4};
    made->schemeSpecificPart = {4, 4};
    made->path = {4, 4};
    made->fragment = {8, fragment ? std::size_t{2} : 0};
    return UriReference(made);
}

TEST(UriReference, EmptyAndUndefinedAreDifferentAndShared) {
    EXPECT_TRUE(UriReference().is_empty());
    EXPECT_FALSE(UriReference().is_undefined());
    EXPECT_EQ(UriReference().text(), "");
    EXPECT_TRUE(UriReference::undefined().is_empty());
    EXPECT_TRUE(UriReference::undefined().is_undefined());
    EXPECT_TRUE(UriReference(nullptr).is_undefined());
    EXPECT_EQ(impl::UriParseData::empty_record(), impl::UriParseData::empty_record());
    EXPECT_EQ(traced(UriReference()), "");
}

TEST(UriReference, ATraceShowsTheTextWithoutItsFragment) {
    EXPECT_EQ(traced(record(false)), "gen:path");
    EXPECT_EQ(traced(record(true)), "gen:path");
    EXPECT_EQ(record(true).text(), "gen:path#f");
    EXPECT_FALSE(record(true).is_empty());
}

} // namespace
} // namespace qnuri
