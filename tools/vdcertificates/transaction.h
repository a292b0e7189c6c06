#pragma once

#include <array>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "tools/vdcertificates/store.h"

namespace tool {

/// The entries of the whole file. All passwords are wiped when the object is destroyed.
class Contents {
  public:
    using Section = vdcertificates::ConfigurationFileNodes;
    using Node = vdcertificates::CertificateNode;

    Contents() = default;
    Contents(const Contents&) = delete;
    Contents& operator=(const Contents&) = delete;
    ~Contents();

    void add(Entry&& entry);

    Section& section(const std::string& name);
    const std::array<Section, 3>& sections() const noexcept { return sections_; }

    /// The entry that a search finds, or null. `server` becomes the stored spelling.
    const Node* find(const Role& role, std::string& server);

    /// Stores an entry in place of all that a search might find (Entry::section says where).
    void place(Entry&& entry);

    /// Removes every entry of that role under every spelling of the server; returns how many.
    std::size_t remove(const Role& role, const std::string& server);

    /// Calls back for each entry, in the order of the file.
    using Visitor =
        std::function<void(const std::string& section, const std::string* server, const Node&)>;
    void for_each(const Visitor& visit) const;

  private:
    std::array<Section, 3> sections_; ///< in the order of the file
};

/// One change of the file. Reads it under the lock and refuses to go on when the change would drop
/// something that it cannot read. commit() keeps the former content beside the file, writes, reads
/// again, and puts the former content back when anything is missing. No signal cuts it short.
class Transaction {
  public:
    /// Throws Failure. With `discardUnreadable` what cannot be read is dropped.
    explicit Transaction(bool discardUnreadable);

    Contents& contents() noexcept { return contents_; }
    void commit();

  private:
    void read();
    void refuse_losses(const Reading& reading) const;
    void keep_previous();
    bool put_back() const;
    void write();
    void check_outcome();

    bool discard_;
    Store store_;
    Contents contents_;
    std::string real_path_;             ///< of the file, which may be a link
    std::filesystem::path native_path_; ///< the same
    std::string previous_;              ///< where the former content is kept
    bool is_kept_ = false;              ///< the former content is beside it
    bool was_missing_ = false;
};

/// Puts `.previous` in place of the file, and the file's content in place of `.previous`.
void restore_previous(bool discardUnreadable);

} // namespace tool
