#include "records/program/program.hpp"

#include <CLI/CLI.hpp>
#include <new>
#include <sstream>
#include <stdexcept>
#include <string_view>

#include "records/program/help/model.hpp"

namespace oxr::rec {

namespace {

int failed(const Console& console, const std::string& text) {
  console.messages << console.program << ": " << text << '\n';
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

// The command "help". The build makes the man page and the completion of it.
int help(const Program& program, const HelpOptions& options, const Console& console) {
  const std::vector<CommandText> all = textOfAll(program);
  if (options.form == "man") return write(manPage(program, all), console);
  if (options.form == "bash") return write(bashCompletion(program, all), console);
  if (options.subject.empty()) return write(overviewHelp(program, all), console);
  for (const CommandText& command : all)
    if (command.name == options.subject) return write(commandHelp(program, command), console);
  for (const Topic& topic : program.topics)
    if (topic.name == options.subject) return write(topicHelp(topic, all), console);
  return failed(console, "no command or topic is called " + options.subject + "; " + program.name + " help lists them");
}

}  // namespace

int runCommand(const Program& program, std::span<const char* const> arguments, const Console& outside) {
  const Console console{outside.input, outside.output, outside.messages, outside.messagesOnTerminal, program.name};
  CLI::App app(sentence(program.brief), program.name);
  app.require_subcommand(1);
  app.set_version_flag("--version", std::string(program.name) + ' ' + program.version);
  const std::string_view name = arguments.empty() ? "" : arguments.front();
  Work work;
  const CLI::App* part = nullptr;
  for (const Command& command : program.commands) {
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
  if (name == "help") work = [&](const Console& given) { return help(program, wanted, given); };
  try {
    // The parser takes the arguments in reverse order.
    app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::CallForHelp&) {
    return write(part != nullptr ? commandHelp(program, textOf(*part)) : overviewHelp(program, textOfAll(program)),
                 console);
  } catch (const CLI::CallForVersion& version) {
    return write(std::string(version.what()) + '\n', console);
  } catch (const CLI::ParseError& error) {
    return tell(app, error, console);
  }
  if (!work)
    return failed(console, std::string("the first argument is to be a command; see ") + program.name + " --help");
  return guarded(work, console);
}

}  // namespace oxr::rec
