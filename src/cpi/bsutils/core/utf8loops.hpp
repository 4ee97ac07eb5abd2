// The vector loops of UTF-8. `vectors.cpp` includes this file once for each kind of vectors that it compiles for.
//
// A block is 16 bytes, or 8 units. Each of its places makes an element, or three, as if a character began there; bits
// tell which places and elements are wanted, and a shuffle from a table moves those together. So nothing branches on
// the lengths of characters. A bit for each place also tells whether all is well formed: trail bytes have to stand
// where the lead bytes before want them.

HWY_BEFORE_NAMESPACE();
namespace oxr::core::HWY_NAMESPACE {
namespace {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128 || HWY_HAVE_SCALABLE || \
    __BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__

Advance decodeUtf8Blocks(const unsigned char*, std::size_t, unsigned short*, std::size_t) {
  return {};
}
Advance encodeUtf8Blocks(const unsigned short*, std::size_t, unsigned char*, std::size_t) {
  return {};
}

#else

namespace utf8 {

using Bytes = hn::FixedTag<std::uint8_t, 16>;
using SignedBytes = hn::FixedTag<std::int8_t, 16>;  // lead bytes from -64 on, trail bytes below, ASCII from 0 on
using Units = hn::FixedTag<std::uint16_t, 8>;
using SignedUnits = hn::FixedTag<std::int16_t, 8>;
using ByteVector = hn::Vec<Bytes>;
using UnitVector = hn::Vec<Units>;

constexpr std::size_t kBytes = 16;
constexpr std::size_t kUnits = 8;

// A bit for each place of a vector.
template <class Tag>
std::uint32_t bitsOf(Tag tag, hn::Mask<Tag> mask) {
  std::conditional_t<hn::MaxLanes(Tag()) == 16, std::uint16_t, std::uint8_t> bits;
  hn::StoreMaskBits(tag, mask, reinterpret_cast<std::uint8_t*>(&bits));
  return bits;
}
std::uint32_t bitsAbove(hn::Vec<SignedBytes> bytes, std::uint8_t limit) {
  const SignedBytes tag;
  return bitsOf(tag, hn::Gt(bytes, hn::Set(tag, static_cast<std::int8_t>(limit))));
}
constexpr std::uint32_t firstBits(std::size_t count) {
  return (std::uint32_t{1} << count) - 1;
}

// The bytes from `at` on, of a text of at least 16; zeros after its end.
ByteVector loadAt(const unsigned char* text, std::size_t size, std::size_t at) {
  static constexpr std::uint8_t kOrder[32] = {0,    1,    2,    3,    4,    5,    6,    7,    8,    9,    10,
                                              11,   12,   13,   14,   15,   0x80, 0x80, 0x80, 0x80, 0x80, 0x80,
                                              0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80};
  if (size - at >= kBytes) return hn::LoadU(Bytes(), text + at);
  const std::size_t first = kBytes - (size - at);
  return hn::TableLookupBytesOr0(hn::LoadU(Bytes(), text + size - kBytes), hn::LoadU(Bytes(), kOrder + first));
}

// Has a step write a block where the output is, or, where that has less room than the step may overwrite, to a place of
// its own first. False when the block finds no room.
template <std::size_t kMost, class Element, class Step>
HWY_INLINE bool writeBlock(Element* out, std::size_t room, Advance& done, Step step) {
  if (room - done.written >= kMost) [[likely]] {
    done.written += step(out + done.written);
    return true;
  }
  Element block[kMost];
  const std::size_t count = step(block);
  if (count > room - done.written) return false;
  std::memcpy(out + done.written, block, count * sizeof(Element));
  done.written += count;
  return true;
}

// The order of the bytes of a vector.
struct alignas(16) Orders {
  std::uint8_t bytes[256][kBytes];
};
// The units whose bits are set, moved together.
constexpr Orders kTogether = [] {
  Orders orders{};
  for (unsigned kept = 0; kept < 256; ++kept) {
    std::size_t count = 0;
    for (unsigned unit = 0; unit < kUnits; ++unit)
      if ((kept >> unit & 1) != 0) {
        orders.bytes[kept][count++] = static_cast<std::uint8_t>(2 * unit);
        orders.bytes[kept][count++] = static_cast<std::uint8_t>(2 * unit + 1);
      }
  }
  return orders;
}();

// Eight places as units, each from the lower six bits of the two after it, too.
struct Places {
  UnitVector byte, second, third, before;

