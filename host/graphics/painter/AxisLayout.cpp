#include "AxisLayout.hpp"

#include "Ticks.hpp"

#include <algorithm>
#include <limits>
#include <optional>

namespace tavrin::graphics::painter
{

namespace
{

using Pixel = Tensor<double, 2>;

struct ProjectedBox
{
    std::array<Position, 8> corners;
    std::array<Pixel, 8> pixels;
    Pixel middle{};
};

/// An edge at the silhouette of a box.
struct Edge
{
    Position from;
    Position to;
    Pixel pixelFrom;
    Pixel pixelTo;
    /// Direction away from the box in the picture, of length 1.
    Pixel outwards;
    /// How far the scene reaches beyond it, in pixels.
    double beyond = 0.0;

    double length() const { return norm(pixelTo - pixelFrom); }
    bool isUpright() const
    {
        const Pixel along = pixelTo - pixelFrom;
        return std::abs(along[1]) > 1.5 * std::abs(along[0]);
    }
};

Pixel projected(const Camera& camera, const Position& placed)
{
    const auto pixel = camera.project(placed);
    return {pixel[0], pixel[1]};
}

ProjectedBox projectedBox(const Box& outline, const Placement& placement, const Camera& camera)
{
    ProjectedBox box{.corners = cornersOf(outline.lower, outline.upper), .pixels = {}};
    for (std::size_t i = 0; i < 8; ++i)
    {
        box.pixels[i] = projected(camera, placement(box.corners[i]));
        box.middle += 0.125 * box.pixels[i];
    }
    return box;
}

/// The largest coordinate of the pixels along a direction.
double reach(std::span<const Pixel> pixels, const Pixel& direction)
{
    double farthest = -std::numeric_limits<double>::infinity();
    for (const Pixel& pixel : pixels)
        farthest = std::max(farthest, dot(pixel, direction));
    return farthest;
}

/// The edge along an axis that suits labels best: it lies at the silhouette, the scene reaches at
/// most `mostBeyond` pixels beyond it, and it is the leftmost one if it is upright in the picture,
/// otherwise the lowest.
std::optional<Edge> findEdge(const ProjectedBox& box, std::span<const Pixel> scene,
                             std::size_t axis, double mostBeyond)
{
    std::optional<Edge> best;
    double bestPlace = 0.0;
    const std::size_t bit = std::size_t{1} << axis;
    for (std::size_t corner = 0; corner < 8; ++corner)
    {
        if ((corner & bit) != 0)
            continue;
        Edge edge{.from = box.corners[corner],
                  .to = box.corners[corner | bit],
                  .pixelFrom = box.pixels[corner],
                  .pixelTo = box.pixels[corner | bit],
                  .outwards = {},
                  .beyond = 0.0};
        if (!(edge.length() > 1.0))
            continue;
        const Pixel along = (edge.pixelTo - edge.pixelFrom) / edge.length();
        edge.outwards = Pixel(along[1], -along[0]);
        const double offset = dot(box.middle - edge.pixelFrom, edge.outwards);
        // A box without extent across the edge leaves both sides free; labels go below or to the left.
        if (std::abs(offset) < 0.5)
            edge.outwards *= edge.outwards[1] - edge.outwards[0] < 0.0 ? -1.0 : 1.0;
        else if (offset > 0.0)
            edge.outwards *= -1.0;
        if (reach(box.pixels, edge.outwards) > dot(edge.pixelFrom, edge.outwards) + 0.5)
            continue;
        edge.beyond =
            std::max(0.0, reach(scene, edge.outwards) - dot(edge.pixelFrom, edge.outwards));
        const bool isFree = edge.beyond <= mostBeyond;
        const bool isBestFree = best && best->beyond <= mostBeyond;
        const Pixel edgeMiddle = 0.5 * (edge.pixelFrom + edge.pixelTo);
        const double place = edge.isUpright() ? -edgeMiddle[0] : edgeMiddle[1];
        if (!best || (isFree != isBestFree ? isFree : place > bestPlace + 0.5))
        {
            best = edge;
            bestPlace = place;
        }
    }
    return best;
}

/// Half the extent of a label in a direction.
double halfExtent(const Label& label, const Pixel& direction)
{
    return 0.5 * (std::abs(direction[0]) * label.width + std::abs(direction[1]) * label.height);
}

void moveTo(Label& label, const Pixel& middle)
{
    label.x = middle[0];
    label.y = middle[1];
}

bool overlaps(const Label& a, const Label& b, double gap)
{
    return std::abs(a.x - b.x) < 0.5 * (a.width + b.width) + gap &&
           std::abs(a.y - b.y) < 0.5 * (a.height + b.height) + gap;
}

class AxisWriter
{
public:
    AxisWriter(const Placement& placement, const Camera& camera, const TextMeter& meter)
        : mPlacement(placement), mCamera(camera), mMeter(meter), mFontSize(meter.fontSize())
    {
    }

