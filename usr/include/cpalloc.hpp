#pragma once

#include "oxrexport.hpp"

// The C library's allocator, which tells the host when memory cannot be had. Any thread may call at any time.
//
// Example:
//   void* block = cpMalloc(80);
//   block = cpRealloc(block, 160);
//   cpFree(block);

// A block of `size` bytes, to be released with cpFree. Null when memory cannot be had, after KelAbend::newHandler()
// was called and has returned.
OXR_EXPORT void* cpMalloc(unsigned long size);

// Changes the size of a block of this family; a null `pointer` asks for a new one. When memory cannot be had the same
// happens as in cpMalloc, and the old block stays valid. A size of 0 may release the block and give null, which counts
// as a want of memory.
OXR_EXPORT void* cpRealloc(void* pointer, unsigned long size);

// Releases a block; null is allowed.
OXR_EXPORT void cpFree(void* pointer);