  UnitVector units() const {
    const Units d;
    const auto two = hn::Or(hn::And(hn::ShiftLeft<6>(byte), hn::Set(d, 0x7C0)), second);
    const auto three = hn::Or(hn::Or(hn::ShiftLeft<12>(byte), hn::ShiftLeft<6>(second)), third);
    return choose(0x7F, choose(0xDF, three, two), byte);
  }
  // The same where some begin characters of four bytes, which are two units: at the place of the lead and after it.
  UnitVector unitsWithPairs() const {
    const Units d;
    const auto lead = hn::Add(hn::Or(hn::Or(hn::ShiftLeft<8>(hn::And(byte, hn::Set(d, 7))), hn::ShiftLeft<2>(second)),
                                     hn::ShiftRight<4>(third)),
                              hn::Set(d, 0xD7C0));
    const auto trail = hn::Or(hn::Or(hn::ShiftLeft<6>(hn::And(second, hn::Set(d, 0xF))), third), hn::Set(d, 0xDC00));
    const auto isTrail = hn::Gt(hn::BitCast(SignedUnits(), before), hn::Set(SignedUnits(), 0xEF));
    return hn::IfThenElse(hn::RebindMask(d, isTrail), trail, choose(0xEF, lead, units()));
  }

 private:
  // One of two, by whether the byte is above a limit.
  UnitVector choose(int limit, UnitVector above, UnitVector below) const {
    const SignedUnits d;
    const auto isAbove = hn::Gt(hn::BitCast(d, byte), hn::Set(d, static_cast<std::int16_t>(limit)));
    return hn::IfThenElse(hn::RebindMask(Units(), isAbove), above, below);
  }
};

struct Decoding {
  ByteVector bytes;
  hn::Vec<SignedBytes> signedBytes = hn::BitCast(SignedBytes(), bytes);
  std::uint32_t others = bitsOf(SignedBytes(), hn::Lt(signedBytes, hn::Zero(SignedBytes())));
  ByteVector second = sixBits(hn::ShiftRightBytes<1>(Bytes(), bytes));
  std::uint32_t leads = 0, pairs = 0;
  std::size_t taken = kBytes;  // of the block, whole characters

  static ByteVector sixBits(ByteVector trail) { return hn::And(trail, hn::Set(Bytes(), 0x3F)); }

  bool isAscii() const { return others == 0; }

  // Finds the characters; false where one is not well formed.
  bool split() {
    leads = bitsAbove(signedBytes, 0xBF) & others;
    pairs = bitsAbove(signedBytes, 0xEF) & others;
    const std::uint32_t threes = bitsAbove(signedBytes, 0xDF) & others;
    const std::uint32_t wanted = leads << 1 | threes << 2 | pairs << 3;
    if (wanted >> kBytes != 0) taken = 31 - static_cast<std::size_t>(__builtin_clz(leads));  // the last one is cut off
    const std::uint32_t trails = others & ~leads;
    // A lead that is cut off stands where no other one wants a trail.
    return ((wanted ^ trails) & firstBits(taken + 1)) == 0 && (unusual() & firstBits(taken)) == 0;
  }

  // The places of characters that have a shorter form, stand for surrogates or lie above U+10FFFF.
  std::uint32_t unusual() const {
    const SignedBytes d;
    const auto next = hn::BitCast(d, second);
    const auto lead = [&](std::uint8_t byte) HWY_ATTR { return hn::Set(d, static_cast<std::int8_t>(byte)); };
    const auto is = [&](std::uint8_t byte) HWY_ATTR { return hn::Eq(signedBytes, lead(byte)); };
    const auto nextBelow = [&](int limit)
                               HWY_ATTR { return hn::Lt(next, hn::Set(d, static_cast<std::int8_t>(limit))); };
    auto found = hn::Or(hn::Or(is(0xC0), is(0xC1)),
                        hn::Or(hn::And(is(0xE0), nextBelow(0x20)), hn::AndNot(nextBelow(0x20), is(0xED))));
    if (pairs != 0)
      found = hn::Or(found, hn::Or(hn::Or(hn::And(is(0xF0), nextBelow(0x10)), hn::AndNot(nextBelow(0x10), is(0xF4))),
                                   hn::And(hn::Lt(signedBytes, hn::Zero(d)), hn::Gt(signedBytes, lead(0xF4)))));
    return bitsOf(d, found);
  }

