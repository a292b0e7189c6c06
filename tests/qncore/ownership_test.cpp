#include <atomic>
#include <thread>
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

TEST(RefCountPtr, FreesTheObjectWithTheLastReference) {
    {
        RefCountPtr<Square> first = make_ref_counted<BigSquare>();
        RefCountPtr<const Square> second = first;
        RefCountPtr<const Square> third = std::move(second);
        EXPECT_FALSE(second); // NOLINT(bugprone-use-after-move): moved-from pointers are null
        const RefCountPtr<const Square>& same = third;
        third = same;
        first.reset();
        EXPECT_EQ(g_living, 1);
        EXPECT_EQ(third->corners(), 4);
        third = nullptr;
        EXPECT_EQ(g_living, 0);
    }
    EXPECT_EQ(g_living, 0);
}

TEST(InterfacePtr, KeepsTheObjectBehindTheInterface) {
    using ShapePtr = InterfacePtr<const Shape, AtomicHolder>;
    ShapePtr shape;
    EXPECT_FALSE(shape);
    {
        const RefCountPtr<Square> square = make_ref_counted<Square>();
        shape = ShapePtr(square);
        const InterfacePtr<Shape, AtomicHolder> writable(square);
        shape = writable;
    }
    ShapePtr moved = std::move(shape);
    EXPECT_FALSE(shape); // NOLINT(bugprone-use-after-move): moved-from pointers are null
    EXPECT_EQ(moved->corners(), 4);
    EXPECT_EQ(g_living, 1);
    moved = ShapePtr();
    EXPECT_EQ(g_living, 0);
}

TEST(StrongWeakPtr, TheWeakReferenceOutlivesTheObject) {
    WeakPtr<int> weak;
    {
        const StrongPtr<int> strong(new int(5));
        StrongPtr<int> copy = strong;
        weak = WeakPtr<int>(copy);
        copy = StrongPtr<int>();
        EXPECT_EQ(*weak.lock(), 5);
    }
    EXPECT_FALSE(weak.lock());
    EXPECT_FALSE(WeakPtr<int>().lock());
}

TEST(StrongWeakPtr, ConcurrentOwnersFreeOnce) {
    struct Counted {
        explicit Counted(std::atomic<int>& counter)
            : deaths(counter) {}
        ~Counted() { ++deaths; }
        std::atomic<int>& deaths;
    };
    std::atomic<int> deaths{0};
    {
        StrongPtr<Counted> owner(new Counted(deaths));
        const WeakPtr<Counted> weak(owner);
        std::vector<std::thread> threads;
        threads.reserve(4);
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([owner, weak] {
                for (int turn = 0; turn < 1000; ++turn) {
                    const StrongPtr<Counted> mine = weak.lock();
                    EXPECT_TRUE(mine);
                }
            });
        }
        owner = StrongPtr<Counted>();
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
    EXPECT_EQ(deaths, 1);
}

} // namespace
} // namespace qncore
