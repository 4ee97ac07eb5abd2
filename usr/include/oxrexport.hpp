#pragma once

// Marks what liboxrbitstreamutilities.so exports. Everything else in it is hidden.
#define OXR_EXPORT __attribute__((visibility("default")))