  // Writes the units of `count` bytes, at most those taken, and overwrites up to 16. The result is their number.
  std::size_t write(std::size_t count, unsigned short* out) const {
    const auto zero = hn::Zero(Bytes());
    const ByteVector third = sixBits(hn::ShiftRightBytes<2>(Bytes(), bytes));
    const ByteVector before = hn::ShiftLeftBytes<1>(Bytes(), bytes);
    const auto lower = [&](ByteVector v)
                           HWY_ATTR { return hn::BitCast(Units(), hn::InterleaveLower(Bytes(), v, zero)); };
    const auto upper = [&](ByteVector v)
                           HWY_ATTR { return hn::BitCast(Units(), hn::InterleaveUpper(Bytes(), v, zero)); };
    const Places low{lower(bytes), lower(second), lower(third), lower(before)};
    const Places high{upper(bytes), upper(second), upper(third), upper(before)};
    const std::uint32_t kept = (~(others & ~leads) | pairs << 1) & firstBits(count);
    if (pairs == 0) [[likely]]
      return store(low.units(), high.units(), kept, out);
    return store(low.unitsWithPairs(), high.unitsWithPairs(), kept, out);
  }
  static std::size_t store(UnitVector low, UnitVector high, std::uint32_t kept, unsigned short* out) {
    const std::size_t count = storeKept(low, kept & 0xFF, out);
    return count + storeKept(high, kept >> 8, out + count);
  }
  static std::size_t storeKept(UnitVector units, std::uint32_t kept, unsigned short* out) {
    const auto order = hn::Load(Bytes(), kTogether.bytes[kept]);
    hn::StoreU(hn::TableLookupBytes(units, hn::BitCast(Units(), order)), Units(), out);
    return static_cast<std::size_t>(__builtin_popcount(kept));
  }
};

void widen(ByteVector bytes, unsigned short* out) {
  const auto zero = hn::Zero(Bytes());
  hn::StoreU(hn::BitCast(Units(), hn::InterleaveLower(Bytes(), bytes, zero)), Units(), out);
  hn::StoreU(hn::BitCast(Units(), hn::InterleaveUpper(Bytes(), bytes, zero)), Units(), out + 8);
}

}  // namespace utf8

Advance decodeUtf8Blocks(const unsigned char* bytes, std::size_t size, unsigned short* units, std::size_t room) {
  Advance done;
  if (size < utf8::kBytes) return done;
  while (done.read != size) {
    utf8::Decoding block{utf8::loadAt(bytes, size, done.read)};
    if (!block.isAscii() && !block.split()) break;
    const std::size_t count = std::min(block.taken, size - done.read);
    const auto write = [&](unsigned short* out) HWY_ATTR {
      if (!block.isAscii()) return block.write(count, out);
      utf8::widen(block.bytes, out);
      return count;
    };
    if (!utf8::writeBlock<utf8::kBytes>(units, room, done, write)) break;
    done.read += count;
  }
  return done;
}

namespace utf8 {

// The bytes of four units, by a bit for each unit of more than a byte, then one for each of three. There are four for
// each unit: its last byte, the one before, the first of three, nothing.
constexpr Orders kOfFour = [] {
  Orders orders{};
  for (unsigned lengths = 0; lengths < 256; ++lengths) {
    std::size_t count = 0;
    for (unsigned unit = 0; unit < 4; ++unit) {
      const unsigned length = 1 + (lengths >> unit & 1) + (lengths >> (4 + unit) & 1);
      for (unsigned left = length; left > 0; --left)
        orders.bytes[lengths][count++] = static_cast<std::uint8_t>(4 * unit + left - 1);
    }
  }
  return orders;
}();

struct Encoding {
  UnitVector units;
  std::uint32_t longs = bitsAbove(0x7F);
  std::uint32_t longer = 0, leads = 0;
  std::size_t taken = kUnits;  // of the block, whole characters

  std::uint32_t bitsAbove(std::uint16_t limit) const {
    const auto most = hn::Set(Units(), limit);
    return bitsOf(Units(), hn::Ne(hn::SaturatedSub(units, most), hn::Zero(Units())));
  }
  hn::Mask<Units> areHalves() const {
    return hn::Eq(hn::And(units, hn::Set(Units(), 0xF800)), hn::Set(Units(), 0xD800));
  }
  hn::Mask<Units> areLeads() const {
    return hn::Eq(hn::And(units, hn::Set(Units(), 0xFC00)), hn::Set(Units(), 0xD800));
  }

  bool isAscii() const { return longs == 0; }

  // Finds the characters; false where half of a pair stands alone. Each half makes two bytes.
  bool split() {
    longer = bitsAbove(0x7FF);
    const std::uint32_t halves = bitsOf(Units(), areHalves());
    if (halves == 0) [[likely]]
      return true;
    leads = bitsOf(Units(), areLeads());
    longer &= ~halves;
    if ((leads >> (kUnits - 1)) != 0) taken = kUnits - 1;  // a pair that is cut off
    return (leads << 1 & firstBits(kUnits)) == (halves & ~leads);
  }

