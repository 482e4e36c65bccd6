// kestrel/geometry/detail/Pair.h - two doubles that go through the same arithmetic side by side.
#pragma once

#include <cstring>

namespace kestrel::detail {

/// The plain form, for constant expressions.
class PlainPair {
public:
    constexpr PlainPair(double first, double second) noexcept : m_first(first), m_second(second) {}

    constexpr double first() const noexcept { return m_first; }
    constexpr double second() const noexcept { return m_second; }
    /// Writes both to two doubles of one object, of which b follows a in memory.
    constexpr void store(double& a, double& b) const noexcept { a = m_first, b = m_second; }

    friend constexpr PlainPair operator+(PlainPair a, PlainPair b) noexcept {
        return {a.m_first + b.m_first, a.m_second + b.m_second};
    }
    friend constexpr PlainPair operator-(PlainPair a, PlainPair b) noexcept {
        return {a.m_first - b.m_first, a.m_second - b.m_second};
    }
    friend constexpr PlainPair operator*(PlainPair a, PlainPair b) noexcept {
        return {a.m_first * b.m_first, a.m_second * b.m_second};
    }
    friend constexpr PlainPair operator/(PlainPair a, PlainPair b) noexcept {
        return {a.m_first / b.m_first, a.m_second / b.m_second};
    }

    friend constexpr PlainPair firsts(PlainPair a, PlainPair b) noexcept { return {a.m_first, b.m_first}; }
    friend constexpr PlainPair seconds(PlainPair a, PlainPair b) noexcept { return {a.m_second, b.m_second}; }

private:
    double m_first, m_second;
};

/// The same in one register, which every 64-bit processor has. Compilers do not find this form by themselves.
class VectorPair {
public:
    VectorPair(double first, double second) noexcept : m_both{first, second} {}

    double first() const noexcept { return m_both[0]; }
    double second() const noexcept { return m_both[1]; }
    void store(double& a, double& /*b*/) const noexcept { std::memcpy(&a, &m_both, sizeof m_both); }

    friend VectorPair operator+(VectorPair a, VectorPair b) noexcept { return a.m_both + b.m_both; }
    friend VectorPair operator-(VectorPair a, VectorPair b) noexcept { return a.m_both - b.m_both; }
    friend VectorPair operator*(VectorPair a, VectorPair b) noexcept { return a.m_both * b.m_both; }
    friend VectorPair operator/(VectorPair a, VectorPair b) noexcept { return a.m_both / b.m_both; }

    friend VectorPair firsts(VectorPair a, VectorPair b) noexcept {
        return __builtin_shufflevector(a.m_both, b.m_both, 0, 2);
    }
    friend VectorPair seconds(VectorPair a, VectorPair b) noexcept {
        return __builtin_shufflevector(a.m_both, b.m_both, 1, 3);
    }

private:
    using Both = double __attribute__((vector_size(16)));
    VectorPair(Both both) noexcept : m_both(both) {}

    Both m_both;
};

}  // namespace kestrel::detail
