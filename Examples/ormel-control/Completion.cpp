#include "Completion.h"

#include <CLI/CLI.hpp>

namespace ormel::control {

namespace {

/// A word that may come next, and what it means.
struct Word {
  std::string text;
  std::string description;
};

/// The words that may follow a command.
struct Place {
  /// The command's names down from the program, each with a space ahead: " thread read".
  std::string path;
  std::vector<Word> commands;
  std::vector<Word> options;
  /// Arguments of a fixed choice.
  std::vector<Word> values;
  bool takesFiles = false;
};

struct Places {
  std::vector<Place> all;
  /// Options behind which a value stands.
  std::vector<std::string> optionsWithValue;
};

std::vector<std::string> namesOf(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.get_snames()) names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
  return names;
}

void addOptions(const CLI::App& command, Place& place, Places& places) {
  for (const CLI::Option* option : command.get_options()) {
    if (option->get_positional()) {
      if (option->get_name() == "PATH") place.takesFiles = true;
      if (option->get_name() == "SHELL") {
        for (const std::string& shell : completionShells()) place.values.push_back({shell, ""});
      }
      continue;
    }
    for (const std::string& name : namesOf(*option)) {
      place.options.push_back({name, option->get_description()});
      if (option->get_items_expected_min() > 0) places.optionsWithValue.push_back(name);
    }
  }
}

void addPlaces(const CLI::App& command, const std::string& path, const std::vector<Word>& inherited, Places& places) {
  Place place;
  place.path = path;
  place.options = inherited;
  addOptions(command, place, places);
  // Options of the program are understood behind a command, too. Each command has a help of its own.
  std::vector<Word> handedOn = inherited;
  if (path.empty()) {
    handedOn = place.options;
    std::erase_if(handedOn, [](const Word& option) { return option.text == "-h" || option.text == "--help"; });
  }
  const auto subcommands = command.get_subcommands([](const CLI::App*) { return true; });
  for (const CLI::App* subcommand : subcommands) {
    place.commands.push_back({subcommand->get_name(), subcommand->get_description()});
  }
  if (path == " exec") place.options.push_back({"--", "The program and its arguments follow"});
  places.all.push_back(place);
  for (const CLI::App* subcommand : subcommands) {
    addPlaces(*subcommand, path + " " + subcommand->get_name(), handedOn, places);
  }
}

std::string quoted(const std::string& text) {
  std::string word = "'";
  for (const char character : text) word += character == '\'' ? std::string("'\\''") : std::string(1, character);
  return word + "'";
}

std::string textsOf(std::initializer_list<const std::vector<Word>*> lists) {
  std::string texts;
  for (const auto* list : lists) {
    for (const Word& word : *list) texts += (texts.empty() ? "" : " ") + word.text;
  }
  return texts;
}

/// The paths of all commands, as a pattern of the shell.
std::string knownPaths(const Places& places) {
  std::string paths;
  for (const Place& place : places.all) {
    if (!place.path.empty()) paths += (paths.empty() ? "" : "|") + quoted(place.path);
  }
  return paths;
}

std::string valueOptions(const Places& places, const char* separator) {
  std::string options;
  for (const std::string& option : places.optionsWithValue) {
    if (options.find(option) == options.npos) options += (options.empty() ? "" : separator) + option;
  }
  return options;
}

/// The same in bash and zsh: finds the command that the words lead to, and what may follow it. `files` is for the word
/// to be completed by files.
std::string search(const Places& places, const std::string& wordCount, const std::string& wordAt,
                   const std::string& first, const std::string& files) {
  std::string text = "  local place='' skipped='' offered='' word='' i\n";
  text += "  for ((i = " + first + "; i < " + wordCount + "; i++)); do\n";
  text += "    word=" + wordAt + "\n";
  text += "    if [[ -n $skipped ]]; then skipped=''; continue; fi\n";
  text += "    case $word in\n";
  text += "      --) " + files + "; return ;;\n";
  text += "      " + valueOptions(places, "|") + ") skipped=1 ;;\n";
  text += "      -*) ;;\n";
  text += "      *) case \"$place $word\" in " + knownPaths(places) + ") place=\"$place $word\" ;; esac ;;\n";
  text += "    esac\n";
  text += "  done\n";
  text += "  if [[ -n $skipped ]]; then " + files + "; return; fi\n";
  text += "  case $place in\n";
  for (const Place& place : places.all) {
    text += "    " + quoted(place.path) +
            ") offered=" + quoted(textsOf({&place.commands, &place.values, &place.options})) +
            (place.takesFiles ? "; [[ $current != -* ]] && { " + files + "; return; }" : "") + " ;;\n";
  }
  return text + "  esac\n";
}

std::string bashScript(const Places& places) {
  return "# Completes ormel-control in bash: source <(ormel-control completion bash)\n"
         "_ormel_control() {\n"
         "  local current=${COMP_WORDS[COMP_CWORD]}\n"
         "  COMPREPLY=()\n" +
         search(places, "COMP_CWORD", "${COMP_WORDS[i]}", "1", "compopt -o default") +
         "  COMPREPLY=($(compgen -W \"$offered\" -- \"$current\"))\n"
         "}\n"
         "complete -F _ormel_control ormel-control\n";
}

// As a file "_ormel_control" on the path of zsh's functions it is the function itself, once it has defined it.
std::string zshScript(const Places& places) {
  return "#compdef ormel-control\n"
         "# Completes ormel-control in zsh: source <(ormel-control completion zsh)\n"
         "_ormel_control() {\n"
         "  local current=${words[CURRENT]}\n"
         "  local -a typed=(\"${words[@]}\")\n" +
         search(places, "CURRENT", "${typed[i]}", "2", "_files") +
         "  compadd -- ${=offered}\n"
         "}\n"
         "if [[ $0 == _ormel_control ]]; then\n"
         "  _ormel_control \"$@\"\n"
         "else\n"
         "  compdef _ormel_control ormel-control\n"
         "fi\n";
}

/// Prints the command that the words lead to, or "files" where these are to complete the word.
std::string fishSearch(const Places& places) {
  std::string text =
      "function __ormel_control_place\n"
      "  set -l place ''\n"
      "  set -l skipped ''\n"
      "  for word in (commandline -opc)[2..-1]\n"
      "    if test -n \"$skipped\"\n"
      "      set skipped ''\n"
      "    else if test \"$word\" = --\n"
      "      set skipped 1\n"
      "      break\n"
      "    else if contains -- $word " +
      valueOptions(places, " ") +
      "\n"
      "      set skipped 1\n"
      "    else if contains -- \"$place $word\"";
  for (const Place& place : places.all) {
    if (!place.path.empty()) text += " " + quoted(place.path);
  }
  return text +
         "\n"
         "      set place \"$place $word\"\n"
         "    end\n"
         "  end\n"
         "  test -n \"$skipped\"; and echo files; or echo \"$place\"\n"
         "end\n";
}

std::string fishScript(const Places& places) {
  const std::string complete = "complete -c ormel-control";
  std::string text = "# Completes ormel-control in fish: ormel-control completion fish | source\n" +
                     fishSearch(places) +
                     "function __ormel_control_is_at\n"
                     "  test \"$(__ormel_control_place)\" = \"$argv\"\n"
                     "end\n" +
                     complete + " -f\n" + complete + " -n '__ormel_control_is_at files' -F\n";
  for (const Place& place : places.all) {
    std::string isHere = "__ormel_control_is_at \"";
    isHere.append(place.path).append("\"");
    const auto offer = [&](const std::vector<Word>& words, const std::string& condition) {
      for (const Word& word : words) {
        text.append(complete).append(" -n '").append(condition).append("' -a ").append(quoted(word.text));
        text.append(" -d ").append(quoted(word.description)).append("\n");
      }
    };
    offer(place.commands, isHere);
    offer(place.values, isHere);
    offer(place.options, place.takesFiles ? isHere + "; and string match -q -- \"-*\" (commandline -ct)" : isHere);
    if (place.takesFiles) text.append(complete).append(" -n '").append(isHere).append("' -F\n");
  }
  return text;
}

}  // namespace

std::vector<std::string> completionShells() { return {"bash", "zsh", "fish"}; }

std::string completionScript(const std::string& shell, const CLI::App& program) {
  Places places;
  addPlaces(program, "", {}, places);
  if (shell == "zsh") return zshScript(places);
  if (shell == "fish") return fishScript(places);
  return bashScript(places);
}

}  // namespace ormel::control
