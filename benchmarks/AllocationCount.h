#pragma once

#include <cstddef>

// Counts the process's heap blocks, by standing before the allocator in whatever program this is linked into.
// Any thread.

/// Blocks that live now.
long liveBlocks();
/// From now on counts the requests for at least `size` bytes.
void countAllocationsOf(std::size_t size);
long countedAllocations();
