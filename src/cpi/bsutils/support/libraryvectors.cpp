#include "support/libraryvectors.hpp"

#if defined(OXR_COUNT_GENERAL_WAYS)
namespace oxr {

core::Vectors& libraryVectors() {
  return core::vectors;
}

}  // namespace oxr
#endif
