#include "HedgehogAdvice.hpp"
#include "NeighborDistance.hpp"

#include <tavrin/algorithm/AlgorithmRegister.hpp>
#include <tavrin/colormap/ColorMapDataObject.hpp>
#include <tavrin/domain/elementPosition.hpp>
#include <tavrin/function/mapValues.hpp>
#include <tavrin/function/stepsAround.hpp>
#include <tavrin/function/visit.hpp>
#include <tavrin/graphics/ObjectRenderer.hpp>
#include <tavrin/plugin/PluginRegistrationService.hpp>

namespace
{

using namespace tavrin;

using FieldTypes = TypeList<Function<Vector2>, Function<Vector3>>;
using DomainTypes = TypeList<PointSet<1>, PointSet<2>, PointSet<3>>;

/// A sample of the field, in three dimensions.
struct Arrow
{
    Tensor<double, 3> position;
    /// The value times "Scale".
    Tensor<double, 3> vector;
};

/// Returns the start and the direction of a glyph for the position and the vector of an arrow.
using AnchorMapping = std::function<std::pair<Tensor<double, 3>, Tensor<double, 3>>(
    Tensor<double, 3> position, Tensor<double, 3> vector)>;

/// The colors of the arrows, in the same order.
using Colors = LargeVector<Color>;

using RendererPointer = std::shared_ptr<graphics::ObjectRenderer>;
using DrawablePointer = std::shared_ptr<graphics::Drawable>;

/// The thickness of an arrow with "Width Scale" 1, as a share of its length.
constexpr double relativeWidth = 0.05;

/// Arrows are filled in blocks that fit into the first-level cache.
constexpr std::size_t arrowsPerBlock = 512;

/// A value of lower dimension with zeros appended.
template<std::size_t N>
Tensor<double, 3> padded(const Tensor<double, N>& value)
{
    Tensor<double, 3> result{};
    std::ranges::copy(value, result.begin());
    return result;
}

Tensor<float, 3> toFloat(const Tensor<double, 3>& value)
{
    return {static_cast<float>(value[0]), static_cast<float>(value[1]),
            static_cast<float>(value[2])};
}

void traceNumber(const LargeVector<Arrow>& arrows)
{
    std::cout << "Number of Arrows: " << arrows.size() << std::endl;
}

DrawablePointer makeLinesColorMapped(const RendererPointer&, const Colors& colors,
                                     const LargeVector<Arrow>& arrows, float width,
                                     const AnchorMapping& mapping)
{
    traceNumber(arrows);
    LargeVector<Tensor<float, 3>> vertices(2 * arrows.size());
    LargeVector<Color> vertexColors(2 * arrows.size());
    std::atomic<int> transparent = 0;
    // No exception may leave the parallel loop.
    if (!mapping && !arrows.empty())
        throw std::bad_function_call();
#pragma omp parallel for schedule(static)
    for (std::size_t i = 0; i < arrows.size(); ++i)
    {
        const auto [start, direction] = mapping(arrows[i].position, arrows[i].vector);
        vertices[2 * i] = toFloat(start);
        vertices[2 * i + 1] = toFloat(start) + toFloat(direction);
        vertexColors[2 * i] = colors[i];
        vertexColors[2 * i + 1] = colors[i];
        if (colors[i].alpha < 1.0F)
            transparent.store(1, std::memory_order_relaxed);
    }

    const auto sphere = graphics::computeBoundingSphere(vertices);
    const auto& system = graphics::GraphicsSystem::mInstance;
    const std::string base =
        PluginRegistrationService::getInstance().getResourcePath("utils/Graphics");
    auto program = system.makeProgram(base + "shader/line/noShading/multiColor/vertex.glsl",
                                      base + "shader/line/noShading/multiColor/fragment.glsl",
                                      base + "shader/line/noShading/multiColor/geometry.glsl");
    graphics::PrimitiveConfig config(graphics::RenderPrimitives::Lines);
    config.renderBin(static_cast<graphics::RenderBin>(transparent.load()))
        .vertexBuffer("in_vertex", system.makeLargeBuffer(std::move(vertices)))
        .vertexBuffer("in_color",
                      system.makeLargeBuffer(std::move(vertexColors), graphics::ColorChannel::RGBA))
        .uniform("u_lineWidth", width)
        .boundingSphere(sphere);
    return system.makePrimitive(std::move(config), std::move(program));
}

DrawablePointer makeLines(const RendererPointer& renderer, const Color& color,
                          const LargeVector<Arrow>& arrows, double width,
                          const AnchorMapping& mapping)
{
    return makeLinesColorMapped(renderer, Colors(arrows.size(), color), arrows,
                                static_cast<float>(width), mapping);
}

DrawablePointer renderArrows(const RendererPointer& renderer, graphics::ObjectType type,
                             const Colors& colors, const LargeVector<Arrow>& arrows, double width,
                             const AnchorMapping& mapping)
{
    traceNumber(arrows);
    renderer->reserve(type, arrows.size());
    for (std::size_t i = 0; i < arrows.size(); ++i)
    {
        const auto [start, direction] = mapping(arrows[i].position, arrows[i].vector);
        renderer->addArrow(start, direction, width * relativeWidth * norm(arrows[i].vector),
                           colors[i], type == graphics::ObjectType::TubeArrow);
    }
    return renderer->commit();
}

DrawablePointer makeArrowsColorMapped(const RendererPointer& renderer, const Colors& colors,
                                      const LargeVector<Arrow>& arrows, double width,
                                      const AnchorMapping& mapping)
{
    return renderArrows(renderer, graphics::ObjectType::Arrow, colors, arrows, width, mapping);
}

DrawablePointer makeArrows(const RendererPointer& renderer, const Color& color,
                           const LargeVector<Arrow>& arrows, double width,
                           const AnchorMapping& mapping)
{
    return makeArrowsColorMapped(renderer, Colors(arrows.size(), color), arrows, width, mapping);
}

DrawablePointer makeTubeArrowsColorMapped(const RendererPointer& renderer, const Colors& colors,
                                          const LargeVector<Arrow>& arrows, double width,
                                          const AnchorMapping& mapping)
{
    return renderArrows(renderer, graphics::ObjectType::TubeArrow, colors, arrows, width, mapping);
}

DrawablePointer makeTubeArrows(const RendererPointer& renderer, const Color& color,
                               const LargeVector<Arrow>& arrows, double width,
                               const AnchorMapping& mapping)
{
    return makeTubeArrowsColorMapped(renderer, Colors(arrows.size(), color), arrows, width,
                                     mapping);
}

/// The two forms of the maker of a representation's drawable.
struct DrawableMaker
{
    std::function<DrawablePointer(const RendererPointer&, const Color&, const LargeVector<Arrow>&,
                                  double width, const AnchorMapping&)>
        singleColor;
    std::function<DrawablePointer(const RendererPointer&, const Colors&, const LargeVector<Arrow>&,
                                  double width, const AnchorMapping&)>
        colorMapped;
};

DrawableMaker makerFor(const std::string& representation)
{
    if (representation == "tube arrow")
        return {makeTubeArrows, makeTubeArrowsColorMapped};
    if (representation == "arrow")
        return {makeArrows, makeArrowsColorMapped};
    if (representation == "line")
        return {makeLines, makeLinesColorMapped};
    throw logic_error("Invalid gui option for Representation.");
}

/// Removes the arrows, and their colors if there are any, of values that the function's mask marks
/// as invalid at a time.
void removeInvalid(const FunctionBase& function, double time, LargeVector<Arrow>& arrows,
                   Colors& colors)
{
    if (function.validity() == nullptr)
        return;
    const auto [lower, upper] = stepsAround(function.timeSteps(), time);
    const std::uint8_t* const isValid = function.validity()->data();
    std::size_t numKept = 0;
    for (std::size_t i = 0; i < arrows.size(); ++i)
    {
        if (isValid[lower * arrows.size() + i] == 0 || isValid[upper * arrows.size() + i] == 0)
            continue;
        arrows[numKept] = arrows[i];
        if (!colors.empty())
            colors[numKept] = colors[i];
        ++numKept;
    }
    arrows.resize(numKept);
    if (!colors.empty())
        colors.resize(numKept);
}

/// The 95th percentile of the lengths of the arrows, so that a few outliers, such as marks for missing
/// values, do not count. If that is 0, the length of the longest arrow. Considers a bounded number of
/// arrows, always the same ones, and ignores those that are not finite. 0 if there are no others.
double typicalLengthOf(const LargeVector<Arrow>& arrows)
{
    constexpr std::size_t maximumSamples = std::size_t{1} << 16;
    const std::size_t numSamples = std::min(arrows.size(), maximumSamples);
    std::vector<double> lengths;
    for (std::size_t i = 0; i < numSamples; ++i)
        if (const double length = norm(arrows[i * arrows.size() / numSamples].vector);
            std::isfinite(length))
            lengths.push_back(length);
    if (lengths.empty())
        return 0.0;
    const std::size_t numAbove = lengths.size() / 20;
    const auto typical = lengths.end() - 1 - static_cast<std::ptrdiff_t>(numAbove);
    std::ranges::nth_element(lengths, typical);
    return *typical > 0.0 ? *typical : std::ranges::max(lengths);
}

struct Extent
{
    /// The distance from the origin to the farthest position that is finite.
    double farthest = 0.0;
    std::size_t numNotFinite = 0;
};

Extent extentOf(const LargeVector<Arrow>& arrows)
{
    double farthest = 0.0;
    std::size_t numNotFinite = 0;
#pragma omp parallel for schedule(static) reduction(max : farthest) reduction(+ : numNotFinite)
    for (std::size_t i = 0; i < arrows.size(); ++i)
    {
        const double distance = norm(arrows[i].position);
        if (std::isfinite(distance))
            farthest = std::max(farthest, distance);
        numNotFinite += std::isfinite(distance + norm(arrows[i].vector)) ? 0 : 1;
    }
    return {farthest, numNotFinite};
}

/// The largest distance along an axis from a box to an end of an arrow. 0 for ends that are inside or
/// not finite.
double reachOf(const Arrow& arrow, const Tensor<double, 3>& lower, const Tensor<double, 3>& upper)
{
    double reach = 0.0;
    for (std::size_t axis = 0; axis < 3; ++axis)
        for (const double end : {arrow.position[axis], arrow.position[axis] + arrow.vector[axis]})
            if (std::isfinite(end))
                reach = std::max({reach, lower[axis] - end, end - upper[axis]});
    return reach;
}

/// The box between the 5th and the 95th percentile of the coordinates of the ends of the arrows.
/// Considers a bounded number of arrows, always the same ones, and ignores ends that are not finite.
std::pair<Tensor<double, 3>, Tensor<double, 3>> typicalBoxOf(const LargeVector<Arrow>& arrows)
{
    constexpr std::size_t maximumSamples = std::size_t{1} << 12;
    const std::size_t numSamples = std::min(arrows.size(), maximumSamples);
    Tensor<double, 3> lower{};
    Tensor<double, 3> upper{};
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        std::vector<double> coordinates;
        for (std::size_t i = 0; i < numSamples; ++i)
        {
            const auto& [position, vector] = arrows[i * arrows.size() / numSamples];
            for (const double end : {position[axis], position[axis] + vector[axis]})
                if (std::isfinite(end))
                    coordinates.push_back(end);
        }
        if (coordinates.empty())
            return {};
        const std::size_t numBeyond = coordinates.size() / 20;
        const auto nth = [&](std::size_t n)
        {
            const auto place = coordinates.begin() + static_cast<std::ptrdiff_t>(n);
            std::ranges::nth_element(coordinates, place);
            return *place;
        };
        lower[axis] = nth(numBeyond);
        upper[axis] = nth(coordinates.size() - 1 - numBeyond);
    }
    return {lower, upper};
}

