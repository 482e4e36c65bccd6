// ksNew, ksDelete and ksArrDelete.
#include "AllocHelpers.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>

namespace {

int constructed = 0, destroyed = 0, lastDestroyed = 0;

struct Counted {
    Counted() : number(++constructed) {}
    explicit Counted(int value) : number(value) { ++constructed; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    ~Counted() {
        ++destroyed;
        lastDestroyed = number;
    }
    int number;
    std::string text = "a text that is too long to stand in the object";
};

struct Front {
    virtual ~Front() = default;
    long payload = 1;
};
struct Back {
    virtual ~Back() = default;
    Counted counted;
};
struct Both : Front, Back {};

struct Thrower {
    explicit Thrower(int) { throw std::runtime_error("on purpose"); }
    Thrower() {
        if (++count == 3) throw std::runtime_error("on purpose");
    }
    ~Thrower() { --count; }
    static inline int count = 0;
};

struct alignas(16) Aligned {
    ~Aligned() { ++destroyed; }
    char bytes[48];
};

class KSNew : public testing::TestWithParam<bool> {
protected:
    KSNew() {
        constructed = destroyed = 0;
        if (GetParam()) ksAllocStart();
    }
    ~KSNew() override {
        EXPECT_EQ(printedBy([] { ksAllocEnd(0); }).find("0 bytes NOT freed (0 blocks)") != std::string::npos,
                  GetParam());
    }

private:
    AllocEnvironment m_environment;
};

}  // namespace

TEST_P(KSNew, ConstructsAndDestroysOneObject) {
    Counted* const object = ksNew Counted(42);
    EXPECT_EQ(object->number, 42);
    const Counted* const constant = ksNew Counted;
    ksDelete(object);
    ksDelete(constant);
    EXPECT_EQ(destroyed, 2);
    int* const number = ksNew int(5);
    EXPECT_EQ(*number, 5);
    ksDelete(number);
    ksDelete(static_cast<Counted*>(nullptr));
}

TEST_P(KSNew, ConstructsAndDestroysArraysFromTheLastToTheFirst) {
    for (const std::size_t count : {0u, 1u, 7u}) {
        constructed = destroyed = lastDestroyed = 0;
        Counted* const array = ksNew Counted[count];
        ASSERT_EQ(constructed, static_cast<int>(count));
        for (std::size_t i = 0; i < count; ++i) EXPECT_EQ(array[i].number, static_cast<int>(i) + 1);
        ksArrDelete(array);
        EXPECT_EQ(destroyed, static_cast<int>(count));
        EXPECT_EQ(lastDestroyed, count > 0 ? 1 : 0);
    }
    double* const numbers = ksNew double[5]();
    EXPECT_EQ(numbers[4], 0.0);
    ksArrDelete(numbers);
    destroyed = 0;
    Aligned* const aligned = ksNew Aligned[3];
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(aligned) % 16, 0u);
    ksArrDelete(aligned);
    EXPECT_EQ(destroyed, 3);
    ksArrDelete(static_cast<Counted*>(nullptr));
}

TEST_P(KSNew, DeletesThroughABaseInsideTheBlock) {
    Back* const inside = ksNew Both;
    ksDelete(inside);
    EXPECT_EQ(destroyed, 1);
}

TEST_P(KSNew, FreesTheBlockWhenAConstructorThrows) {
    EXPECT_THROW(ksNew Thrower(1), std::runtime_error);
    EXPECT_THROW(ksNew Thrower[5], std::runtime_error);
    EXPECT_EQ(Thrower::count, 1);  // two were destroyed, the third never lived
    Thrower::count = 0;
}

INSTANTIATE_TEST_SUITE_P(Tracking, KSNew, testing::Bool(),
                         [](const auto& row) { return row.param ? "On" : "Off"; });

TEST(KSNewTracked, ARefusedObjectIsNullAndNothingIsConstructed) {
    AllocRun run("ksAllocatedBlocksLimit", "1");
    constructed = 0;
    EXPECT_EQ(ksNew Counted, nullptr);
    EXPECT_EQ(ksNew Counted[3], nullptr);
    EXPECT_EQ(constructed, 0);
}

TEST(KSNewTracked, KnowsFileLineAndKind) {
    AllocRun run;
    Counted* const array = ksNew Counted[2];
    const int line = __LINE__ - 1;
    char expected[100];
    std::snprintf(expected, sizeof expected, "Line: %4d   File: KSAllocNewTest.cpp\n", line);
    EXPECT_NE(run.end(1).find(expected), std::string::npos);
    ksArrDelete(array);

    AllocRun second;
    int* const numbers = ksNew int[2];
    const std::string printed = printedBy([&] { ksDelete(numbers); });
    EXPECT_NE(printed.find("KSInternalFree: ksDelete called instead of ksArrDelete"), std::string::npos);
    EXPECT_NE(printed.find(__FILE__), std::string::npos);
}
