#include "fuzz/allocation/callsites.hpp"

#include <cxxabi.h>
#include <dlfcn.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace oxr::test {
namespace {

struct Call {
  std::string_view library;  // the file's name alone
  std::string function;

  bool isIcu() const { return library.starts_with("libicu"); }
  bool isOurs() const { return library.starts_with("liboxr") || library.starts_with("libkel"); }
};

// "icu_72::UnicodeString::doAppend" and "ucnv_open_72" without ICU's number, nor with what the function takes.
std::string plainName(std::string name) {
  name = name.substr(0, name.find('('));
  if (const auto begin = name.find("icu_"); begin != std::string::npos)
    name.erase(begin, name.find("::", begin) + 2 - begin);
  const auto number = name.find_last_of('_');
  if (number != std::string::npos && name.find_first_not_of("0123456789", number + 1) == std::string::npos)
    name.erase(number);
  return name;
}

// A return address is one of the next instruction: one byte before it belongs to the call.
Call callAt(void* address) {
  Dl_info info = {};
  if (dladdr(static_cast<char*>(address) - 1, &info) == 0 || info.dli_fname == nullptr) return {};
  const std::string_view file = info.dli_fname;
  Call call{file.substr(file.find_last_of('/') + 1), {}};
  if (info.dli_sname != nullptr) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(info.dli_sname, nullptr, nullptr, &status), std::free);
    call.function = plainName(status == 0 ? name.get() : info.dli_sname);
  }
  if (!call.isIcu()) {
    char place[32];
    std::snprintf(place, sizeof place, "+0x%jx",
                  static_cast<std::uintmax_t>(static_cast<char*>(address) - 1 - static_cast<char*>(info.dli_fbase)));
    call.function.append(call.function.empty() ? "" : " ").append(call.library).append(place);
  }
  return call;
}

}  // namespace

CallSite siteOf(const CallStack& stack) {
  CallSite site;
  for (int i = 0; i < stack.depth; ++i) {
    const Call call = callAt(stack.calls[static_cast<std::size_t>(i)]);
    if (site.innermost.empty()) {
      if (!call.isIcu() && !call.isOurs()) continue;
      site.innermost = call.function;
      site.isIcu = call.isIcu();
    }
    if (!call.isIcu()) break;
    site.entry = call.function;
  }
  return site;
}

std::string linesOf(const CallStack& stack) {
  std::string lines;
  for (int i = 0; i < stack.depth; ++i) {
    const Call call = callAt(stack.calls[static_cast<std::size_t>(i)]);
    lines.append("      ").append(call.library).append(" ").append(call.function).append("\n");
  }
  return lines;
}

}  // namespace oxr::test
