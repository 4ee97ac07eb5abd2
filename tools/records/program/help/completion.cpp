#include "records/program/help/model.hpp"

namespace oxr::rec {

namespace {

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words)
    text += (text.empty() ? "" : " ") + word;
  return text;
}

}  // namespace

// The word before the one at hand tells whether a value is wanted: one of a few words, or a file.
std::string bashCompletion(const Program& program, const std::vector<CommandText>& commands) {
  const std::string name = program.name;
  std::string names, options, values;
  for (const CommandText& command : commands) {
    names += command.name + ' ';
    options += "    " + command.name + ") options=\"";
    for (const OptionText& option : command.options) {
      if (option.isArgument) continue;
      options += joined(option.names) + ' ';
      if (!option.words.empty())
        values += "    " + command.name + ":" + option.names.back() + ") words=\"" + joined(option.words) + "\" ;;\n";
    }
    options += "\" ;;\n";
  }
  std::string subjects = names;
  for (const Topic& topic : program.topics)
    subjects += std::string(topic.name) + ' ';
  return "# bash completion of " + name + "\n_" + name +
         "() {\n"
         "  local current=\"${COMP_WORDS[COMP_CWORD]}\" before=\"${COMP_WORDS[COMP_CWORD - 1]}\"\n"
         "  local command=\"${COMP_WORDS[1]}\" options= words=\n"
         "  if ((COMP_CWORD == 1)); then\n"
         "    mapfile -t COMPREPLY < <(compgen -W \"" +
         names +
         "help --help --version\" -- \"$current\")\n"
         "    return\n  fi\n"
         "  case \"$command:$before\" in\n" +
         values + "    help:help) words=\"" + subjects +
         "\" ;;\n  esac\n"
         "  case \"$command\" in\n" +
         options +
         "  esac\n"
         "  if [[ -n $words ]]; then\n"
         "    mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$current\")\n"
         "  elif [[ $current == -* ]]; then\n"
         "    mapfile -t COMPREPLY < <(compgen -W \"$options\" -- \"$current\")\n"
         "  else\n"
         "    mapfile -t COMPREPLY < <(compgen -f -- \"$current\")\n  fi\n}\n"
         "complete -o filenames -F _" +
         name + ' ' + name + '\n';
}

}  // namespace oxr::rec
