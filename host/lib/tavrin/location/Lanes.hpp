#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tavrin
{

/// A truth value for each of a few lanes.
///
/// Truth values are kept as the numbers 1 and 0: g++ 12 compares vectors lane by lane unless the
/// comparison selects between two vectors at once.
class LaneMask
{
public:
    static constexpr std::size_t size = 8;

    using Numbers = double __attribute__((vector_size(size * sizeof(double))));

    LaneMask() = default;
    LaneMask(const Numbers& answers) : mAnswers(answers) {}

    const Numbers& answers() const { return mAnswers; }

    LaneMask& operator&=(const LaneMask& other) { return *this = *this & other; }

    friend LaneMask operator&(const LaneMask& a, const LaneMask& b)
    {
        return a.mAnswers * b.mAnswers;
    }
    friend LaneMask operator|(const LaneMask& a, const LaneMask& b)
    {
        return a.mAnswers < b.mAnswers ? b.mAnswers : a.mAnswers;
    }
    friend LaneMask operator!(const LaneMask& a) { return 1.0 - a.mAnswers; }
    friend LaneMask andNot(const LaneMask& a, const LaneMask& b)
    {
        return a.mAnswers - a.mAnswers * b.mAnswers;
    }

    /// One bit for each lane.
    friend std::uint32_t bitsOf(const LaneMask& mask)
    {
        const Numbers each = mask.mAnswers * Numbers{1.0, 2.0, 4.0, 8.0, 16.0, 32.0, 64.0, 128.0};
        const auto four = __builtin_shufflevector(each, each, 0, 1, 2, 3) +
                          __builtin_shufflevector(each, each, 4, 5, 6, 7);
        const double sum = (four[0] + four[2]) + (four[1] + four[3]);
        return static_cast<std::uint32_t>(static_cast<std::int32_t>(sum));
    }
    friend bool any(const LaneMask& mask) { return bitsOf(mask) != 0; }

private:
    Numbers mAnswers;
};

/// Eight numbers that are computed with at once, with the results that each would have alone. Eight
/// doubles are one register of AVX-512, two of AVX2.
class Lanes
{
public:
    static constexpr std::size_t size = LaneMask::size;

    /// The number of a lane for each lane.
    using Sources = std::int64_t __attribute__((vector_size(size * sizeof(std::int64_t))));

    Lanes() = default;
    /// The same number in each lane; at most half the largest double.
    // Written as arithmetic, since g++ 12 stores a plain list of equal numbers one by one.
    Lanes(double number) : mNumbers(0.5 * (2.0 * number - Numbers{})) {}

    /// Eight consecutive numbers.
    static Lanes at(const double* numbers)
    {
        Lanes lanes;
        std::memcpy(&lanes.mNumbers, numbers, sizeof(lanes.mNumbers));
        return lanes;
    }
    static Sources sourcesAt(const std::int64_t* lanes)
    {
        Sources sources;
        std::memcpy(&sources, lanes, sizeof(sources));
        return sources;
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

    friend LaneMask operator<(const Lanes& a, const Lanes& b)
    {
        return a.mNumbers < b.mNumbers ? Numbers{} + 1.0 : Numbers{};
    }
    friend LaneMask operator<=(const Lanes& a, const Lanes& b)
    {
        return a.mNumbers <= b.mNumbers ? Numbers{} + 1.0 : Numbers{};
    }
    friend LaneMask operator>(const Lanes& a, const Lanes& b) { return b < a; }

    /// Whether all lanes are equal.
    friend bool operator==(const Lanes& a, const Lanes& b)
    {
        bool areEqual = true;
        for (std::size_t lane = 0; lane < size; ++lane)
            areEqual = areEqual && a[lane] == b[lane];
        return areEqual;
    }

    friend Lanes select(const LaneMask& mask, const Lanes& yes, const Lanes& no)
    {
        return mask.answers() > 0.5 ? yes.mNumbers : no.mNumbers;
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
    using Numbers = LaneMask::Numbers;

    Lanes(const Numbers& numbers) : mNumbers(numbers) {}

    Numbers mNumbers;
};

/// An object made of `Lanes` and masks with its lanes rearranged: lane i of the result is lane sources[i].
template<typename Something>
Something rearranged(const Something& lanes, const Lanes::Sources& sources)
{
    static_assert(sizeof(Something) % sizeof(Lanes::Sources) == 0);
    Something result;
    for (std::size_t start = 0; start < sizeof(Something); start += sizeof(Lanes::Sources))
    {
        Lanes::Sources vector;
        std::memcpy(&vector, reinterpret_cast<const char*>(&lanes) + start, sizeof(vector));
#ifdef __clang__
        const Lanes::Sources before = vector;
        for (std::size_t lane = 0; lane < Lanes::size; ++lane)
            vector[lane] = before[sources[lane]];
#else
        vector = __builtin_shuffle(vector, sources);
#endif
        std::memcpy(reinterpret_cast<char*>(&result) + start, &vector, sizeof(vector));
    }
    return result;
}

/// Whether the bit of a lane is set.
inline bool hasBit(std::uint32_t bits, std::size_t lane)
{
    return (bits >> lane & 1U) != 0;
}

/// Counterparts of the functions of masks for a single truth value.
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

/// The type of a comparison of numbers: `LaneMask` or `bool`.
template<typename Number>
using MaskOf = decltype(Number() < Number());

}