/// A hint on the arrow that extends farthest beyond the others; empty if none extends far.
std::string hintOnFarArrow(const LargeVector<Arrow>& arrows)
{
    const auto box = typicalBoxOf(arrows);
    const Tensor<double, 3> lower = box.first;
    const Tensor<double, 3> upper = box.second;
    const Tensor<double, 3> sides = upper - lower;
    const double extent = *std::ranges::max_element(sides);
    double farthest = 0.0;
#pragma omp parallel for schedule(static) reduction(max : farthest)
    for (std::size_t i = 0; i < arrows.size(); ++i)
        farthest = std::max(farthest, reachOf(arrows[i], lower, upper));
    const auto arrow =
        std::ranges::find_if(arrows, [&](const Arrow& candidate)
                             { return reachOf(candidate, lower, upper) == farthest; });
    return arrow == arrows.end() ? "" : hintOnOutlier(extent, farthest, arrow->position);
}

class ShowHedgehogsAlgorithmlgorithm : public VisAlgorithm
{
public:
    struct Options : tavrin::Options
    {
        explicit Options(Control& control) : tavrin::Options(control)
        {
            addImpl<FieldTypes>(TypeListInput_t{}, "Field", "2D or 3D, vector or tensor field",
                                definedOn<DomainTypes>(Domain::any), Required::No);
            add<double>("Time", "Time", 0.0);
            addGroup("Graphics");
            add<InputChoices>("Representation", "Select representation glyph",
                              {"line", "arrow", "tube arrow"}, "arrow");
            add<double>("Scale", "", 1.0);
            add<double>("Width Scale", "", 1.0);
            add<InputChoices>("Vector anchor point at", "where the vector is anchored",
                              {"origin", "center", "destination"}, "origin");
            add<Color>("Color", "Hedgehogs color", Color{0.75F, 0.75F, 0.0F, 1.0F});
            addImpl<ColorMapDataObject>(DataObjectInput_t{}, "Color Map", "Color transfer function",
                                        InputDataObject::ignore, Required::No);
        }

