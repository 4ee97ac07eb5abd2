// Prints a picture's source: "machine_pictures worker" or "machine_pictures tree". ./dev docs makes SVG of it.

#include <cstring>
#include <iostream>

#include "pictures/machines.hpp"

int main(int count, char** arguments) {
  const char* const which = count == 2 ? arguments[1] : "";
  if (std::strcmp(which, "worker") == 0)
    std::cout << oxr::pictures::workerMachine();
  else if (std::strcmp(which, "tree") == 0)
    std::cout << oxr::pictures::treeMachine();
  else
    return 2;
}
