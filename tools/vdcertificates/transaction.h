#pragma once

#include <array>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "tools/vdcertificates/store.h"

namespace tool {

/// The entries of the whole file. The destructor wipes all passwords.
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

    /// Replaces all entries that a search might find by this one (Entry::section says where).
    void place(Entry&& entry);

    /// Removes every entry of that role under every spelling of the server. Returns their number.
    std::size_t remove(const Role& role, const std::string& server);

    /// Calls the function for each entry, in the order of the file.
    using Visitor =
        std::function<void(const std::string& section, const std::string* server, const Node&)>;
    void for_each(const Visitor& visit) const;

  private:
    std::array<Section, 3> sections_; ///< in the order of the file
};

/// One change of the file. Reads it under the lock and refuses the change if it would drop content
/// that cannot be read. commit() keeps the former content beside the file, writes, reads again, and
/// restores the former content if anything is missing. Signals do not interrupt it.
class Transaction {
  public:
    /// Throws Failure. With `discardUnreadable` drops what cannot be read.
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
    std::string previous_;              ///< the path of the former content
    bool is_kept_ = false;              ///< the former content is at that path
    bool was_missing_ = false;
};

/// Exchanges `.previous` and the file.
void restore_previous(bool discardUnreadable);

} // namespace tool
