#include <tavrin/pipeline/ArrowSegments.hpp>

#include <tavrin/base/Exceptions.hpp>
#include <tavrin/domain/UnstructuredGrid.hpp>
#include <tavrin/graphics/ArrowBatch.hpp>
#include <tavrin/graphics/Primitive.hpp>

#include <numeric>

namespace tavrin::pipeline
{

namespace
{

class Segments
{
public:
    void reserve(std::size_t count)
    {
        mPoints.reserve(2 * count);
        mVectors.reserve(count);
        mColors.reserve(count);
    }

    void add(const Vector3& start, const Vector3& end, const Vector3& vector, const Vector4& color)
    {
        const auto isFinite = [](double number) { return std::isfinite(number); };
        if (!std::ranges::all_of(start, isFinite) || !std::ranges::all_of(end, isFinite))
            return;
        mPoints.push_back(start);
        mPoints.push_back(end);
        mVectors.push_back(vector);
        mColors.push_back(color);
    }

    std::vector<std::shared_ptr<const FunctionBase>> toFunctions() &&
    {
        const std::size_t count = mVectors.size();
        std::vector<std::int64_t> vertices(2 * count);
        std::iota(vertices.begin(), vertices.end(), 0);
        std::vector<std::int64_t> offsets(count + 1);
        for (std::size_t i = 0; i <= count; ++i)
            offsets[i] = static_cast<std::int64_t>(2 * i);
        CellTable cells{.types = std::vector(count, CellType::Lines),
                        .offsets = IndexArray(std::move(offsets)),
                        .connectivity = IndexArray(std::move(vertices))};
        const auto grid = std::make_shared<const UnstructuredGrid<3>>(
            std::make_shared<DefaultValueArray<Vector3>>(std::move(mPoints), Precision::Float64),
            std::move(cells));
        return {addData(grid, detail::Cells, std::move(mVectors), Precision::Float64, {}, "vector"),
                addData(grid, detail::Cells, std::move(mColors), Precision::Float64, {}, "color")};
    }

private:
    std::vector<Vector3> mPoints;
    std::vector<Vector3> mVectors;
    std::vector<Vector4> mColors;
};

void addArrows(const graphics::ArrowBatch& batch, Segments& segments)
{
    segments.reserve(batch.arrows().size());
    for (const graphics::ArrowGlyph& arrow : batch.arrows())
        segments.add(arrow.start, arrow.start + arrow.direction, arrow.direction,
                     {arrow.color.red, arrow.color.green, arrow.color.blue, arrow.color.alpha});
}

/// Adds lines with two vertices each; a vertex has three coordinates and four color components.
void addLines(std::span<const float> vertices, std::span<const float> colors, Segments& segments)
{
    const std::size_t count = vertices.size() / 6;
    segments.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
    {
        const float* const v = &vertices[6 * i];
        const float* const c = &colors[8 * i];
        const Vector3 start(v[0], v[1], v[2]);
        const Vector3 end(v[3], v[4], v[5]);
        segments.add(start, end, end - start, {c[0], c[1], c[2], c[3]});
    }
}

}

std::vector<std::shared_ptr<const FunctionBase>> arrowSegments(const graphics::Drawable& drawable)
{
    Segments segments;
    if (const auto* const batch = dynamic_cast<const graphics::ArrowBatch*>(&drawable))
    {
        addArrows(*batch, segments);
        return std::move(segments).toFunctions();
    }
    const auto* const primitive = dynamic_cast<const graphics::Primitive*>(&drawable);
    const auto* const vertices =
        primitive == nullptr ? nullptr : primitive->findBuffer("in_vertex");
    const auto* const colors = primitive == nullptr ? nullptr : primitive->findBuffer("in_color");
    if (vertices == nullptr || colors == nullptr || vertices->numComponents() != 3 ||
        colors->numComponents() != 4)
        throw usage_error("the graphics has no line segments that a file could hold");
    addLines(vertices->values(), colors->values(), segments);
    return std::move(segments).toFunctions();
}

}
