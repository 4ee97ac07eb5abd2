// The vector loops of Base64. `vectors.cpp` includes this file once for each kind of vectors that it compiles for.

HWY_BEFORE_NAMESPACE();
namespace oxr::core::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR || HWY_HAVE_SCALABLE || __BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__

std::size_t encodeBase64(const unsigned char*, std::size_t, unsigned short*) {
  return 0;
}
std::size_t decodeBase64(const unsigned short*, std::size_t, unsigned char*, std::size_t) {
  return 0;
}

#elif HWY_TARGET == HWY_AVX3_DL  // unreached: a machine has them or has them not

// A vector holds one character a byte, and its table look-ups and shuffles reach all 64. What is shorter than a vector
// is loaded and stored under a mask, so that nothing is left but a last group that is not whole or has padding.
constexpr std::size_t kWidth = 64;      // characters in a vector
constexpr std::size_t kDataWidth = 48;  // bytes of data that they stand for

struct alignas(64) Table {
  std::uint8_t entries[64];
};
template <class Entry>
constexpr Table tableOf(Entry entry) {
  Table table{};
  for (std::size_t i = 0; i < kWidth; ++i)
    table.entries[i] = static_cast<std::uint8_t>(entry(i));
  return table;
}
__m512i load(const Table& table) {
  return _mm512_load_si512(table.entries);
}
constexpr std::uint64_t firstOf(std::size_t count) {
  return count == 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << count) - 1;
}

constexpr char kLetters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr Table kToCharacter = tableOf([](std::size_t value) { return kLetters[value]; });
// Three bytes a, b, c as b a c b; then 8 bits from each of four places on begin with a 6-bit value.
constexpr Table kSpread = tableOf([](std::size_t i) { return i / 4 * 3 + (i % 4 == 1 ? 0 : i % 4 == 2 ? 2 : 1); });
constexpr Table kPlaces = tableOf([](std::size_t i) {
  constexpr int kInHalf[] = {10, 4, 22, 16};
  return kInHalf[i % 4] + (i % 8 < 4 ? 0 : 32);
});

// Encodes up to 48 bytes, whole groups of 3.
void encodeBlock(const unsigned char* data, std::size_t size, unsigned short* out) {
  const __m512i spread = _mm512_permutexvar_epi8(load(kSpread), _mm512_maskz_loadu_epi8(firstOf(size), data));
  const __m512i values = _mm512_multishift_epi64_epi8(load(kPlaces), spread);  // in the lower 6 bits
  const __m512i characters = _mm512_permutexvar_epi8(values, load(kToCharacter));
  const std::uint64_t stored = firstOf(size / 3 * 4);
  const __m512i low = _mm512_cvtepu8_epi16(_mm512_castsi512_si256(characters));
  const __m512i high = _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(characters, 1));
  _mm512_mask_storeu_epi16(out, static_cast<__mmask32>(stored), low);
  _mm512_mask_storeu_epi16(out + 32, static_cast<__mmask32>(stored >> 32), high);
}

std::size_t encodeBase64(const unsigned char* data, std::size_t size, unsigned short* out) {
  std::size_t taken = 0;
  for (; size - taken >= kDataWidth; taken += kDataWidth, out += kWidth)
    encodeBlock(data + taken, kDataWidth, out);
  const std::size_t rest = (size - taken) / 3 * 3;
  if (rest != 0) encodeBlock(data + taken, rest, out);
  return taken + rest;
}

constexpr Table toValue(std::size_t first) {
  return tableOf([first](std::size_t unit) {
    for (std::size_t value = 0; value < 64; ++value)
      if (static_cast<std::size_t>(kLetters[value]) == first + unit) return value;
    return std::size_t{0x80};  // foreign
  });
}
constexpr Table kToValue = toValue(0), kToValueFrom64 = toValue(64);
constexpr Table kLowerBytes = tableOf([](std::size_t i) { return 2 * i; });
// The three bytes of each double word, the top one first; and the first bytes again, which are not stored.
constexpr Table kGather = tableOf([](std::size_t i) { return i < kDataWidth ? i / 3 * 4 + 2 - i % 3 : 0; });