        void optionChanged(const std::string&) override
        {
            setVisible("Color", get<ColorMapDataObject>("Color Map") == nullptr);
        }
    };

    struct VisOutputs : tavrin::VisOutputs
    {
        explicit VisOutputs(Control& control) : tavrin::VisOutputs(control)
        {
            addGraphics("Hedgehogs");
        }
    };

    using VisAlgorithm::VisAlgorithm;

    void execute(const tavrin::Options& options, const volatile bool& abortFlag) override;

private:
    using StartAndDirection = std::pair<Tensor<double, 3>, Tensor<double, 3>>;

    static StartAndDirection mapOrigin(Tensor<double, 3> position, Tensor<double, 3> vector)
    {
        return {position, vector};
    }
    static StartAndDirection mapCenter(Tensor<double, 3> position, Tensor<double, 3> vector)
    {
        return {position - 0.5 * vector, vector};
    }
    static StartAndDirection mapDestination(Tensor<double, 3> position, Tensor<double, 3> vector)
    {
        return {position - vector, vector};
    }
    static AnchorMapping mappingFor(const std::string& anchor);

    template<std::size_t D, std::size_t N>
    void exec(double scale, double time, const Function<Tensor<double, N>>& function,
              const PointSet<D>& domain, const std::shared_ptr<const ColorMapDataObject>& colorMap,
              LargeVector<Arrow>& arrows, Colors& colors);

