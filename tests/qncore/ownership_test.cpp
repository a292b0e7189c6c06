#include <atomic>
#include <future>
#include <vector>

#include <gtest/gtest.h>

#include "qncore/interface_ptr.h"
#include "qncore/ref_counted.h"
#include "qncore/strong_weak_ptr.h"

namespace qncore {
namespace {

struct Shape {
    virtual int corners() const = 0;

  protected:
    ~Shape() = default;
};

int g_living = 0;

class Square : public RefCounted<AtomicRefCount>, public Shape {
  public:
    Square() { ++g_living; }
    int corners() const override { return 4; }

  protected:
    ~Square() override { --g_living; }
};

class BigSquare final : public Square {};

TEST(Ownership, ACountedObjectGoesWithItsLastReference) {
    using ShapePtr = InterfacePtr<const Shape, AtomicHolder>;
    RefCountPtr<Square> first = make_ref_counted<BigSquare>();
    RefCountPtr<const Square> second = first;
    RefCountPtr<const Square> third = std::move(second);
    EXPECT_TRUE(second == nullptr); // NOLINT(bugprone-use-after-move): moved-from pointers are null
    const RefCountPtr<const Square>& same = third;
    third = same;
    EXPECT_FALSE(ShapePtr());
    ShapePtr shape = InterfacePtr<Shape, AtomicHolder>(first);
    ShapePtr moved = std::move(shape);
    EXPECT_FALSE(shape); // NOLINT(bugprone-use-after-move): moved-from pointers are null
    first.reset();
    third = nullptr;
    EXPECT_EQ(g_living, 1);
    EXPECT_EQ(moved->corners(), 4);
    moved = ShapePtr();
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
