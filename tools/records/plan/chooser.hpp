#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <vector>

#include "pwfdata.hpp"
#include "records/plan/choice.hpp"

namespace oxr::rec {

// Asks the questions of a choice, and remembers what bytes mean: a file has few kinds, so that almost each answer is
// one that was given before. Serves one thread.
class Chooser {
 public:
  static constexpr std::int32_t kNone = -1;

  // The choice must outlive it.
  explicit Chooser(const Choice& choice) : choice_(choice), memories_(choice.questions.size()) {}

  // The index of the alternative, or kNone. `bytesOf(question)` gives the bytes of its field, fewer than it has if the
  // record ends before; `valueOf(step, bytes)` its value, a null if it has none.
  template <class BytesOf, class ValueOf>
  std::int32_t choose(const BytesOf& bytesOf, const ValueOf& valueOf) {
    for (std::size_t i = 0; i < memories_.size(); ++i) {
      const Question& question = choice_.questions[i];
      const std::span<const unsigned char> bytes = bytesOf(question);
      if (bytes.size() < question.field.size) continue;
      const std::int32_t answer = answerTo(question, memories_[i], bytes, valueOf);
      if (answer != kNone) return answer;
    }
    return choice_.otherwise ? static_cast<std::int32_t>(*choice_.otherwise) : kNone;
  }

 private:
  static constexpr std::size_t kMostBytes = 16;  // of a field that is remembered
  static constexpr std::size_t kPlaces = 16;
  struct Known {
    bool isKnown = false;
    std::int32_t answer = kNone;
    std::array<unsigned char, kMostBytes> bytes{};
  };
  using Memory = std::array<Known, kPlaces>;

  template <class ValueOf>
  std::int32_t answerTo(const Question& question, Memory& memory, std::span<const unsigned char> bytes,
                        const ValueOf& valueOf) {
    if (bytes.size() > kMostBytes) return judge(question, valueOf(question.field, bytes));
    std::array<unsigned char, kMostBytes> padded{};
    std::memcpy(padded.data(), bytes.data(), bytes.size());
    Known& known = memory[placeOf(padded)];
    if (!known.isKnown || known.bytes != padded)
      known = {true, judge(question, valueOf(question.field, bytes)), padded};
    return known.answer;
  }

  static std::size_t placeOf(const std::array<unsigned char, kMostBytes>& bytes) {
    std::uint64_t halves[2];
    std::memcpy(halves, bytes.data(), sizeof halves);
    return static_cast<std::size_t>(((halves[0] ^ halves[1]) * 0x9E3779B97F4A7C15U) >> 60);
  }

  static std::int32_t judge(const Question& question, const PWFData& value) {
    for (const Question::Answer& answer : question.answers)
      if (answer.values.holds(value)) return static_cast<std::int32_t>(answer.alternative);
    return kNone;
  }

  const Choice& choice_;
  std::vector<Memory> memories_;
};

}  // namespace oxr::rec
