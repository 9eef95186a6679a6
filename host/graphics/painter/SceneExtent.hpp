#pragma once

#include "AxisLayout.hpp"

#include <optional>

namespace tavrin::graphics::painter
{

/// What a scene takes up.
struct SceneExtent
{
    /// The outline to be drawn, if there is one and it is finite.
    std::optional<Box> outline;
    Placement placement;
    bool hasTransparent = false;
    /// The one asked for, or else along which the scene is thin, or from the front right above.
    View view;
    /// Those that reach farthest to all sides of the view, placed; the origin where nothing is.
    std::vector<Position> extremes;

    /// Looks at everything that is finite. Throws `logic_error` for a drawable of unknown kind.
    SceneExtent(const Scene& scene, const std::optional<View>& wantedView);
};

}