  // Writes the bytes of `count` units, at most those taken, and overwrites up to 28. The result is their number.
  std::size_t write(std::size_t count, unsigned char* out) const {
    const Units d;
    const auto trail = [&](UnitVector bits) HWY_ATTR { return bitsAs(bits, 0x3F, 0x80); };
    const auto sixth = hn::ShiftRight<6>(units);
    auto last = choose(0x7F, trail(units), units);
    auto middle = choose(0x7FF, trail(sixth), hn::Or(sixth, hn::Set(d, 0xC0)));
    if (leads != 0) [[unlikely]] {
      // The bits above the lowest ten are one less in a lead.
      const auto upper = hn::Add(hn::And(units, hn::Set(d, 0x3FF)), hn::Set(d, 0x40));
      const auto before = hn::ShiftLeftLanes<1>(units);
      const auto afterLead = hn::Or(hn::ShiftLeft<4>(hn::And(before, hn::Set(d, 3))), bitsAs(sixth, 0xF, 0x80));
      last = hn::IfThenElse(areLeads(), trail(hn::ShiftRight<2>(upper)), last);
      middle = hn::IfThenElse(areHalves(), afterLead, middle);
      middle = hn::IfThenElse(areLeads(), hn::Or(hn::ShiftRight<8>(upper), hn::Set(d, 0xF0)), middle);
    }
    const auto first = hn::Or(hn::ShiftRight<12>(units), hn::Set(d, 0xE0));
    const auto lasts = hn::Or(last, hn::ShiftLeft<8>(middle));
    const std::size_t low = store(hn::InterleaveLower(d, lasts, first), longs & 0xF, longer & 0xF, out);
    store(hn::InterleaveUpper(d, lasts, first), longs >> 4, longer >> 4, out + low);
    const std::uint32_t counted = firstBits(count);
    return count + static_cast<std::size_t>(__builtin_popcount((longs & counted) | (longer & counted) << kUnits));
  }
  static UnitVector bitsAs(UnitVector bits, std::uint16_t mask, std::uint16_t kind) {
    return hn::Or(hn::And(bits, hn::Set(Units(), mask)), hn::Set(Units(), kind));
  }
  // One of two, by whether the unit is above a limit.
  UnitVector choose(std::uint16_t limit, UnitVector above, UnitVector below) const {
    const auto most = hn::Set(Units(), limit);
    return hn::IfThenElse(hn::Eq(hn::Max(units, most), most), below, above);
  }
  // Writes the bytes of four units and overwrites up to 16. The result is their number.
  static std::size_t store(UnitVector four, std::uint32_t longs, std::uint32_t longer, unsigned char* out) {
    const std::uint32_t lengths = longs | longer << 4;
    const auto order = hn::Load(Bytes(), kOfFour.bytes[lengths]);
    hn::StoreU(hn::TableLookupBytes(hn::BitCast(Bytes(), four), order), Bytes(), out);
    return 4 + static_cast<std::size_t>(__builtin_popcount(lengths));
  }
};

}  // namespace utf8

namespace utf8 {

constexpr std::size_t kOverwritten = 28;  // bytes, by a block

// Converts blocks while more than `left` units are, and moves over them; false at what is not well formed. The room has
// to do for as many blocks as there are.
HWY_INLINE bool encodeBlocks(const unsigned short* units, std::size_t size, unsigned char* bytes, std::size_t room,
                             std::size_t left, Advance& done) {
  const auto* const text = reinterpret_cast<const unsigned char*>(units);
  while (size - done.read > left && room - done.written >= kOverwritten) {
    Encoding block{hn::BitCast(Units(), loadAt(text, 2 * size, 2 * done.read))};
    if (!block.isAscii() && !block.split()) return false;
    const std::size_t count = std::min(block.taken, size - done.read);
    done.written += block.write(count, bytes + done.written);
    done.read += count;
  }
  return size - done.read <= left;
}

}  // namespace utf8

// The last units go by way of a place of their own, so that a field keeps the bytes behind its text.
Advance encodeUtf8Blocks(const unsigned short* units, std::size_t size, unsigned char* bytes, std::size_t room) {
  Advance done;
  constexpr std::size_t kLast = utf8::kOverwritten;  // so many units overwrite what the blocks before have
  if (size < utf8::kUnits || !utf8::encodeBlocks(units, size, bytes, room, kLast, done)) return done;
  unsigned char last[3 * kLast + utf8::kOverwritten];
  Advance all{done.read, 0};
  if (!utf8::encodeBlocks(units, size, last, sizeof last, 0, all) || all.written > room - done.written) return done;
  std::memcpy(bytes + done.written, last, all.written);
  return {size, done.written + all.written};
}

#endif

}  // namespace
}  // namespace oxr::core::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
