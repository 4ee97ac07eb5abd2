#include "records/copybook/fieldshape.hpp"

#include <array>

// USAGE and PICTURE together make a field: a table says what each usage is and how many bytes it takes without a
// picture, and the category of the picture says which usages it may stand with.

namespace oxr::rec::copybook {

namespace {

constexpr unsigned kMaxBinaryDigits = 38;
constexpr unsigned kIntegerDigits = 18;  // a binary number of more is wider than 8 bytes
constexpr std::uint32_t kBytesPerWideCharacter = 2;

struct UsageForm {
  Kind kind;                 // of a number, if the usage needs a picture
  std::uint32_t bytes = 0;   // 0: the picture tells
  std::uint16_t digits = 0;  // of the largest value, if it is a number without a picture
};

constexpr std::array<UsageForm, 17> kUsageForms = {{
    {Kind::external},
    {Kind::binary},
    {Kind::nativeBinary},
    {Kind::packed},
    {Kind::unsignedPacked},
    {Kind::national},
    {Kind::dbcs},
    {Kind::shortFloat, 4},
    {Kind::longFloat, 8},
    {Kind::nativeBinary, 1, 3},
    {Kind::nativeBinary, 2, 5},
    {Kind::nativeBinary, 4, 10},
    {Kind::nativeBinary, 8, 19},
    {Kind::opaque, 4},
    {Kind::opaque, 4},
    {Kind::opaque, 4},
    {Kind::opaque, 8},
}};
static_assert(kUsageForms[static_cast<std::size_t>(Usage::longFloat)].kind == Kind::longFloat);
static_assert(kUsageForms[static_cast<std::size_t>(Usage::binaryDouble)].bytes == 8);
static_assert(kUsageForms[static_cast<std::size_t>(Usage::codePointer)].kind == Kind::opaque);

constexpr std::uint32_t kGnuPointerBytes = 8;
constexpr std::uint16_t kUnsignedDoubleDigits = 20;

constexpr SignPlace kSignPlaces[2][2] = {{SignPlace::trailingIncluded, SignPlace::trailingSeparate},
                                         {SignPlace::leadingIncluded, SignPlace::leadingSeparate}};

// The bytes that hold any number of so many digits. A digit has log2(10) bits, rounded up here by so little that 38
// digits do not show it.
constexpr std::uint32_t leastBytes(unsigned digits, bool isSigned) {
  constexpr unsigned kScale = 10000000;
  constexpr unsigned kBitsPerDigit = 33219281;
  const std::uint32_t bits = (digits * kBitsPerDigit + kScale - 1) / kScale + (isSigned ? 1 : 0);
  return (bits + 7) / 8;
}
static_assert(leastBytes(2, true) == 1 && leastBytes(7, false) == 3 && leastBytes(7, true) == 4);
static_assert(leastBytes(18, true) == 8 && leastBytes(20, true) == 9 && leastBytes(38, true) == 16);

std::uint32_t binaryBytes(unsigned digits, bool isSigned, BinarySizes sizes) {
  if (digits > kIntegerDigits) return leastBytes(digits, true);
  if (sizes == BinarySizes::oneToEight) return leastBytes(digits, isSigned);
  if (digits <= 2 && sizes == BinarySizes::oneTwoFourEight) return 1;
  return digits <= 4 ? 2 : digits <= 9 ? 4 : 8;
}

class FieldShaper {
 public:
  FieldShaper(const Source& source, const Entry& entry, const Inherited& inherited, const CopybookOptions& options,
              Item& item)
      : source_(source),
        entry_(entry),
        inherited_(inherited),
        options_(options),
        usage_(inherited.usage ? inherited.usage->usage : Usage::display),
        form_(kUsageForms[static_cast<std::size_t>(usage_)]),
        item_(item) {}

  void shape() {
    item_.kind = form_.kind;
    if (form_.bytes != 0) {
      withoutPicture();
      return;
    }
    if (!entry_.picture)
      source_.raise(entry_.place,
                    (item_.isFiller() ? "the entry" : item_.name) + " has no picture and no items below it");
    item_.picture = entry_.picture->text;
    item_.isSigned = entry_.picture->picture.isSigned;
    if (entry_.picture->picture.category == Picture::Category::numeric)
      number();
    else
      text();
  }

 private:
  void withoutPicture() {
    if (entry_.picture) source_.raise(entry_.picture->place, "an item of this usage has no picture");
    item_.size = usage_ == Usage::pointer && options_.dialect == Dialect::gnucobol ? kGnuPointerBytes : form_.bytes;
    if (form_.digits == 0) return;
    item_.isSigned = !inherited_.usage->isUnsigned;
    item_.digits = usage_ == Usage::binaryDouble && !item_.isSigned ? kUnsignedDoubleDigits : form_.digits;
  }