struct Block {
  __m512i data;           // 48 bytes
  std::uint64_t foreign;  // a bit for each unit
};
Block decodeBlock(__m512i low, __m512i high) {
  const __m512i units = _mm512_permutex2var_epi8(low, load(kLowerBytes), high);
  const __m512i values = _mm512_permutex2var_epi8(load(kToValue), units, load(kToValueFrom64));
  const __m512i others = _mm512_set1_epi16(static_cast<short>(0xFF80));
  const std::uint64_t foreign = _mm512_movepi8_mask(values) |
                                std::uint64_t{_mm512_test_epi16_mask(high, others)} << 32 |
                                std::uint64_t{_mm512_test_epi16_mask(low, others)};
  const __m512i pairs = _mm512_maddubs_epi16(values, _mm512_set1_epi32(0x0140'0140));
  const __m512i groups = _mm512_madd_epi16(pairs, _mm512_set1_epi32(0x0001'1000));
  return {_mm512_permutexvar_epi8(load(kGather), groups), foreign};
}

std::size_t decodeBase64(const unsigned short* text, std::size_t length, unsigned char* out, std::size_t room) {
  std::size_t taken = 0;
  // Whole vectors where there is room for them: a store under a mask takes several times as long.
  for (; length - taken >= kWidth && room >= kWidth; taken += kWidth, out += kDataWidth, room -= kDataWidth) {
    const Block block = decodeBlock(_mm512_loadu_si512(text + taken), _mm512_loadu_si512(text + taken + 32));
    if (block.foreign != 0) break;
    _mm512_storeu_si512(out, block.data);
  }
  // A block that is shorter, or as much of the next one as comes before a group with a foreign unit.
  const std::size_t size = std::min({kWidth, (length - taken) / 4 * 4, room / 3 * 4});
  if (size == 0) return taken;
  const __m512i letterA = _mm512_set1_epi16('A');
  const std::uint64_t loaded = firstOf(size);
  const Block block =
      decodeBlock(_mm512_mask_loadu_epi16(letterA, static_cast<__mmask32>(loaded), text + taken),
                  _mm512_mask_loadu_epi16(letterA, static_cast<__mmask32>(loaded >> 32), text + taken + 32));
  const std::size_t clean =
      block.foreign == 0 ? size : static_cast<std::size_t>(__builtin_ctzll(block.foreign)) / 4 * 4;
  _mm512_mask_storeu_epi8(out, firstOf(clean / 4 * 3), block.data);
  return taken + clean;
}

#else

// A vector holds one character a byte. Each 16 bytes of it stand for 16 characters and 12 bytes of data, and table
// look-ups do not pass from one 16 to the next; so data are loaded and stored 12 bytes apart.
constexpr std::size_t kWidth = HWY_TARGET == HWY_AVX2 ? 32 : 16;  // characters in a vector
constexpr std::size_t kDataWidth = kWidth / 4 * 3;                // bytes of data that they stand for

using Bytes = hn::FixedTag<std::uint8_t, kWidth>;
using SignedBytes = hn::RebindToSigned<Bytes>;
using Words = hn::Repartition<std::uint16_t, Bytes>;
using DoubleWords = hn::Repartition<std::uint32_t, Bytes>;
using ByteVector = hn::Vec<Bytes>;
using WordVector = hn::Vec<Words>;
using Bytes16 = hn::FixedTag<std::uint8_t, 16>;
using Words8 = hn::FixedTag<std::uint16_t, 8>;

struct alignas(16) Table {
  std::uint8_t entries[16];
};
// The entry of each index, which is below 16.
ByteVector lookUp(const Table& table, ByteVector index) {
  return hn::TableLookupBytes(hn::LoadDup128(Bytes(), table.entries), index);
}
ByteVector shuffle(ByteVector bytes, const Table& order) {
  return hn::TableLookupBytes(bytes, hn::LoadDup128(Bytes(), order.entries));
}

// What is added to `from` to make it `to`.
constexpr std::uint8_t distance(int from, int to) {
  return static_cast<std::uint8_t>(to - from);
}

// The 16 units at `text` as bytes; one above 255 becomes 0 or 255, which are foreign too. And four 6-bit values joined
// to 24 bits, the first on top, in the double word that they lie in. Both have an instruction that Highway does not
// offer.
#if HWY_ARCH_X86 && HWY_TARGET != HWY_EMU128

hn::Vec<Bytes16> loadUnits16(const unsigned short* text) {
  return hn::Vec<Bytes16>{_mm_packus_epi16(hn::LoadU(Words8(), text).raw, hn::LoadU(Words8(), text + 8).raw)};
}

hn::Vec<DoubleWords> joinValues(ByteVector values) {
#if HWY_TARGET == HWY_AVX2
  const auto pairs = _mm256_maddubs_epi16(values.raw, _mm256_set1_epi32(0x0140'0140));
  return hn::Vec<DoubleWords>{_mm256_madd_epi16(pairs, _mm256_set1_epi32(0x0001'1000))};
#else
  const auto pairs = _mm_maddubs_epi16(values.raw, _mm_set1_epi32(0x0140'0140));
  return hn::Vec<DoubleWords>{_mm_madd_epi16(pairs, _mm_set1_epi32(0x0001'1000))};
#endif
}

#else

hn::Vec<Bytes16> loadUnits16(const unsigned short* text) {
  const hn::FixedTag<std::int16_t, 8> words;
  const hn::Half<Bytes16> half;
  const auto low = hn::DemoteTo(half, hn::BitCast(words, hn::LoadU(Words8(), text)));
  const auto high = hn::DemoteTo(half, hn::BitCast(words, hn::LoadU(Words8(), text + 8)));
  return hn::Combine(Bytes16(), high, low);
}

hn::Vec<DoubleWords> joinValues(ByteVector values) {
  const auto words = hn::BitCast(Words(), values);
  const auto firsts = hn::And(hn::ShiftLeft<6>(words), hn::Set(Words(), 0x0FC0));
  const auto pairs = hn::BitCast(DoubleWords(), hn::Or(firsts, hn::ShiftRight<8>(words)));
  return hn::Or(hn::ShiftLeft<12>(pairs), hn::ShiftRight<16>(pairs));  // the top byte is not looked at
}

#endif

#if HWY_TARGET == HWY_AVX2

ByteVector loadData(const unsigned char* data) {
  return hn::Combine(Bytes(), hn::LoadU(Bytes16(), data + 12), hn::LoadU(Bytes16(), data));
}
void storeData(ByteVector bytes, unsigned char* out) {
  hn::StoreU(hn::LowerHalf(Bytes16(), bytes), Bytes16(), out);
  hn::StoreU(hn::UpperHalf(Bytes16(), bytes), Bytes16(), out + 12);
}
ByteVector loadUnits(const unsigned short* text) {
  return hn::Combine(Bytes(), loadUnits16(text + 16), loadUnits16(text));
}
void storeUnits(WordVector low, WordVector high, unsigned short* out) {
  hn::StoreU(hn::ConcatLowerLower(Words(), high, low), Words(), out);
  hn::StoreU(hn::ConcatUpperUpper(Words(), high, low), Words(), out + 16);
}

#else

ByteVector loadData(const unsigned char* data) {
  return hn::LoadU(Bytes(), data);
}
void storeData(ByteVector bytes, unsigned char* out) {
  hn::StoreU(bytes, Bytes(), out);
}
ByteVector loadUnits(const unsigned short* text) {
  return loadUnits16(text);
}
void storeUnits(WordVector low, WordVector high, unsigned short* out) {
  hn::StoreU(low, Words(), out);
  hn::StoreU(high, Words(), out + 8);
}

#endif

// Three bytes a, b, c as b a c b: two words with two characters each. The data begin with byte `first` of each 16.
constexpr Table spreadFrom(std::uint8_t first) {
  Table table = {{1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10}};
  for (std::uint8_t& entry : table.entries)
    entry = static_cast<std::uint8_t>(entry + first);
  return table;
}
constexpr Table kSpread = spreadFrom(0), kSpreadFrom4 = spreadFrom(4);

// The 6-bit values of the data, a byte each.
ByteVector splitData(ByteVector data, const Table& spread) {
  const auto words = hn::BitCast(Words(), shuffle(data, spread));
  const auto both = [](std::uint32_t pair) { return hn::BitCast(Words(), hn::Set(DoubleWords(), pair)); };
  // A product shifts each word by a distance of its own: by 10 and 6 to the right, by 4 and 8 to the left.
  const auto even = hn::MulHigh(hn::And(words, both(0x0FC0'FC00)), both(0x0400'0040));
  const auto odd = hn::Mul(hn::And(words, both(0x003F'03F0)), both(0x0100'0010));
  return hn::BitCast(Bytes(), hn::Or(even, odd));
}

// By range of values: 0 is 26 to 51, 1 to 10 are the digits, 13 is 0 to 25.
constexpr Table kToCharacter = {{distance(26, 'a'), distance(52, '0'), distance(52, '0'), distance(52, '0'),
                                 distance(52, '0'), distance(52, '0'), distance(52, '0'), distance(52, '0'),
                                 distance(52, '0'), distance(52, '0'), distance(52, '0'), distance(62, '+'),
                                 distance(63, '/'), distance(0, 'A'), 0, 0}};

ByteVector toCharacters(ByteVector values) {
  const SignedBytes d;
  const auto capitals = hn::IfThenElseZero(hn::Lt(hn::BitCast(d, values), hn::Set(d, 26)), hn::Set(d, 13));
  const auto range = hn::Or(hn::SaturatedSub(values, hn::Set(Bytes(), 51)), hn::BitCast(Bytes(), capitals));
  return hn::Add(values, lookUp(kToCharacter, range));
}

void storeCharacters(ByteVector characters, unsigned short* out) {
  const auto zero = hn::Zero(Bytes());
  storeUnits(hn::BitCast(Words(), hn::InterleaveLower(Bytes(), characters, zero)),
             hn::BitCast(Words(), hn::InterleaveUpper(Bytes(), characters, zero)), out);
}

// Encodes a block whose data begin 4 bytes after `before`: unlike one that is read from its first byte on, it needs no
// bytes behind it.
void encodeAfter4(const unsigned char* before, unsigned short* out) {
  storeCharacters(toCharacters(splitData(loadData(before), kSpreadFrom4)), out);
}

std::size_t encodeBase64(const unsigned char* data, std::size_t size, unsigned short* out) {
  const std::size_t whole = size / 3 * 3;
  if (whole < kDataWidth + 4) return 0;
  storeCharacters(toCharacters(splitData(loadData(data), kSpread)), out);
  std::size_t taken = kDataWidth;
  for (out += kWidth; whole - taken >= kDataWidth; taken += kDataWidth, out += kWidth)
    encodeAfter4(data + taken - 4, out);
  // The last block, some of which is encoded already.
  const std::size_t rest = whole - taken;
  if (rest != 0) encodeAfter4(data + whole - kDataWidth - 4, out + rest / 3 * 4 - kWidth);
  return whole;
}

// Units by range: 8 neighbours each, from 0 on, but that "+" belongs to the range below its own. Then each range has
// one distance to its values, and all of its units from one on, or up to one, are foreign.
constexpr Table kToValue = {{0, 0, 0, 0, distance('+', 62), distance('/', 63), distance('0', 52), distance('0', 52),
                             distance('A', 0), distance('A', 0), distance('A', 0), distance('A', 0), distance('a', 26),
                             distance('a', 26), distance('a', 26), distance('a', 26)}};
// Brings the foreign units of a range to 128 or more, and no other.
constexpr Table kToFault = {{128, 128, 128, 128, distance('+', 0), distance('/', 0), 0, distance('9', 127),
                             distance('A', 0), 0, 0, distance('Z', 127), distance('a', 0), 0, 0, distance('z', 127)}};

struct Values {
  ByteVector values;
  ByteVector faults;  // the top bit of each byte
};
Values toValues(ByteVector units) {
  const auto shifted = hn::BitCast(Bytes(), hn::ShiftRight<3>(hn::BitCast(Words(), units)));
  const auto plus = hn::VecFromMask(Bytes(), hn::Eq(units, hn::Set(Bytes(), '+')));
  const auto range = hn::Add(hn::And(shifted, hn::Set(Bytes(), 0x0F)), plus);
  return {hn::Add(units, lookUp(kToValue, range)), hn::Or(units, hn::Add(units, lookUp(kToFault, range)))};
}
bool anyFault(ByteVector faults) {
  const SignedBytes d;
  return !hn::AllFalse(d, hn::Lt(hn::BitCast(d, faults), hn::Zero(d)));
}

// The three bytes of each double word, the top one first.
constexpr Table kGather = {{2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, 15, 15, 15, 15}};

// Writes 4 bytes more than the data.
void storeValues(ByteVector values, unsigned char* out) {
  storeData(shuffle(hn::BitCast(Bytes(), joinValues(values)), kGather), out);
}
void storeJustValues(ByteVector values, unsigned char* out) {
  unsigned char data[kDataWidth + 4];
  storeValues(values, data);
  std::memcpy(out, data, kDataWidth);
}

std::size_t decodeBase64(const unsigned short* text, std::size_t length, unsigned char* out, std::size_t room) {
  std::size_t taken = 0;
  // Two at a time: the test for faults costs as much for both as for one.
  for (; length - taken >= 2 * kWidth && room >= 2 * kWidth; taken += 2 * kWidth) {
    const Values first = toValues(loadUnits(text + taken));
    const Values second = toValues(loadUnits(text + taken + kWidth));
    if (anyFault(hn::Or(first.faults, second.faults))) break;
    storeValues(first.values, out);
    storeValues(second.values, out + kDataWidth);
    out += 2 * kDataWidth;
    room -= 2 * kDataWidth;
  }
  for (; length - taken >= kWidth && room >= kDataWidth; taken += kWidth) {
    const Values block = toValues(loadUnits(text + taken));
    if (anyFault(block.faults)) return taken;
    storeJustValues(block.values, out);
    out += kDataWidth;
    room -= kDataWidth;
  }
  if (taken == 0) return 0;
  // The last block, some of which is decoded already. A group with padding is left.
  const std::size_t whole = length / 4 * 4 - (text[length / 4 * 4 - 1] == '=' ? 4 : 0);
  const std::size_t rest = whole - taken;
  if (rest == 0 || rest >= kWidth || room < rest / 4 * 3) return taken;
  const Values block = toValues(loadUnits(text + whole - kWidth));
  if (anyFault(block.faults)) return taken;
  storeJustValues(block.values, out + rest / 4 * 3 - kDataWidth);
  return whole;
}

#endif

}  // namespace
}  // namespace oxr::core::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
