// Logical values and strings: what a failed change leaves must be what was there.

#include "fuzz/allocation/operations.hpp"
#include "pwfdata.hpp"

namespace oxr::test {
namespace {

const KelWstring kLong = u"a text of more than sixteen units"_k, kOther = u"another text of more than sixteen units"_k;
constexpr char kBytes[] = "bytes of a binary value";
constexpr int kSize = sizeof kBytes;

PWFData binary() {
  return PWFData(static_cast<const void*>(kBytes), kSize, BINARY, COPY);
}
// Both must be looked at: a value that was half overwritten.
std::string look(const PWFData& value) {
  return told(static_cast<int>(value.getDataLogicalType())) + " " + told(value);
}

const struct {
  const char* name;
  std::string (*use)();
} kValues[] = {
    {"STRING", [] { return look(PWFData(kLong)); }},
    {"STRING of bytes", [] { return look(PWFData(kLong.characters(), 66, STRING, COPY)); }},
    {"DECIMAL", [] { return look(PWFData(u"-123456789012345678901234"_k.characters(), DECIMAL)); }},
    {"BINARY", [] { return look(binary()); }},
    {"STRING copied",
     [] {
       const PWFData value(kLong), copy(value);
       return look(copy);
     }},
    {"BINARY copied",
     [] {
       const PWFData value = binary(), copy(value);
       return look(copy);
     }},
    {"debug string of BINARY", [] { return look(binary().getDebugString()); }},
    {"debug string of STRING", [] { return look(PWFData(kLong).getDebugString()); }},
    {"debug string of DATETIME", [] { return look(PWFData(PWFDateTime{}).getDebugString()); }},
    {"comparison",
     [] {
       return told(PWFData(u"-01234567890123456789.50"_k.characters(), DECIMAL) ==
                   PWFData(u"-1234567890123456789.5"_k.characters(), DECIMAL));
     }},
    {"getter of another type", [] { return told(PWFData(kLong).getInt64Value()); }},
    {"getter of a null", [] { return told(PWFData(INTEGER).getInt64Value()); }},
    {"bad integer", [] { return look(PWFData(kBytes, 3, INTEGER, COPY)); }},
};

// One value over another.
const struct {
  const char* name;
  PWFData (*before)();
  PWFData (*after)();
} kAssignments[] = {
    {"STRING over STRING", [] { return PWFData(kLong); }, [] { return PWFData(kOther); }},
    {"BINARY over STRING", [] { return PWFData(kLong); }, [] { return binary(); }},
    {"STRING over BINARY", [] { return binary(); }, [] { return PWFData(kLong); }},
    {"BINARY over BINARY", [] { return binary(); }, [] { return binary(); }},
    {"INTEGER over STRING", [] { return PWFData(kLong); }, [] { return PWFData(7, false); }},
    {"BINARY over INTEGER", [] { return PWFData(7, false); }, [] { return binary(); }},
};

const struct {
  const char* name;
  void (*change)(KelWstring& text);
} kStrings[] = {
    {"string appended", [](KelWstring& t) { t.appendInternal(kOther.characters(), kOther.length(), 0); }},
    {"string appended to itself", [](KelWstring& t) { t.appendInternal(t.characters(), t.length(), 0); }},
    {"string inserted", [](KelWstring& t) { t.insert(3, kOther.characters()); }},
    {"string inserted into itself", [](KelWstring& t) { t.insert(3, t.characters()); }},
    {"string unshared", [](KelWstring& t) { t.at(3) = 'x'; }},
    {"string reserved", [](KelWstring& t) { t.reserve(1000); }},
    {"string resized", [](KelWstring& t) { t.appendForOverwrite(70)[0] = 0; }},
    {"string assigned", [](KelWstring& t) { t.assignInternal(kOther.characters(), kOther.length(), 0); }},
    {"string joined", [](KelWstring& t) { t = t + kOther; }},
    {"string cut out", [](KelWstring& t) { t = t.substr(1, 30); }},
};

}  // namespace

Operations valueOperations() {
  Operations operations;
  for (const auto& row : kValues)
    addBoth(
        operations, row.name, [] { return std::make_shared<int>(); }, [row](int) { return row.use(); });
  for (const auto& row : kAssignments)
    operations.push_back({row.name, [row]() -> Call {
                            return [row] {
                              std::unique_ptr<PWFData> target, source;
                              {
                                const Unfailing unfailing;
                                target = std::make_unique<PWFData>(row.before());
                                source = std::make_unique<PWFData>(row.after());
                              }
                              return changedOrKept([&] { return look(*target); }, [&] { *target = *source; });
                            };
                          }});
  for (const auto& row : kStrings)
    operations.push_back({row.name, [row]() -> Call {
                            return [row] {
                              KelBufferedWstring<16u> text(kLong);  // shares its characters
                              return changedOrKept([&] { return told(static_cast<const KelWstring&>(text)); },
                                                   [&] { row.change(text); });
                            };
                          }});
  return operations;
}

}  // namespace oxr::test
