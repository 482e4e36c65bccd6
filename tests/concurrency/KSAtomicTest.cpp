#include <kestrel/concurrency/KSAtomic.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <thread>
#include <vector>

namespace {

void runOnThreads(int count, void (*body)(int*), int* word) {
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) threads.emplace_back(body, word);
    for (std::thread& thread : threads) thread.join();
}

struct Node {
    int payload;
    Node* next;
};
constexpr int linkOffset = offsetof(Node, next);

}  // namespace

TEST(KSAtomic, CountsExactlyOnEightThreads) {
    int word = 5;
    runOnThreads(
        8,
        [](int* p) {
            for (int i = 0; i < 10000; ++i) {
                KSAtomic::increment(p);
                KSAtomic::add(p, 3);
                KSAtomic::decrement(p);
            }
        },
        &word);
    EXPECT_EQ(word, 5 + 8 * 10000 * 3);
}

TEST(KSAtomic, AddThenTestGivesEachNewValueToOneThreadOnly) {
    static std::vector<char> seen;
    seen.assign(8 * 5000 + 1, 0);
    int word = 0;
    runOnThreads(
        8,
        [](int* p) {
            for (int i = 0; i < 5000; ++i) seen[static_cast<std::size_t>(KSAtomic::addThenTest(p, 1))] = 1;
        },
        &word);
    EXPECT_EQ(std::count(seen.begin() + 1, seen.end(), 1), 8 * 5000);
}

TEST(KSAtomic, SumsWrap) {
    int word = INT_MAX;
    EXPECT_EQ(KSAtomic::addThenTest(&word, 1), INT_MIN);
    EXPECT_EQ(KSAtomic::testThenAdd(&word, -1), INT_MIN);
    EXPECT_EQ(word, INT_MAX);
}

TEST(KSAtomic, UnguardedOperationsLoseNothingOnOneThreadAndNeverTearOnMany) {
    int word = 40;
    EXPECT_EQ(KSAtomic::testThenAdd(&word, 2), 40);
    EXPECT_EQ(word, 42);
    EXPECT_EQ(KSAtomic::set(&word, 7), 0);
    EXPECT_EQ(word, 7);

    word = 0;
    runOnThreads(
        4,
        [](int* p) {
            for (int i = 0; i < 10000; ++i) KSAtomic::testThenAdd(p, 1);
        },
        &word);
    EXPECT_GE(word, 1);
    EXPECT_LE(word, 4 * 10000);
}

TEST(KSAtomic, CompareAndSwapAnswersWhetherTheWordWasNotZero) {
    static constexpr struct {
        int before, expected, desired, after;
        bool result;
    } rows[] = {
        {5, 5, 7, 7, true},   // swapped
        {0, 0, 7, 7, false},  // swapped, and yet false
        {5, 4, 7, 5, true},   // left alone, and yet true
        {0, 4, 7, 0, false}, {-1, -1, 0, 0, true},
    };
    for (const auto& row : rows) {
        int word = row.before;
        EXPECT_EQ(KSAtomic::compareAndSwap(&word, row.expected, row.desired), row.result) << row.before;
        EXPECT_EQ(word, row.after) << row.before << " expected " << row.expected;
    }
}

TEST(KSAtomic, BitOperationsLookAtTheAddressOnly) {
    const auto address = [](std::uintptr_t value) { return reinterpret_cast<unsigned*>(value); };
    for (auto* operation : {KSAtomic::bitSet, KSAtomic::bitClear}) {
        unsigned word = 0xA5A5A5A5u;
        for (unsigned bit = 0; bit < 70; ++bit) {
            const bool isOne = bit > 0 && bit < 32 && (reinterpret_cast<std::uintptr_t>(&word) >> bit & 1);
            EXPECT_EQ(operation(&word, bit), isOne) << bit;
            EXPECT_EQ(word, 0xA5A5A5A5u);
        }
        EXPECT_FALSE(operation(address(~std::uintptr_t{0}), 0));
        EXPECT_TRUE(operation(address(~std::uintptr_t{0}), 1));
        EXPECT_TRUE(operation(address(std::uintptr_t{1} << 31), 31));
        EXPECT_FALSE(operation(address(std::uintptr_t{1} << 32), 31));
        EXPECT_FALSE(operation(address(~std::uintptr_t{0}), 32));
    }
}

TEST(KSAtomic, AListGivesItsFirstPushedNodeOutTwice) {
    Node nodes[3] = {};
    Node* head = nullptr;
    EXPECT_EQ(KSAtomic::listRemove(&head, linkOffset), nullptr);

    KSAtomic::listAdd(&head, &nodes[0], linkOffset);
    EXPECT_EQ(head, &nodes[0]);
    EXPECT_EQ(nodes[0].next, &nodes[0]);  // the self-link
    KSAtomic::listAdd(&head, &nodes[1], linkOffset);
    KSAtomic::listAdd(&head, &nodes[2], linkOffset);
    EXPECT_EQ(nodes[2].next, &nodes[1]);

    for (Node* expected : {&nodes[2], &nodes[1], &nodes[0], &nodes[0]}) {
        EXPECT_EQ(KSAtomic::listRemove(&head, linkOffset), expected);
        EXPECT_EQ(expected->next, nullptr);
    }
    EXPECT_EQ(KSAtomic::listRemove(&head, linkOffset), nullptr);
    for (const Node& node : nodes) EXPECT_EQ(node.payload, 0);
}