    /// Passes a hint on unless it is empty.
    void tell(const std::string& text) const
    {
        if (!text.empty())
            hint(text);
    }

    template<typename Fill>
    void fillArrows(const std::string& title, std::size_t count, const Fill& fill);
};

void ShowHedgehogsAlgorithmlgorithm::execute(const tavrin::Options& options, const volatile bool&)
{
    const auto renderer = std::make_shared<graphics::ObjectRenderer>(
        graphics::GraphicsSystem::mInstance, graphics::ShadingType::Phong);
    const auto field =
        std::dynamic_pointer_cast<const FunctionBase>(options.get<FieldTypes>("Field"));
    if (field == nullptr)
    {
        debugLog() << "Input Field not set." << std::endl;
        return;
    }
    const auto scale = options.get<double>("Scale");
    const auto widthScale = options.get<double>("Width Scale");
    const auto time = options.get<double>("Time");
    const auto color = options.get<Color>("Color");
    const auto colorMap = options.get<ColorMapDataObject>("Color Map");
    const auto representation = options.get<std::string>("Representation");
    const DrawableMaker maker = makerFor(representation);

    LargeVector<Arrow> arrows;
    Colors colors;
    double neighborDistance = 0.0;
    bool isPointSet = false;
    visitObject<FieldTypes>(*field,
                            [&]<std::size_t N>(const Function<Tensor<double, N>>& function)
                            {
                                isPointSet = visitObject<DomainTypes>(
                                    *function.domain(),
                                    [&]<std::size_t D>(const PointSet<D>& domain)
                                    {
                                        exec<D, N>(scale, time, function, domain, colorMap, arrows,
                                                   colors);
                                        neighborDistance = typicalNeighborDistance(domain);
                                    });
                            });
    if (!isPointSet)
        throw logic_error("Invalid grid");

    const auto [farthest, numNotFinite] = extentOf(arrows);
    tell(hintOnInvalid(field->valuesPerStep() - arrows.size(), field->valuesPerStep()));
    tell(hintOnNotFinite(numNotFinite, arrows.size()));
    const double arrowLength = typicalLengthOf(arrows);
    const auto advice = adviseOnScale(arrowLength, scale, neighborDistance);
    tell(advice.hint);
    tell(hintOnFarArrow(arrows));
    if (!advice.suggestion.empty())
        suggest("Scale", advice.suggestion);
    if (representation == "line")
        tell(hintOnPrecision(arrowLength, farthest));

    const auto mapping = mappingFor(options.get<std::string>("Vector anchor point at"));
    setGraphics("Hedgehogs",
                colorMap == nullptr
                    ? maker.singleColor(renderer, color, arrows, widthScale, mapping)
                    : maker.colorMapped(renderer, colors, arrows, widthScale, mapping));
}

