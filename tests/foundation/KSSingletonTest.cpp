#include <kestrel/foundation/KSSingleton.h>

#include <gtest/gtest.h>

#include <functional>
#include <utility>
#include <vector>

namespace {

std::vector<unsigned> destroyed;

class Recorder : public KSSingleton {
public:
    explicit Recorder(
        unsigned order, std::function<void()> atEnd = [] {})
        : KSSingleton(order), m_order(order), m_atEnd(std::move(atEnd)) {}
    ~Recorder() override {
        destroyed.push_back(m_order);
        m_atEnd();
    }

private:
    unsigned m_order;
    std::function<void()> m_atEnd;
};

std::vector<unsigned> destroyAll() {
    destroyed.clear();
    KSSingleton::deleteSingletons();
    return destroyed;
}

}  // namespace

TEST(KSSingleton, DestroysFromTheSmallestNumberToTheLargest) {
    for (const unsigned order : {3u, 1u, 0xFFFFFFFFu, 2u, 0u}) new Recorder(order);
    EXPECT_EQ(destroyAll(), (std::vector<unsigned>{0, 1, 2, 3, 0xFFFFFFFF}));
    EXPECT_EQ(destroyAll(), std::vector<unsigned>());
    EXPECT_TRUE(KSSingleton::Compare({nullptr, 2}, {nullptr, 1}));
    EXPECT_FALSE(KSSingleton::Compare({nullptr, 1}, {nullptr, 1}));
}

TEST(KSSingleton, ForgetsAnObjectThatIsDeletedDirectly) {
    Recorder* const gone = new Recorder(1);
    new Recorder(2);
    { const Recorder automatic(0); }
    delete gone;
    EXPECT_EQ(destroyAll(), std::vector<unsigned>{2});
}

TEST(KSSingleton, FollowsDestructorsThatChangeTheRegistry) {
    Recorder* const doomed = new Recorder(5);
    new Recorder(9);
    new Recorder(1, [doomed] {
        delete doomed;
        new Recorder(100, [] { new Recorder(50); });  // newest first, whatever the numbers
        new Recorder(7);
    });
    EXPECT_EQ(destroyAll(), (std::vector<unsigned>{1, 5, 7, 100, 50, 9}));
}
