#include "oxrrec/verify/differences.hpp"

#include <algorithm>
#include <cstring>
#include <optional>

// Each field whose bytes differ is a difference, and so is each run of bytes that differ and are of no field. Where
// items redefine each other, a byte may be of several fields.

namespace oxr::rec {

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
    if (field.offset + step.size > common) continue;
    const unsigned char* const before = was.data() + field.offset;
    const unsigned char* const after = is.data() + field.offset;
    if (std::memcmp(before, after, step.size) == 0) continue;
    const std::span<const OpenArray> arrays(arrays_.data() + field.arrays, field.arrayCount);
    found.push_back({field.offset, step.size, fieldPath(layout, step.item, arrays), !readsAlike(step, before, after)});
    std::fill_n(isTold.begin() + static_cast<std::ptrdiff_t>(field.offset), step.size, true);
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
bool Differences::readsAlike(const Step& step, const unsigned char* was, const unsigned char* is) {
  const auto read = [&](const unsigned char* bytes) -> std::optional<PWFData> {
    try {
      return converters_[step.form].convert(step, bytes);
    } catch (const KelRecoverableException&) {
    } catch (const FieldRefused&) {
    }
    return std::nullopt;
  };
  const auto before = read(was);
  const auto after = read(is);
  if (!before || !after) return !before && !after;
  if (before->isNull() || after->isNull()) return before->isNull() && after->isNull();
  return *before == *after;
}

}  // namespace oxr::rec
