#pragma once

#include "../process/PainterJob.hpp"

namespace tavrin::graphics::painter
{

/// Performs a job in this process, with a size that can be painted. Keeps `state` up to date, except
/// for the outcome. Throws what `graphics::paint` throws.
PictureFile paint(const process::Job& job, process::JobState& state);

}
