#pragma once

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define OXR_LEAK_CHECKED
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define OXR_LEAK_CHECKED
#endif
#if defined(OXR_LEAK_CHECKED)
#include <sanitizer/lsan_interface.h>
#endif

namespace oxr {

// Tells a leak checker, where one watches, that a block stays allocated on purpose.
inline void leakOnPurpose([[maybe_unused]] const void* block) {
#if defined(OXR_LEAK_CHECKED)
  if (block != nullptr) __lsan_ignore_object(block);
#endif
}

}  // namespace oxr
