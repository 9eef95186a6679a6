#pragma once

#include <string>

/// What to tell whoever looks at a picture of arrows that are much longer or shorter than their
/// neighbors are away: a line with the "Scale" that would make both equal; nothing for arrows in
/// proportion, or where a length is not known.
std::string adviceOnScale(double longestArrow, double scale, double neighborDistance);

/// What to tell whoever looks at lines, whose ends are in single precision, so far from the origin
/// that their directions are lost; nothing where they are kept.
std::string adviceOnPrecision(double longestArrow, double farthestPosition);

/// What to tell whoever asked for a time that a field does not have: between which it has values, and
/// that those of the first are shown.
std::string adviceOnTime(double time, double firstTime, double lastTime);
