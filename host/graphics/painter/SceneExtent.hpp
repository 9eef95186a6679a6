#pragma once

#include "AxisLayout.hpp"

#include <optional>

namespace tavrin::graphics::painter
{

/// The part of space that a scene occupies, and the view of it.
struct SceneExtent
{
    /// The outline to be drawn; nothing if there is none or it is not finite.
    std::optional<Box> outline;
    Placement placement;
    bool hasTransparent = false;
    /// The requested view; otherwise along the axis in which the scene is flat, or from the front
    /// right above.
    View view;
    /// Placed positions that are farthest toward all sides of the view; the origin in an empty scene.
    std::vector<Position> extremes;

    /// Considers everything that is finite. Throws `logic_error` for a drawable of unknown kind.
    SceneExtent(const Scene& scene, const std::optional<View>& wantedView);
};

}
