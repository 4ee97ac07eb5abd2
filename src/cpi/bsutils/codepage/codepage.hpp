#pragma once

#include <new>
#include <span>
#include <tuple>
#include <utility>

#include "codepage/singlebyteform.hpp"
#include "codepage/utf16form.hpp"
#include "codepage/utf8form.hpp"
#include "cpunicodeconverter.hpp"
#include "kelforkhold.hpp"

namespace oxr {

// All that the library knows of a code page beyond what the exported members of its converter tell. Nobody else asks
// how a code page is read or written.
//
// The general way of every conversion is ICU. The code pages that most messages are in have a fast way beside it: their
// form. It goes as far as the text is one that it knows; from there on ICU converts, which gives the same result as ICU
// from the start, because a form ends between two characters and is not taken while the converter holds something from
// before. Bytes become units and units bytes.
struct CodePage {
  // The forms, in the order in which they are asked for. One more is a file like theirs and a word here.
  using Forms = std::tuple<SingleByteForm, Utf8Form, Utf16Form<std::endian::big>, Utf16Form<std::endian::little>>;

  // Whether the code page has a form at all; ICU alone converts any other.
  static bool hasForm(const CPUnicodeConverter& page) { return page.form != kNoForm; }

  // Converts the first stretch of a text, if only that. What is left of the room may be overwritten.
  [[gnu::always_inline]] static core::Advance convertFast(const CPUnicodeConverter& page, std::span<const char> bytes,
                                                          OutputUnits units) {
    if (page.holdsUnitsBack) return {};
    return inForm<core::Advance>(
        page, [&](auto form)
                  __attribute__((always_inline)) { return form.decode(tablesOf(page), asBytes(bytes), units); });
  }
  [[gnu::always_inline]] static core::Advance convertFast(const CPUnicodeConverter& page, InputUnits units,
                                                          std::span<char> bytes) {
    if (page.holdsBytesBack) return {};
    return inForm<core::Advance>(
        page, [&](auto form)
                  __attribute__((always_inline)) { return form.encode(tablesOf(page), units, asBytes(bytes)); });
  }

  // The number of units of a text where it is known before it is converted; 0 where it is not, and while the converter
  // holds units back.
  [[gnu::always_inline]] static std::size_t unitCount(const CPUnicodeConverter& page, std::span<const char> bytes) {
    if (page.holdsUnitsBack) return 0;
    return inForm<std::size_t>(
        page, [&](auto form) __attribute__((always_inline)) { return form.unitCount(asBytes(bytes)); });
  }
  // Converts such a text into that many units; false when it is not well formed.
  [[gnu::always_inline]] static bool convertCountedFast(const CPUnicodeConverter& page, std::span<const char> bytes,
                                                        unsigned short* units) {
    return inForm<bool>(
        page, [&](auto form)
                  __attribute__((always_inline)) { return form.decodeCounted(tablesOf(page), asBytes(bytes), units); });
  }

  // Reads a whole text. Where it is not served `target` may have changed.
  [[gnu::always_inline]] static bool readTextFast(const CPUnicodeConverter& page, KelWstring& target,
                                                  std::span<const char> bytes) {
    return readPlainFast(page, target, bytes) || readAnyFast(page, target, bytes);
  }
  // Reads a plain text for which the string has a place. It calls nothing, so that what calls it saves no registers.
  [[gnu::always_inline]] static bool readPlainFast(const CPUnicodeConverter& page, KelWstring& target,
                                                   std::span<const char> bytes) {
    if (page.holdsUnitsBack) return false;
    return inForm<bool>(
        page, [&](auto form) __attribute__((always_inline)) {
          const std::size_t count = form.plainCount(asBytes(bytes));
          unsigned short* const units = count != 0 ? target.resizeInPlace(static_cast<unsigned>(count)) : nullptr;
          return units != nullptr && form.decodePlain(tablesOf(page), asBytes(bytes), units);
        });
  }
  // Reads any text that has a form.
  static bool readAnyFast(const CPUnicodeConverter& page, KelWstring& target, std::span<const char> bytes);

  // Writes a whole text into `size` bytes of room, which becomes the number of bytes written. The empty text is left to
  // ICU, which may hold bytes back that come out with it. Where it is not served the room may be overwritten.
  [[gnu::always_inline]] static bool writeTextFast(const CPUnicodeConverter& page, char* target, int& size,
                                                   UnitView text) {
    if (target == nullptr || text.empty()) return false;
    const core::Advance done = convertFast(page, std::span(text), std::span(target, static_cast<std::size_t>(size)));
    if (done.read != text.size()) return false;
    size = static_cast<int>(done.written);
    return true;
  }

