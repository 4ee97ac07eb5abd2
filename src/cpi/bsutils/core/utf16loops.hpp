// The vector loops of UTF-16. `vectors.cpp` includes this file once for each kind of vectors that it compiles for.

HWY_BEFORE_NAMESPACE();
namespace oxr::core::HWY_NAMESPACE {
namespace {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128 || HWY_HAVE_SCALABLE

template <utf16::Order>
std::size_t copyUtf16Blocks(const unsigned char*, unsigned char*, std::size_t) {
  return 0;
}

#else

template <utf16::Order kOrder>
std::size_t copyUtf16Blocks(const unsigned char* in, unsigned char* out, std::size_t count) {
  const hn::CappedTag<std::uint16_t, 32> d;
  const hn::Repartition<std::uint8_t, decltype(d)> bytes;
  alignas(16) static constexpr std::uint8_t kSwapped[16] = {1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14};
  const std::size_t size = hn::Lanes(d);
  if (count < size) return 0;
  const auto order = hn::LoadDup128(bytes, kSwapped);
  const auto copyBlock = [&](std::size_t at) HWY_ATTR {
    const auto block = hn::LoadU(bytes, in + 2 * at);
    const auto copied = kOrder == utf16::Order::both ? block : hn::TableLookupBytes(block, order);
    const auto units = hn::BitCast(d, kOrder == utf16::Order::output ? copied : block);
    hn::StoreU(copied, bytes, out + 2 * at);
    return hn::AllFalse(d, hn::Eq(hn::And(units, hn::Set(d, 0xF800)), hn::Set(d, 0xD800)));
  };
  std::size_t done = 0;
  for (; count - done > size; done += size)
    if (!copyBlock(done)) return done;
  return copyBlock(count - size) ? count : done;  // the last block may overlap the one before
}

#endif

}  // namespace
}  // namespace oxr::core::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
