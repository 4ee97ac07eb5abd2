#pragma once

// What every exported member is built with: its trace, the guard of its fast way, the failures that it raises.
#include "support/failures.hpp"
#include "support/fastway.hpp"
#include "support/raise.hpp"
#include "support/trace.hpp"
