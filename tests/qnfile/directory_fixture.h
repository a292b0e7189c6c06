#pragma once

#include <algorithm>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

#include "qnfile/directory_sequence.h"
#include "tests/support/temporary_directory.h"

namespace qnfile {

using Names = std::vector<std::string>;

/// A tree in a directory of the test's own, and walks through it.
class DirectoryFixture : public ::testing::Test {
  protected:
    /// Makes directories (names with "/" at the end) and files of one byte.
    void make(std::initializer_list<std::string_view> names) {
        for (const std::string_view name : names) {
            if (name.ends_with('/')) {
                std::filesystem::create_directories(path(name.substr(0, name.size() - 1)));
            } else {
                support::write_file(path(name), "x");
            }
        }
    }
    std::string path(std::string_view name) const { return directory_.file(name); }

    DirectorySequence sequence(std::string_view pattern, qncore::ErrorInfoPtr* error = nullptr,
                               std::string_view below = "") const {
        const std::string base = path(below);
        return {base.data(), base.size(), pattern.data(), pattern.size(), true, error};
    }

    /// The path inside the tree.
    std::string relative(const DirectoryEntry& entry) const {
        return entry.full_path().substr(base_.size());
    }
    /// The rest of a walk in its order, or until an error is in the slot.
    Names rest(DirectorySequence::iterator place, qncore::ErrorInfoPtr* error = nullptr) const {
        Names names;
        for (; place != DirectorySequence().end(); place.increment(error)) {
            names.push_back(relative(*place));
        }
        return names;
    }
    /// A whole walk, sorted, without "." and ".." unless they are asked for.
    Names walk(std::string_view pattern, bool dots = false) const {
        const DirectorySequence entries = sequence(pattern);
        Names names = rest(entries.begin());
        std::erase_if(names, [dots](const std::string& name) {
            return !dots &&
                   (name.ends_with("/.") || name.ends_with("/..") || name == "." || name == "..");
        });
        std::sort(names.begin(), names.end());
        return names;
    }

    support::TemporaryDirectory directory_;
    std::string base_ = directory_.path().generic_string() + "/";
};

} // namespace qnfile
