#include <atomic>
#include <future>
#include <vector>

#include <gtest/gtest.h>

#include "qncore/string_trace_data.h"
#include "qncore/strong_weak_ptr.h"

namespace qncore {
namespace {

int g_living = 0;

class Text : public RefCounted<AtomicRefCount>, public StringTraceData {
  public:
    Text() { ++g_living; }
    std::string_view trace_text() const override { return "shown"; }

  protected:
    ~Text() override { --g_living; }
};

class LongText final : public Text {};

TEST(Ownership, ACountedObjectIsDeletedWithItsLastReference) {
    RefCountPtr<Text> first = make_ref_counted<LongText>();
    RefCountPtr<const Text> second = first;
    RefCountPtr<const Text> third = std::move(second);
    EXPECT_TRUE(second == nullptr); // NOLINT(bugprone-use-after-move): moved-from pointers are null
    using DataPtr = InterfacePtr<const StringTraceData, AtomicHolder>;
    DataPtr data = InterfacePtr<StringTraceData, AtomicHolder>(first);
    DataPtr moved = std::move(data);
    EXPECT_FALSE(data); // NOLINT(bugprone-use-after-move): moved-from pointers are null
    first.reset();
    third = nullptr;
    EXPECT_EQ(g_living, 1);
    EXPECT_EQ(moved->trace_text(), "shown");
    moved = DataPtr();
    EXPECT_EQ(g_living, 0);
}

TEST(Ownership, ConcurrentOwnersFreeOnce) {
    struct Counted {
        ~Counted() { ++deaths; }
        std::atomic<int>& deaths;
    };
    std::atomic<int> deaths{0};
    StrongPtr<Counted> owner(new Counted{deaths});
    std::vector<std::future<void>> users(4);
    for (std::future<void>& user : users) {
        user = std::async(std::launch::async, [owner] {
            for (int turn = 0; turn < 1000; ++turn) {
                StrongPtr<Counted> mine = owner;
                EXPECT_EQ(mine->deaths, 0);
                mine = StrongPtr<Counted>();
            }
        });
    }
    owner = StrongPtr<Counted>();
    EXPECT_FALSE(owner);
    users.clear(); // waits for them
    EXPECT_EQ(deaths, 1);
}

} // namespace
} // namespace qncore
