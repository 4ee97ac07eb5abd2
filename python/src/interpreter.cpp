#include "interpreter.hpp"

#include <unistd.h>

namespace oxr::python {

void stayForEver() {
  for (;;)
    ::pause();
}

}  // namespace oxr::python
