#include <tavrin/io/EarClipping.hpp>

#include <tavrin/io/FileError.hpp>

#include <algorithm>
#include <deque>
#include <optional>

namespace tavrin::io
{

namespace
{

/// Clips one corner after the other. A convex corner is an ear, and can be clipped, if no reflex
/// corner lies in the triangle with its neighbors. A corner that is not an ear is tried again only
/// when the reflex corner that was found in its triangle is reflex no more, or one of its neighbors
/// was clipped, so that the time hardly exceeds one search through the reflex corners for each corner.
class EarClipper
{
public:
    explicit EarClipper(const FlatPolygon& polygon)
        : mPolygon(polygon), mPrevious(polygon.size()), mNext(polygon.size()),
          mIsLeft(polygon.size(), true), mBlocked(polygon.size()), mNumLeft(polygon.size())
    {
        const std::size_t size = polygon.size();
        for (std::size_t i = 0; i < size; ++i)
        {
            mPrevious[i] = (i + size - 1) % size;
            mNext[i] = (i + 1) % size;
        }
        for (std::size_t i = 0; i < size; ++i)
            if (isReflex(i))
                mReflex.push_back(i);
            else
                mCandidates.push_back(i);
    }

    std::vector<std::array<std::size_t, 3>> clip(const volatile bool& abortFlag)
    {
        while (mNumLeft > 3)
        {
            if (mCandidates.empty())
                return {};
            if (abortFlag)
                throw Aborted();
            const std::size_t corner = mCandidates.front();
            mCandidates.pop_front();
            if (!mIsLeft[corner] || isReflex(corner))
                continue;
            if (const auto blocker = findBlocker(corner))
                mBlocked[*blocker].push_back(corner);
            else
                remove(corner);
        }
        const auto last =
            static_cast<std::size_t>(std::ranges::find(mIsLeft, true) - mIsLeft.begin());
        mTriangles.push_back({mPrevious[last], last, mNext[last]});
        return std::move(mTriangles);
    }

private:
    bool isReflex(std::size_t corner) const
    {
        return mPolygon.area(mPrevious[corner], corner, mNext[corner]) <= 0.0;
    }

    std::optional<std::size_t> findBlocker(std::size_t corner) const
    {
        const std::size_t before = mPrevious[corner];
        const std::size_t after = mNext[corner];
        const auto found =
            std::ranges::find_if(mReflex,
                                 [&](std::size_t other) {
                                     return other != before && other != after &&
                                            mPolygon.isInside(other, before, corner, after);
                                 });
        return found == mReflex.end() ? std::nullopt : std::optional(*found);
    }

    void remove(std::size_t corner)
    {
        const std::size_t before = mPrevious[corner];
        const std::size_t after = mNext[corner];
        mTriangles.push_back({before, corner, after});
        mIsLeft[corner] = false;
        --mNumLeft;
        mNext[before] = after;
        mPrevious[after] = before;
        for (const std::size_t neighbor : {before, after})
        {
            if (isReflex(neighbor))
                continue;
            mCandidates.push_front(neighbor);
            if (std::erase(mReflex, neighbor) > 0)
            {
                mCandidates.insert(mCandidates.end(), mBlocked[neighbor].begin(),
                                   mBlocked[neighbor].end());
                mBlocked[neighbor].clear();
            }
        }
    }

    const FlatPolygon& mPolygon;
    std::vector<std::size_t> mPrevious;
    std::vector<std::size_t> mNext;
    std::vector<bool> mIsLeft;
    std::vector<std::size_t> mReflex;
    /// The corners that each reflex corner keeps from being ears.
    std::vector<std::vector<std::size_t>> mBlocked;
    std::deque<std::size_t> mCandidates;
    std::size_t mNumLeft;
    std::vector<std::array<std::size_t, 3>> mTriangles;
};

}

bool FlatPolygon::isConvex() const
{
    std::size_t turns = 0;
    for (std::size_t i = 0; i < size(); ++i)
    {
        const std::size_t next = (i + 1) % size();
        const std::size_t afterNext = (i + 2) % size();
        if (area(i, next, afterNext) < 0.0)
            return false;
        // A star turns one way too, but changes its horizontal direction more than twice.
        const bool goesRight = mCorners[next][0] >= mCorners[i][0];
        const bool goesRightNext = mCorners[afterNext][0] >= mCorners[next][0];
        turns += goesRight != goesRightNext ? 1 : 0;
    }
    return turns <= 2;
}

std::vector<std::array<std::size_t, 3>> clipEars(const FlatPolygon& polygon,
                                                 const volatile bool& abortFlag)
{
    return EarClipper(polygon).clip(abortFlag);
}

}
