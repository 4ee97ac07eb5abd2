#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "cputils.hpp"
#include "fuzz/allocation/trial.hpp"
#include "harness/outcome.hpp"

// What is tried with failing allocations: all that the libraries export, a table a family.
namespace oxr::test {

using Operations = std::vector<Operation>;

Operations hostOperations();
Operations valueOperations();
Operations conversionOperations();
Operations dateTimeOperations();
Operations codePageOperations();
Operations bufferOperations();
Operations workerOperations();

// Results as text, which is made with all the memory that there is.
template <class T>
std::string told(const T& value) {
  const Unfailing unfailing;
  return shown(value);
}
inline std::string told(const char* text) {
  const Unfailing unfailing;
  return text;
}
inline std::string toldBytes(const void* bytes, int size) {
  const Unfailing unfailing;
  return CPUtils::binaryDump(static_cast<const unsigned char*>(bytes), size);
}
inline std::string told(const PWFDateTime& value) {
  const Unfailing unfailing;
  const std::string dump = CPUtils::pwfDateTimeDump(value);
  return dump.substr(0, dump.find(", timezone"));
}
inline std::string told(const PWFData& value) {
  if (value.getDataLogicalType() != BINARY) return told<PWFData>(value);
  return toldBytes(value.getDataValue(), value.getDataLength());
}

// An object that cannot be moved, from what gives it.
template <class Make>
auto sharedOf(Make make) {
  using Object = decltype(make());
  return std::shared_ptr<Object>(new Object(make()));
}

// An operation on an object that `make` makes, once for its first call and once after a call: the first fills caches.
template <class Make, class Use>
void addBoth(Operations& operations, const std::string& name, Make make, Use use) {
  operations.push_back(
      {name + ", first", [make, use]() -> Call { return [object = make(), use] { return use(*object); }; }});
  operations.push_back({name + ", again", [make, use]() -> Call {
                          auto object = make();
                          try {
                            use(*object);
                          } catch (const KelException&) {  // as it is meant to
                          }
                          return [object, use] { return use(*object); };
                        }});
}

// `change` may fail, and then must leave what `look` sees as it was.
template <class Look, class Change>
std::string changedOrKept(Look look, Change change) {
  const std::string before = look();
  try {
    change();
  } catch (...) {
    const Unfailing unfailing;
    if (const std::string after = look(); after != before) return "half changed: " + after;
    throw;
  }
  return look();
}

}  // namespace oxr::test
