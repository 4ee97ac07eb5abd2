#pragma once

#include "core/vectors.hpp"
#include "oxrexport.hpp"

namespace oxr {

#if defined(OXR_COUNT_GENERAL_WAYS)
// What core::vectors is in the library; a test program has a core of its own beside it. Only builds with tests tell.
OXR_EXPORT core::Vectors& libraryVectors();
#endif

}  // namespace oxr