  // Reads a byte that is a character by itself; false for any other.
  [[gnu::always_inline]] static bool convertByteFast(const CPUnicodeConverter& page, char byte, unsigned short& unit) {
    if (page.holdsUnitsBack) return false;
    return inForm<bool>(
        page, [&](auto form) __attribute__((always_inline)) {
          return form.decodeByte(tablesOf(page), static_cast<unsigned char>(byte), unit);
        });
  }

  // What each byte of the code page reads as. Null when the code page is not a single-byte one, and while the converter
  // holds units back, which must come out before any others. Costs a load and a compare: ask again for each field.
  static const core::SingleByteTable* byteTable(const CPUnicodeConverter& page) {
    return page.holdsUnitsBack ? nullptr : page.byteTable;
  }

  // Whether the converter is in its initial state on the way to Unicode, as far as can be told at no cost.
  static bool isAtStart(const CPUnicodeConverter& page) { return page.form != kNoForm && !page.holdsUnitsBack; }

  // Whether the converter holds a unit back on the way from Unicode, whose bytes must come out before any others.
  static bool holdsBytes(const CPUnicodeConverter& page) { return page.holdsBytesBack; }

  // Put the converter into its initial state on the way to Unicode and on the way back: what an error or the end of a
  // piece of text left in it is gone.
  static void forgetHeldUnits(const CPUnicodeConverter& page) {
    ucnv_resetToUnicode(page.converter.getAlias());
    page.holdsUnitsBack = false;
  }
  static void forgetHeldBytes(const CPUnicodeConverter& page) {
    ucnv_resetFromUnicode(page.converter.getAlias());
    page.holdsBytesBack = false;
  }

  class KeptState;
  struct General;

 private:
  friend class ::CPUnicodeConverter;

  static constexpr unsigned char kNoForm = std::tuple_size_v<Forms>;

  // The place of a converter's form in the list; kNoForm for a code page that only ICU converts.
  static unsigned char formOf(const KelConverter& shared, std::string_view icuName) {
    return [&]<std::size_t... kIndex>(std::index_sequence<kIndex...>) {
      unsigned char found = 0;
      // unreached: what goes on to the next form is never true
      static_cast<void>(((std::tuple_element_t<kIndex, Forms>::isFormOf(shared, icuName) || (++found, false)) || ...));
      return found;
    }
    (std::make_index_sequence<kNoForm>());
  }

  // What `call` gives for the form of the converter; without a form nothing, as Result{}. All of it is inlined: a call
  // that goes through memory would cost as much as the conversion.
  template <class Result, std::size_t kIndex = 0, class Call>
  [[gnu::always_inline]] static Result inForm(const CPUnicodeConverter& page, Call call) {
    if constexpr (kIndex == kNoForm)
      return Result{};
    else
      return page.form == kIndex ? call(std::tuple_element_t<kIndex, Forms>{}) : inForm<Result, kIndex + 1>(page, call);
  }

  static PageTables tablesOf(const CPUnicodeConverter& page) { return {page.byteTable, page.unitTable}; }
  static InputBytes asBytes(std::span<const char> text) {
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
  }
  static OutputBytes asBytes(std::span<char> text) {
    return {reinterpret_cast<unsigned char*>(text.data()), text.size()};
  }
};

// Keeps what a converter holds on its way to Unicode (shift state, byte order, half characters) over an operation that
// must not change it. ICU takes a lock to make a converter and one to close it.
//
// Example:
//   CodePage::KeptState kept(converter, isPeek);
//   ... convert ...
//   // the converter is as before
class CodePage::KeptState {
 public:
  // Keeps the state if `keep`. Keeping costs a clone: ask for it only where there may be a state.
  KeptState(CPUnicodeConverter& page, bool keep) : page_(page), heldUnitsBack_(page.holdsUnitsBack) {
    if (!keep) return;
    UErrorCode status = U_ZERO_ERROR;
    const KelForkHold hold;
    saved_.adoptInstead(ucnv_clone(page.converter.getAlias(), &status));
    if (saved_.isNull()) throw std::bad_alloc();  // unreached: but without memory
  }
  KeptState(const KeptState&) = delete;
  KeptState& operator=(const KeptState&) = delete;
  // Puts the kept state back.
  ~KeptState() {
    if (saved_.isNull()) return;
    const KelForkHold hold;
    page_.converter.adoptInstead(saved_.orphan());
    page_.holdsUnitsBack = heldUnitsBack_;
  }
  // Gives up the kept state: the present one stays.
  void drop() {
    if (saved_.isNull()) return;
    const KelForkHold hold;
    saved_.adoptInstead(nullptr);
  }

 private:
  CPUnicodeConverter& page_;
  bool heldUnitsBack_;
  icu::LocalUConverterPointer saved_;
};

}  // namespace oxr
