#pragma once

namespace tavrin::bench
{

/// Building the tree of half a million tetrahedra or hexahedra, and looking up the cell and the
/// weights at a million positions, on 1 and 2 threads, beside the locators of VTK. Prints how many
/// bytes each cell takes.
void addLocatorRows();

}
