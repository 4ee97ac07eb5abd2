#include "oxrrec/verify/differences.hpp"

#include <algorithm>
#include <cstring>
#include <optional>

// Each field whose bytes differ is a difference, and so is each run of bytes that differ and are of no field. Where
// items redefine each other, a byte may be of several fields.

namespace oxr::rec {

namespace {

// The bytes of a field as far as the record has them.
std::span<const unsigned char> partOf(std::span<const unsigned char> record, std::uint64_t offset, std::uint32_t size) {
  const std::uint64_t begin = std::min<std::uint64_t>(offset, record.size());
  return record.subspan(begin, std::min<std::uint64_t>(size, record.size() - begin));
}

}  // namespace

Differences::Differences(const RecordPlan& plan) {
  for (const PhysicalForm& form : plan.forms())
    converters_.emplace_back(form);
}

void Differences::begin() {
  fields_.clear();
  arrays_.clear();
}

void Differences::seen(const FieldSeen& field) {
  fields_.push_back({&field.step, field.offset, arrays_.size(), field.arrays.size()});
  arrays_.insert(arrays_.end(), field.arrays.begin(), field.arrays.end());
}

std::vector<Difference> Differences::between(const Layout& layout, std::span<const unsigned char> was,
                                             std::span<const unsigned char> is) {
  const std::size_t common = std::min(was.size(), is.size());
  std::vector<bool> isTold(common);
  std::vector<Difference> found;
  for (const Field& field : fields_) {
    const Step& step = *field.step;
    const auto before = partOf(was, field.offset, step.size), after = partOf(is, field.offset, step.size);
    const auto size = static_cast<std::uint32_t>(std::min(before.size(), after.size()));
    const bool isEqual = size == 0 || std::memcmp(before.data(), after.data(), size) == 0;
    if (isEqual && before.size() == after.size()) continue;
    const bool isAlike = readsAlike(step, before, after);
    if (isEqual && isAlike) continue;
    const std::span<const OpenArray> arrays(arrays_.data() + field.arrays, field.arrayCount);
    found.push_back({field.offset, size, fieldPath(layout, step.item, arrays), !isAlike});
    std::fill_n(isTold.begin() + static_cast<std::ptrdiff_t>(std::min<std::uint64_t>(field.offset, common)), size,
                true);
  }
  for (std::size_t at = 0; at < common; ++at) {
    if (isTold[at] || was[at] == is[at]) continue;
    const std::size_t begin = at;
    while (at < common && !isTold[at] && was[at] != is[at])
      ++at;
    found.push_back({begin, static_cast<std::uint32_t>(at - begin), {}, false});
  }
  std::stable_sort(found.begin(), found.end(),
                   [](const Difference& a, const Difference& b) { return a.offset < b.offset; });
  return found;
}

// Whether both read as the same value, or neither as any.
bool Differences::readsAlike(const Step& step, std::span<const unsigned char> was, std::span<const unsigned char> is) {
  const auto read = [&](std::span<const unsigned char> bytes) -> std::optional<PWFData> {
    FieldConverter& converter = converters_[step.form];
    try {
      if (bytes.size() == step.size) return converter.convert(step, bytes.data());
      if (!bytes.empty() && FieldConverter::canBeCut(step))
        return converter.convertStart(step, bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    } catch (const KelRecoverableException&) {
    } catch (const FieldRefused&) {
    }
    return std::nullopt;
  };
  const auto before = read(was);
  const auto after = read(is);
  if (!before || !after) return !before && !after;
  return meanTheSame(step, *before, *after);
}

}  // namespace oxr::rec
