#include "oxrrec/program.hpp"

#include <CLI/CLI.hpp>
#include <new>
#include <sstream>
#include <stdexcept>
#include <string_view>

#include "oxrrec/commands.hpp"
#include "oxrrec/help/model.hpp"

namespace oxr::rec {

namespace {

int failed(const Console& console, const std::string& text) {
  console.messages << "oxrrec: " << text << '\n';
  return kFailed;
}

// Runs the work, and tells whatever ends it.
int guarded(const Work& work, const Console& console) {
  try {
    return work(console);
  } catch (const OutputClosed&) {
    return kDone;
  } catch (const KelException& failure) {
    return failed(console, faultText(failure));
  } catch (const std::bad_alloc&) {
    return failed(console, "out of memory");
  } catch (const std::runtime_error& error) {
    return failed(console, error.what());
  }
}

int write(const std::string& text, const Console& console) {
  return guarded(
      [&](const Console&) {
        openOutput(kStandardStream, console).write(text);
        return kDone;
      },
      console);
}

// What is wrong with the arguments goes to the messages.
int tell(const CLI::App& app, const CLI::ParseError& error, const Console& console) {
  std::ostringstream ignored;
  std::ostringstream fault;
  app.exit(error, ignored, fault);
  console.messages << fault.str();
  return kFailed;
}

struct HelpOptions {
  std::string subject;
  std::string form;
};

// `oxrrec help`. The build makes the man page and the completion of it.
int help(const HelpOptions& options, const Console& console) {
  const std::vector<CommandText> all = textOfAll();
  if (options.form == "man") return write(manPage(all), console);
  if (options.form == "bash") return write(bashCompletion(all), console);
  if (options.subject.empty()) return write(overviewHelp(all), console);
  for (const CommandText& command : all)
    if (command.name == options.subject) return write(commandHelp(command), console);
  for (const Topic& topic : topics())
    if (topic.name == options.subject) return write(topicHelp(topic, all), console);
  return failed(console, "no command or topic is called " + options.subject + "; oxrrec help lists them");
}

}  // namespace

int run(std::span<const char* const> arguments, const Console& console) {
  CLI::App app("Reads and writes record files that a COBOL copybook describes.", "oxrrec");
  app.require_subcommand(1);
  app.set_version_flag("--version", "oxrrec " OXR_VERSION);
  const std::string_view name = arguments.empty() ? "" : arguments.front();
  Work work;
  const CLI::App* part = nullptr;
  for (const Command& command : commands()) {
    CLI::App& added = *app.add_subcommand(command.name, command.brief);
    // Only the options of the command at hand are built: that takes longer than to read them.
    if (name != command.name) continue;
    work = command.prepare(added);
    part = &added;
  }
  HelpOptions wanted;
  CLI::App& helping = *app.add_subcommand("help", "tell about a command or a topic");
  helping.add_option("SUBJECT", wanted.subject, "a command or a topic");
  helping.add_option("--as", wanted.form, "the man page, or a completion for bash")
      ->check(CLI::IsMember({"man", "bash"}));
  if (name == "help") work = [&wanted](const Console& given) { return help(wanted, given); };
  try {
    // The parser takes the arguments in reverse order.
    app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::CallForHelp&) {
    return write(part != nullptr ? commandHelp(textOf(*part)) : overviewHelp(textOfAll()), console);
  } catch (const CLI::CallForVersion& version) {
    return write(std::string(version.what()) + '\n', console);
  } catch (const CLI::ParseError& error) {
    return tell(app, error, console);
  }
  if (!work) return failed(console, "the first argument is to be a command; see oxrrec --help");
  return guarded(work, console);
}

}  // namespace oxr::rec
