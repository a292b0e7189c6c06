#pragma once

#include <algorithm>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

#include "platform/testing/testing.h"
#include "qnfile/directory_sequence.h"
#include "qnuri/parse.h"
#include "tests/support/failure.h"
#include "tests/support/temporary_directory.h"

namespace qnfile {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;
using platform::Call;
using qncore::ErrorInfoPtr;
using support::error_of;

inline qnuri::UriReference uri_of(const std::string& text) {
    return qnuri::UriReference(qnuri::parse_uri_reference(text.data(), text.size(), false));
}

/// The code of what an action throws; empty if it throws nothing.
template <class Action>
std::string code_of(const Action& action) {
    const ErrorInfoPtr error = error_of(action);
    return error ? std::string(error->code().path()) : "";
}

/// A directory of the test's own, and walks through it. A test may change the current directory.
class FileFixture : public ::testing::Test {
  protected:
    ~FileFixture() override { fs::current_path(previous_); }

    /// Makes directories (names with "/" at the end) and files of one byte.
    void make(std::initializer_list<std::string_view> names) const {
        for (const std::string_view name : names) {
            if (name.ends_with('/')) {
                fs::create_directories(path(name.substr(0, name.size() - 1)));
            } else {
                support::write_file(path(name), "x");
            }
        }
    }
    std::string path(std::string_view name) const { return directory_.file(name); }

    DirectorySequence sequence(std::string_view pattern, ErrorInfoPtr* error = nullptr,
                               std::string_view below = "") const {
        const std::string base = path(below);
        return {base.data(), base.size(), pattern.data(), pattern.size(), true, error};
    }
    /// The path inside the tree.
    std::string relative(const DirectoryEntry& entry) const {
        return entry.full_path().substr(base_.size());
    }
    /// The rest of a walk in its order, or until an error is in the slot.
    Names rest(DirectorySequence::iterator place, ErrorInfoPtr* error = nullptr) const {
        Names names;
        for (; place != DirectorySequence().end(); place.increment(error)) {
            names.push_back(relative(*place));
        }
        return names;
    }
    /// A whole walk, sorted, without "." and "..".
    Names walk(std::string_view pattern) const {
        Names names = rest(sequence(pattern).begin());
        std::erase_if(names, [](const std::string& name) {
            return name.ends_with("/.") || name.ends_with("/..") || name == "." || name == "..";
        });
        std::sort(names.begin(), names.end());
        return names;
    }

    support::TemporaryDirectory directory_;
    std::string base_ = directory_.path().generic_string() + "/";
    std::string file_ = path("file");
    std::string missing_ = path("missing");
    fs::path previous_ = fs::current_path();
};

} // namespace qnfile