    /// The ticks of an edge along an axis.
    Ticks ticksOf(const Edge& edge, std::size_t axis, const Ticks::Format& format) const
    {
        const double spacing = (edge.isUpright() ? 2.5 : 3.5) * mFontSize;
        const double wanted = std::clamp(edge.length() / spacing, 2.0, 7.0);
        return Ticks::between(edge.from[axis], edge.to[axis], static_cast<unsigned>(wanted),
                              format);
    }

    /// Adds the axis of an edge. To keep clear of the scene, it is up to `mostBeyond` pixels away from
    /// the edge.
    void write(const Edge& edge, std::size_t axis, const Ticks& ticks, double mostBeyond)
    {
        const double tickLength = 0.35 * mFontSize;
        // A scene that extends only slightly beyond the edge ends before the numbers.
        const bool isApart = edge.beyond > 0.7 * mFontSize;
        const double apart = isApart ? std::min(edge.beyond, mostBeyond) + tickLength : 0.0;
        if (isApart)
            addStroke(edge.pixelFrom + apart * edge.outwards, edge.pixelTo + apart * edge.outwards);

        const double numberGap =
            (isApart ? apart + tickLength : std::max(edge.beyond, tickLength)) + 0.4 * mFontSize;
        std::vector<Label> numbers;
        double numberExtent = 0.0;
        for (std::size_t i = 0; i < ticks.values.size(); ++i)
        {
            Position position = edge.from;
            position[axis] = ticks.values[i];
            const Pixel at = projected(mCamera, mPlacement(position));
            addStroke(at + apart * edge.outwards, at + (apart + tickLength) * edge.outwards);
            Label number = mMeter.label(ticks.labels[i]);
            const double half = halfExtent(number, edge.outwards);
            moveTo(number, at + (numberGap + half) * edge.outwards);
            numberExtent = std::max(numberExtent, 2.0 * half);
            numbers.push_back(std::move(number));
        }

        constexpr std::array names{"x", "y", "z"};
        Label name = mMeter.label(names[axis] + ticks.titleSuffix);
        const double nameGap =
            numberGap + numberExtent + 0.6 * mFontSize + halfExtent(name, edge.outwards);
        moveTo(name, 0.5 * (edge.pixelFrom + edge.pixelTo) + nameGap * edge.outwards);
        add(std::move(name));
        for (Label& number : numbers)
            add(std::move(number));
    }

    Annotation take() { return std::move(mAnnotation); }

private:
    void addStroke(const Pixel& from, const Pixel& to)
    {
        mAnnotation.strokes.push_back({{from[0], from[1]}, {to[0], to[1]}});
    }

    /// Leaves out a label that is too close to another one.
    void add(Label label)
    {
        const auto isTooClose = [&](const Label& other)
        { return overlaps(label, other, 0.3 * mFontSize); };
        if (std::ranges::none_of(mAnnotation.labels, isTooClose))
            mAnnotation.labels.push_back(std::move(label));
    }

