#pragma once

// Marks what libkelhost.so exports. Everything else in it is hidden.
#define KELHOST_EXPORT __attribute__((visibility("default")))
