#pragma once

#include "records/program/program.hpp"

namespace oxr::mq {

extern const rec::Program kOxrmq;

}  // namespace oxr::mq
