#pragma once

#include <cstddef>

// Counts the process's heap blocks by replacing the allocation functions of the program it is linked
// into. Any thread.

/// The number of live blocks.
long liveBlocks();
/// From now on counts the requests for at least `size` bytes.
void countAllocationsOf(std::size_t size);
long countedAllocations();