  void text() {
    const Picture& picture = entry_.picture->picture;
    const Category category = picture.category;
    item_.kind = kindOfText(category);
    if (entry_.sign) source_.raise(entry_.sign->place, "SIGN needs a picture of S, 9, V and P only");
    item_.isJustifiedRight = entry_.isJustified;
    item_.isBlankWhenZero = item_.kind == Kind::edited && entry_.isBlankWhenZero;
    item_.hasDecimalComma = item_.kind == Kind::edited && source_.hasDecimalComma();
    const bool isWide = item_.kind == Kind::national || item_.kind == Kind::dbcs;
    if (isWide && picture.characters > kMaxRecordBytes / kBytesPerWideCharacter)
      source_.raise(entry_.picture->place, "the picture is too long");
    item_.size = picture.characters * (isWide ? kBytesPerWideCharacter : 1);
  }

  using Category = Picture::Category;

  // N is national text unless the usage says that it is double-byte text.
  Kind kindOfText(Category category) const {
    const bool isDisplay = usage_ == Usage::display;
    if (category == Category::wide && (isDisplay || usage_ == Usage::national)) return Kind::national;
    if ((category == Category::wide || category == Category::graphic) && usage_ == Usage::dbcs) return Kind::dbcs;
    if (category == Category::graphic && isDisplay) return Kind::dbcs;
    if (isDisplay) return category == Category::text ? Kind::text : Kind::edited;
    const Place place = entry_.usage ? entry_.usage->place : entry_.place;
    if (usage_ == Usage::national) source_.raise(place, "NATIONAL needs a picture of N");
    if (usage_ == Usage::dbcs) source_.raise(place, "DISPLAY-1 needs a picture of G or N");
    source_.raise(place, "this usage needs a picture of S, 9, V and P only");
  }

  void number() {
    const Picture& picture = entry_.picture->picture;
    item_.digits = picture.digits;
    item_.scale = picture.scale;
    if (item_.kind == Kind::external) {
      item_.size = picture.digits;
      item_.isBlankWhenZero = entry_.isBlankWhenZero;
      sign();
      return;
    }
    if (entry_.sign) source_.raise(entry_.sign->place, "SIGN is for numbers of USAGE DISPLAY only");
    item_.size = sizeOfNumber();
  }

  std::uint32_t sizeOfNumber() const {
    const unsigned digits = item_.digits;
    switch (item_.kind) {
      case Kind::packed:
        return digits / 2 + 1;
      case Kind::unsignedPacked:
        if (item_.isSigned) source_.raise(entry_.picture->place, "a COMP-6 number has no sign");
        return (digits + 1) / 2;
      case Kind::binary:
      case Kind::nativeBinary:
        if (digits > kMaxBinaryDigits)
          source_.raise(entry_.picture->place,
                        "a binary number has at most " + std::to_string(kMaxBinaryDigits) + " digits");
        return binaryBytes(digits, item_.isSigned, options_.binarySizes);
      default:
        source_.raise(entry_.picture->place, "numbers of USAGE NATIONAL or DISPLAY-1 are not supported");
    }
  }

  // A SIGN clause of the field itself makes it signed even if its picture has no S; one that is handed down does not.
  void sign() {
    if (entry_.sign) item_.isSigned = true;
    if (!item_.isSigned) return;
    const SignClause clause = inherited_.sign.value_or(SignClause{});
    item_.sign = kSignPlaces[clause.isLeading][clause.isSeparate];
    if (clause.isSeparate) ++item_.size;
  }

  const Source& source_;
  const Entry& entry_;
  const Inherited& inherited_;
  const CopybookOptions& options_;
  const Usage usage_;
  const UsageForm& form_;
  Item& item_;
};

bool isAlignedBySize(Kind kind) {
  switch (kind) {
    case Kind::binary:
    case Kind::nativeBinary:
    case Kind::shortFloat:
    case Kind::longFloat:
    case Kind::opaque:
      return true;
    default:
      return false;
  }
}

}  // namespace

Inherited Inherited::with(const Entry& entry, Dialect dialect) const {
  const bool fromGroup = isSynchronized && dialect == Dialect::mainframe;
  return {entry.usage ? entry.usage : usage, entry.sign ? entry.sign : sign,
          fromGroup || entry.synchronized.has_value()};
}

void shapeField(const Source& source, const Entry& entry, const Inherited& inherited, const CopybookOptions& options,
                Item& item) {
  FieldShaper(source, entry, inherited, options, item).shape();
}

std::uint32_t boundaryOf(const Item& item, Dialect dialect) {
  constexpr std::uint32_t kFullword = 4;
  if (!isAlignedBySize(item.kind) || (item.size != 2 && item.size != 4 && item.size != 8)) return 1;
  const bool isCut = dialect == Dialect::mainframe && item.kind != Kind::longFloat;
  return isCut && item.size > kFullword ? kFullword : item.size;
}

}  // namespace oxr::rec::copybook
