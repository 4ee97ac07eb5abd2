#pragma once

// RapidJSON's writer. All code that uses RapidJSON includes this header before any of the library's own.
//
// Its stacks ask whether there is room by adding to their pointer, which is null at first. clang's sanitizer calls that
// undefined; the functions that do it carry this macro.
#if defined(__has_feature)
#if __has_feature(undefined_behavior_sanitizer)
#define RAPIDJSON_FORCEINLINE __attribute__((no_sanitize("pointer-overflow")))
#endif
#endif

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