    const Placement& mPlacement;
    const Camera& mCamera;
    const TextMeter& mMeter;
    double mFontSize;
    Annotation mAnnotation;
};

/// An edge with the axis along it.
struct Scale
{
    Edge edge;
    std::size_t axis;
    Ticks ticks;
};

/// Gives all axes the exponent of the largest one and the same number of decimals, unless this makes
/// labels too long.
void harmonize(std::vector<Scale>& scales, const AxisWriter& writer)
{
    /// The most decimals that an axis takes over from the others.
    constexpr int mostDecimals = 3;
    Ticks::Format format{.exponent = std::numeric_limits<int>::lowest(), .leastDecimals = 0};
    for (const Scale& scale : scales)
        format.exponent = std::max(*format.exponent, scale.ticks.exponent);
    for (const Scale& scale : scales)
    {
        const int decimals = writer.ticksOf(scale.edge, scale.axis, format).decimals;
        if (decimals <= mostDecimals)
            format.leastDecimals = std::max(format.leastDecimals, decimals);
    }
    for (Scale& scale : scales)
    {
        Ticks ticks = writer.ticksOf(scale.edge, scale.axis, format);
        if (ticks.decimals <= mostDecimals)
            scale.ticks = std::move(ticks);
    }
}

}

void Annotation::moveBy(double x, double y)
{
    for (Stroke& stroke : strokes)
        for (auto* const end : {&stroke.from, &stroke.to})
            *end = {(*end)[0] + x, (*end)[1] + y};
    for (Label& label : labels)
    {
        label.x += x;
        label.y += y;
    }
}

std::array<Position, 8> cornersOf(const Position& lower, const Position& upper)
{
    std::array<Position, 8> corners{};
    for (std::size_t i = 0; i < 8; ++i)
        for (std::size_t axis = 0; axis < 3; ++axis)
            corners[i][axis] = (i >> axis & 1U) != 0 ? upper[axis] : lower[axis];
    return corners;
}

Annotation layOutAxes(const Box& outline, std::span<const Position> extremes,
                      const Placement& placement, const Camera& camera, const TextMeter& meter)
{
    const ProjectedBox box = projectedBox(outline, placement, camera);
    std::vector<Pixel> scene;
    for (const Position& extreme : extremes)
        scene.push_back(projected(camera, extreme));

    AxisWriter writer(placement, camera, meter);
    // In a parallel view, an axis far from its edge is still in line with it.
    const double mostBeyond = (camera.isParallel() ? 8.0 : 1.5) * meter.fontSize();
    std::vector<Scale> scales;
    for (std::size_t axis = 0; axis < outline.dimension; ++axis)
    {
        const std::optional<Edge> edge = findEdge(box, scene, axis, mostBeyond);
        // An edge that is seen nearly end-on has no room for numbers.
        if (!edge || edge->length() < 4.0 * meter.fontSize())
            continue;
        scales.push_back({*edge, axis, writer.ticksOf(*edge, axis, {})});
    }
    harmonize(scales, writer);
    for (const Scale& scale : scales)
        writer.write(scale.edge, scale.axis, scale.ticks, mostBeyond);
    return writer.take();
}

std::vector<Stroke> layOutOutline(const Box& outline, const Placement& placement,
                                  const Camera& camera)
{
    const Position lower = placement(outline.lower);
    const Position upper = placement(outline.upper);
    const Position eye = camera.eye();
    /// Whether the side of the box at an end of an axis faces the eye.
    const auto isFacing = [&](std::size_t axis, bool isUpper)
    {
        if (camera.isParallel())
            return isUpper ? eye[axis] > 0.0 : eye[axis] < 0.0;
        return isUpper ? eye[axis] > upper[axis] : eye[axis] < lower[axis];
    };

    std::vector<Stroke> edges;
    const auto corners = cornersOf(lower, upper);
    const std::size_t numCorners = std::size_t{1} << outline.dimension;
    for (std::size_t axis = 0; axis < outline.dimension; ++axis)
        for (std::size_t corner = 0; corner < numCorners; ++corner)
        {
            const std::size_t bit = std::size_t{1} << axis;
            if ((corner & bit) != 0)
                continue;
            bool isInFront = outline.dimension == 3;
            for (std::size_t other = 0; other < outline.dimension; ++other)
                if (other != axis)
                    isInFront = isInFront && isFacing(other, (corner >> other & 1U) != 0);
            if (!isInFront)
                edges.push_back(
                    {camera.project(corners[corner]), camera.project(corners[corner | bit])});
        }
    return edges;
}

}