AnchorMapping ShowHedgehogsAlgorithmlgorithm::mappingFor(const std::string& anchor)
{
    if (anchor == "origin")
        return mapOrigin;
    if (anchor == "center")
        return mapCenter;
    if (anchor == "destination")
        return mapDestination;
    return {};
}

template<std::size_t D, std::size_t N>
void ShowHedgehogsAlgorithmlgorithm::exec(double scale, double time,
                                          const Function<Tensor<double, N>>& function,
                                          const PointSet<D>& domain,
                                          const std::shared_ptr<const ColorMapDataObject>& colorMap,
                                          LargeVector<Arrow>& arrows, Colors& colors)
{
    auto evaluator = function.makeEvaluator();
    // A time that the field does not have leaves the evaluator where it is, at the first step.
    evaluator.reset(time);
    if (!evaluator.isValid())
        hint(hintOnTime(time, evaluator.firstTime(), evaluator.lastTime()));
    arrows.resize(evaluator.size());
    colors.resize(colorMap == nullptr ? 0 : evaluator.size());
    const auto arrowAt = [&](const Tensor<double, D>& position, const Tensor<double, N>& value) {
        return Arrow{padded(position), padded(scale * value)};
    };

    if (function.domainPart() == PointSetBase::Points)
    {
        fillArrows("creating vector point data", domain.numPoints(),
                   [&](std::size_t i)
                   {
                       const auto value = evaluator.value(i);
                       arrows[i] = arrowAt(domain.point(i), value);
                       if (colorMap != nullptr)
                           colors[i] = colorMap->mapValueToColorScaled(norm(value));
                   });
    }
    else if (function.domainPart() == detail::Cells)
    {
        const auto* const complex = dynamic_cast<const EmbeddedCellComplex<D>*>(&domain);
        if (complex == nullptr)
            throw logic_error("Invalid grid");
        fillArrows("creating vector cell data", complex->numCells(),
                   [&](std::size_t i)
                   {
                       const auto value = evaluator.value(i);
                       arrows[i] = arrowAt(centerOf(*complex, i), value);
                       // Deliberately not scaled, unlike the colors of points.
                       if (colorMap != nullptr)
                           colors[i] = colorMap->colorMap().mapValueToColor(norm(value));
                   });
    }
    else
        throw logic_error("Grid is neither cell nor point based");
    removeInvalid(function, time, arrows, colors);
}

/// Calls `fill(i)` for all arrows, with a progress report.
template<typename Fill>
void ShowHedgehogsAlgorithmlgorithm::fillArrows(const std::string& title, std::size_t count,
                                                const Fill& fill)
{
    Progress progress(*this, title, count, false);
    const volatile bool neverAborts = false;
    detail::forBlocks(count, arrowsPerBlock, progress, neverAborts,
                      [&](std::size_t first, std::size_t size)
                      {
                          for (std::size_t i = first; i < first + size; ++i)
                              fill(i);
                      });
}

const AlgorithmRegister<ShowHedgehogsAlgorithmlgorithm> registration("Field/Show Hedgehogs",
                                                                     "Show hedgehogs.");

}
