#include "oxrrec/program.hpp"

#include <CLI/CLI.hpp>
#include <new>
#include <sstream>
#include <stdexcept>
#include <string_view>

#include "oxrrec/commands.hpp"

namespace oxr::rec {

namespace {

constexpr char kExitCodes[] =
    "Exit codes: 0 done; 1 a field cannot be read; 2 anything else, such as a record that is cut off.";

int failed(const Console& console, const std::string& text) {
  console.messages << "oxrrec: " << text << '\n';
  return kFailed;
}

// Runs the work, and tells whatever ends it.
int guarded(const Work& work, const Console& console) {
  try {
    return work(console);
  } catch (const KelException& failure) {
    return failed(console, faultText(failure));
  } catch (const std::bad_alloc&) {
    return failed(console, "out of memory");
  } catch (const std::runtime_error& error) {
    return failed(console, error.what());
  }
}

// Help to standard output, what is wrong with the arguments to the messages.
int tell(const CLI::App& app, const CLI::ParseError& error, const Console& console) {
  std::ostringstream help;
  std::ostringstream fault;
  if (app.exit(error, help, fault) != 0) {
    console.messages << fault.str();
    return kFailed;
  }
  const std::string text = help.str();
  return guarded(
      [&](const Console&) {
        openOutput(kStandardStream, console, -1).write(text);
        return kDone;
      },
      console);
}

}  // namespace

int run(std::span<const char* const> arguments, const Console& console) {
  CLI::App app("Turns record files that a COBOL copybook describes into JSON lines.", "oxrrec");
  app.require_subcommand(1);
  app.footer(kExitCodes);
  Work work;
  for (const Command& command : commands()) {
    CLI::App& part = *app.add_subcommand(command.name, command.brief);
    // Only the options of the command at hand are built: that takes longer than to read them.
    if (!arguments.empty() && std::string_view(arguments.front()) == command.name) work = command.prepare(part);
  }
  try {
    // The parser takes the arguments in reverse order.
    app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::ParseError& error) {
    return tell(app, error, console);
  }
  if (!work) return failed(console, "the first argument is to be a command; see oxrrec --help");
  return guarded(work, console);
}

}  // namespace oxr::rec
