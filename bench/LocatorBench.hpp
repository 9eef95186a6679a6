#pragma once

namespace tavrin::bench
{

/// Building the tree of half a million tetrahedra or hexahedra, and locating a million positions with their
/// weights, on 1 and 2 threads, compared with the locators of VTK. Prints the memory per cell.
void addLocatorRows();

}
