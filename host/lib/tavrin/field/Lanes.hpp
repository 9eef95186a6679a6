#pragma once

#include <cstddef>
#include <cstdint>

namespace tavrin
{

/// A few numbers that are computed with at once, each as if it were alone.
class Lanes
{
public:
    static constexpr std::size_t size = 8;

    /// All bits of each lane, or none.
    using Mask = std::int64_t __attribute__((vector_size(size * sizeof(std::int64_t))));

    Lanes() = default;
    Lanes(double number) : mNumbers(number - Numbers{}) {}

    /// What `read` gives for each lane.
    template<typename Read>
    static Lanes of(const Read& read)
    {
        return Numbers{read(0), read(1), read(2), read(3), read(4), read(5), read(6), read(7)};
    }

    double operator[](std::size_t lane) const { return mNumbers[lane]; }

    Lanes& operator+=(const Lanes& other) { return *this = mNumbers + other.mNumbers; }
    Lanes& operator-=(const Lanes& other) { return *this = mNumbers - other.mNumbers; }
    Lanes& operator*=(const Lanes& other) { return *this = mNumbers * other.mNumbers; }
    Lanes& operator/=(const Lanes& other) { return *this = mNumbers / other.mNumbers; }

    friend Lanes operator+(Lanes a, const Lanes& b) { return a += b; }
    friend Lanes operator-(Lanes a, const Lanes& b) { return a -= b; }
    friend Lanes operator*(Lanes a, const Lanes& b) { return a *= b; }
    friend Lanes operator/(Lanes a, const Lanes& b) { return a /= b; }

    friend Mask operator<(const Lanes& a, const Lanes& b) { return a.mNumbers < b.mNumbers; }
    friend Mask operator<=(const Lanes& a, const Lanes& b) { return a.mNumbers <= b.mNumbers; }
    friend Mask operator>(const Lanes& a, const Lanes& b) { return b < a; }

    /// Whether all lanes are equal.
    friend bool operator==(const Lanes& a, const Lanes& b)
    {
        bool areEqual = true;
        for (std::size_t lane = 0; lane < size; ++lane)
            areEqual = areEqual && a[lane] == b[lane];
        return areEqual;
    }

    friend Lanes select(const Mask& mask, const Lanes& yes, const Lanes& no)
    {
        return mask ? yes.mNumbers : no.mNumbers;
    }
    friend Lanes max(const Lanes& a, const Lanes& b)
    {
        return a.mNumbers < b.mNumbers ? b.mNumbers : a.mNumbers;
    }
    friend Lanes min(const Lanes& a, const Lanes& b)
    {
        return b.mNumbers < a.mNumbers ? b.mNumbers : a.mNumbers;
    }
    friend Lanes abs(const Lanes& a) { return max(a, 0.0 - a); }

private:
    using Numbers = double __attribute__((vector_size(size * sizeof(double))));

    Lanes(const Numbers& numbers) : mNumbers(numbers) {}

    Numbers mNumbers;
};

/// One bit for each lane.
inline std::uint32_t bitsOf(const Lanes::Mask& mask)
{
    std::uint32_t bits = 0;
    for (std::uint32_t lane = 0; lane < Lanes::size; ++lane)
        bits |= static_cast<std::uint32_t>(mask[lane] & 1) << lane;
    return bits;
}

inline bool any(const Lanes::Mask& mask)
{
    std::int64_t bits = 0;
    for (std::size_t lane = 0; lane < Lanes::size; ++lane)
        bits |= mask[lane];
    return bits != 0;
}

inline Lanes::Mask andNot(const Lanes::Mask& a, const Lanes::Mask& b)
{
    return a & ~b;
}

/// The same of a single number.
inline bool any(bool mask)
{
    return mask;
}
inline bool andNot(bool a, bool b)
{
    return a && !b;
}
inline double select(bool mask, double yes, double no)
{
    return mask ? yes : no;
}

/// What comparisons of numbers give.
template<typename Number>
using MaskOf = decltype(Number() < Number());

}
