#pragma once

#ifdef OXR_HAVE_LIBCOB

#include <libcob.h>

#include <cstddef>

namespace oxr::bench {

// A move between two fields by a COBOL run time: what a program in that language would do with the same bytes.
class CobolMove {
 public:
  struct Field {
    int type;  // COB_TYPE_NUMERIC_PACKED, COB_TYPE_NUMERIC_DISPLAY, ...
    unsigned short digits;
    short scale;
    unsigned char* bytes;
    std::size_t size;
    const cob_pic_symbol* picture = nullptr;  // of an edited field, to an empty entry
  };

  CobolMove(const Field& from, const Field& to)
      : fromAttributes_(attributes(from)),
        toAttributes_(attributes(to)),
        from_{from.size, from.bytes, &fromAttributes_},
        to_{to.size, to.bytes, &toAttributes_} {
    static cob_module* module = nullptr;
    static cob_global* global = nullptr;
    if (module == nullptr) {
      cob_init(0, nullptr);
      cob_module_enter(&module, &global, 0);
    }
  }
  CobolMove(const CobolMove&) = delete;
  CobolMove& operator=(const CobolMove&) = delete;

  void operator()() { cob_move(&from_, &to_); }

 private:
  static cob_field_attr attributes(const Field& field) {
    return {static_cast<unsigned short>(field.type), field.digits, field.scale, COB_FLAG_HAVE_SIGN, field.picture};
  }

  cob_field_attr fromAttributes_, toAttributes_;
  cob_field from_, to_;
};

}  // namespace oxr::bench

#endif
