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
    /// The requested view. By default it is along the axis in which the scene is flat, or otherwise from
    /// above the front right corner.
    View view;
    /// The placed positions that are farthest in each of several directions of the view; the origin for
    /// an empty scene.
    std::vector<Position> extremes;

    /// Considers everything that is finite. Throws `logic_error` for a drawable of unknown kind.
    SceneExtent(const Scene& scene, const std::optional<View>& wantedView);
};

}
