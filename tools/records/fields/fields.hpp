#pragma once

// The way into this folder: the bytes of one field become a value, or a fault that tells where and why not.

#include "records/fields/converter.hpp"
#include "records/fields/faults.hpp"
#include "records/fields/observer.hpp"
#include "records/fields/physicalform.hpp"
#include "records/fields/settings.hpp"
#include "records/fields/writer.hpp"
