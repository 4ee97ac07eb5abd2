#pragma once

#include "kelexport.hpp"

// Where the host goes when the system itself fails: an event in the log, and where nothing else helps the end of the
// process. Any thread may call at any time.
class KELHOST_EXPORT KelAbend {
 public:
  // A tagged value that goes into the event: nothing, an integer or a text. The text must live as long as the insert.
  class Insert {
   public:
    // What an insert holds.
    enum class Tag { none = 0, integer = 1, text = 2 };

    constexpr Insert() = default;
    constexpr Insert(long value) : tag_(Tag::integer), integer_(value) {}  // NOLINT: call sites pass plain values
    constexpr Insert(int value) : Insert(static_cast<long>(value)) {}      // NOLINT
    constexpr Insert(const char* text) : tag_(Tag::text), text_(text) {}   // NOLINT

    constexpr Tag tag() const { return tag_; }            // what it holds
    constexpr long integer() const { return integer_; }   // 0 unless the tag is `integer`
    constexpr const char* text() const { return text_; }  // null unless the tag is `text`

   private:
    Tag tag_ = Tag::none;
    long integer_ = 0;
    const char* text_ = nullptr;
  };

  // Writes an event with the source position and those of the inserts that carry something. `version` names the
  // revision of the caller's source and is not written. `data` is an address to look at in a dump, or null. The last
  // argument is reserved: false.
  static void logSystemErrorInternal(const char* file, int line, const char* version, const Insert& a, const Insert& b,
                                     const Insert& c, const Insert& d, const Insert& e, const Insert& f,
                                     const void* data, bool) noexcept;
  // The same, and ends the process with abort, so that there is a dump.
  [[noreturn]] static void logSystemErrorAndTerminateProcessInternal(const char* file, int line, const char* version,
                                                                     const Insert& a, const Insert& b, const Insert& c,
                                                                     const Insert& d, const Insert& e, const Insert& f,
                                                                     const void* data, bool) noexcept;

  // Called when memory cannot be had, before the allocator gives up. Writes an event and returns.
  static void newHandler() noexcept;
};
