#pragma once

#include <tavrin/function/Function.hpp>

namespace tavrin::pipeline
{

/// Chooses at most `maximum` (at least 1) of a function's values, evenly spread in space, always the
/// same ones, for a picture with fewer arrows. The result lives on a point cloud of the same dimension;
/// values on cells are at the centers of the cells. Name, times, and the mask are kept. A series is
/// read step by step, as the values of a step are needed.
///
/// On a grid whose points are evenly spaced along each axis, every n-th point along each axis is
/// chosen, so that the distances along all axes are similar. Otherwise space is divided into cubes, of
/// each of which the sample nearest to its center is chosen, in case of a tie the one with the lowest
/// index.
///
/// Returns the function itself where no more than `maximum` of its values are valid, and where its
/// domain has no positions. Values that are invalid at all times and positions that are not finite do
/// not count.
TAVRIN_API std::shared_ptr<const FunctionBase> thinned(
    const std::shared_ptr<const FunctionBase>& function, std::size_t maximum);

}
