#include "records/copybook/picture.hpp"

#include <algorithm>
#include <optional>
#include <vector>

#include "records/copybook/ascii.hpp"
#include "records/layout.hpp"

// picture = run { run };  run = symbol [ "(" count ")" ];  symbol = a character, or the pair CR or DB.
//
// The runs are read first, equal neighbours joined, and the category follows from the set of symbols:
//   numeric  [S] and 9 V P only:  [S] [V] P... 9...   |   [S] 9... P... [V]   |   [S] 9... [V] 9...
//   text     X and A, or a mixture of X, A and 9
//   wide     N, and B 0 / between them
//   graphic  G, and B between them
//   edited   every other set of symbols

namespace oxr::rec::copybook {

namespace {

constexpr char kCredit = 'c';  // the pair CR, two characters wide
constexpr char kDebit = 'd';   // the pair DB

struct Run {
  char symbol;
  std::uint32_t count;
  std::size_t position;
};

struct Refused {
  char symbol;
  std::string_view reason;
};

constexpr Refused kRefused[] = {
    {'U', "UTF-8 text (U) is not supported"},
    {'1', "boolean pictures (1) are not supported"},
    {'E', "floating point pictures (E) are not supported"},
};

class PictureReader {
 public:
  explicit PictureReader(std::string_view text) : text_(text) {}

  std::variant<Picture, PictureFault> read() {
    Picture picture;
    if (readRuns() && readCategory(picture)) return picture;
    return *fault_;
  }

 private:
  bool fail(std::size_t position, std::string message) {
    fault_ = PictureFault{position, std::move(message)};
    return false;
  }

  bool contains(std::string_view symbols) const {
    return std::any_of(runs_.begin(), runs_.end(),
                       [&](const Run& run) { return symbols.find(run.symbol) != std::string_view::npos; });
  }
  bool consistsOf(std::string_view symbols) const {
    return std::all_of(runs_.begin(), runs_.end(),
                       [&](const Run& run) { return symbols.find(run.symbol) != std::string_view::npos; });
  }

  bool readRuns() {
    while (at_ < text_.size()) {
      Run run{'\0', 1, at_};
      if (!readSymbol(run.symbol) || !readCount(run.count)) return false;
      if (!runs_.empty() && runs_.back().symbol == run.symbol) {
        runs_.back().count += run.count;  // both at most kMaxRecordBytes
        if (runs_.back().count > kMaxRecordBytes) return fail(run.position, "the picture is too long");
      } else {
        runs_.push_back(run);
      }
    }
    return !runs_.empty() || fail(0, "expected a picture");
  }

  bool readSymbol(char& symbol) {
    const std::size_t start = at_++;
    symbol = upperCase(text_[start]);
    const char second = at_ < text_.size() ? upperCase(text_[at_]) : '\0';
    if (symbol == 'C' || symbol == 'D') {
      if (second != (symbol == 'C' ? 'R' : 'B')) return fail(start, "expected CR or DB in the picture");
      symbol = symbol == 'C' ? kCredit : kDebit;
      ++at_;
    }
    for (const Refused& refused : kRefused)
      if (symbol == refused.symbol) return fail(start, std::string(refused.reason));
    if (std::string_view("XA9SVPZ*+-B0/,.$cdNG").find(symbol) == std::string_view::npos)
      return fail(start, "unknown symbol in the picture");
    return true;
  }

  // [ "(" digits ")" ]; the number is 1 to kMaxRecordBytes.
  bool readCount(std::uint32_t& count) {
    if (at_ == text_.size() || text_[at_] != '(') return true;
    const std::size_t start = ++at_;
    count = 0;
    for (; at_ < text_.size() && isDigit(text_[at_]); ++at_) {
      count = count * 10 + static_cast<std::uint32_t>(text_[at_] - '0');
      if (count > kMaxRecordBytes) return fail(start, "the repeat count is too large");
    }
    if (at_ == text_.size() || text_[at_] != ')' || count == 0)
      return fail(start, "expected a repeat count of 1 or more and ')'");
    ++at_;
    return true;
  }

  bool readCategory(Picture& picture) {
    for (const Run& run : runs_)
      if (run.symbol == 'S' && (&run != runs_.data() || run.count > 1))
        return fail(run.position, "S must stand once, in front of the picture");
    picture.isSigned = runs_.front().symbol == 'S';
    if (!countCharacters(picture.characters)) return false;
    if (consistsOf("S9VP")) {
      picture.category = Picture::Category::numeric;
      return readNumeric(picture);
    }
    if (contains("NG")) return readWide(picture);
    picture.category = consistsOf("XA9") ? Picture::Category::text : Picture::Category::edited;
    return !contains("SVP") || !contains("XA") || fail(0, "the picture mixes a number with X or A");
  }

  bool readWide(Picture& picture) {
    const bool isGraphic = contains("G");
    picture.category = isGraphic ? Picture::Category::graphic : Picture::Category::wide;
    return consistsOf(isGraphic ? "GB" : "NB0/") || fail(0, "N or G can't stand with these symbols in a picture");
  }

  bool countCharacters(std::uint32_t& characters) {
    std::uint64_t sum = 0;
    for (const Run& run : runs_) {
      if (run.symbol == 'S' || run.symbol == 'V' || run.symbol == 'P') continue;
      sum += std::uint64_t{run.count} * (run.symbol == kCredit || run.symbol == kDebit ? 2 : 1);
      if (sum > kMaxRecordBytes) return fail(run.position, "the picture is too long");
    }
    if (sum == 0) return fail(0, "the picture describes no character");
    characters = static_cast<std::uint32_t>(sum);
    return true;
  }

  // The point is after the last position read until a V or a P on the left says otherwise.
  bool readNumeric(Picture& picture) {
    unsigned digits = 0;
    unsigned afterPoint = 0;
    unsigned leftPs = 0;
    unsigned rightPs = 0;
    bool point = false;
    for (const Run& run : runs_) {
      if (run.symbol == 'S') continue;
      // Counts are tested before they are added up: nothing here can overflow.
      if (run.count > kMaxDigits || digits + run.count > kMaxDigits)
        return fail(run.position, "a number has at most " + std::to_string(kMaxDigits) + " digits");
      if (run.symbol == '9') {
        if (rightPs > 0) return fail(run.position, "P must stand at one end of the picture");
        digits += run.count;
        if (point) afterPoint += run.count;
      } else if (run.symbol == 'V') {
        if (point || run.count > 1) return fail(run.position, "V must stand once, where the point is");
        point = true;
      } else if (digits == 0) {
        leftPs = run.count;
        point = true;
      } else {
        if (point) return fail(run.position, "P on the right must stand in front of the point");
        rightPs = run.count;
      }
    }
    picture.digits = static_cast<std::uint16_t>(digits);
    picture.scale = static_cast<std::int16_t>(static_cast<int>(leftPs + afterPoint) - static_cast<int>(rightPs));
    return true;
  }

  std::string_view text_;
  std::size_t at_ = 0;
  std::vector<Run> runs_;
  std::optional<PictureFault> fault_;
};

}  // namespace

std::variant<Picture, PictureFault> readPicture(std::string_view text) {
  return PictureReader(text).read();
}

}  // namespace oxr::rec::copybook
