#pragma once

#include <string>

namespace oxr::pictures {

// The two machines of a worker's checker as Graphviz graphs, made from the very tables that the checker goes by. Each
// ends with a newline.
std::string workerMachine();
std::string treeMachine();

}  // namespace oxr::pictures
