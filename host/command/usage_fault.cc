#include "usage_fault.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <set>

#include "nearest_word.h"
#include "one_line.h"

namespace ipvald {
namespace {

using Words = std::vector<std::string>;

bool LooksLikeOption(const std::string& word) { return word.size() > 1 && word.front() == '-'; }

bool AsksForHelp(const std::string& word) { return word == "--help" || word == "-h"; }

std::string Shown(const std::string& word) {
  const std::string line = OneLine(word);
  return line.empty() ? "\"\"" : line;
}

// What was meant, as the end of a message; nothing when nobody knows.
std::string DidYouMean(const std::string& typed, const Words& known) {
  const std::string nearest = NearestWord(typed, known);
  return nearest.empty() ? "" : ": did you mean " + nearest + "?";
}

Words CommandNames(const CLI::App& app) {
  Words names;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    names.push_back(command->get_name());
  }
  return names;
}

void AppendOptions(const CLI::App& command, Words& names) {
  for (const CLI::Option* option : command.get_options()) {
    for (const std::string& long_name : option->get_lnames()) names.push_back("--" + long_name);
  }
}

// `command` may also be the program, whose commands' options are meant before them, too.
std::string UnknownOption(const CLI::App& command, const std::string& name) {
  Words known;
  AppendOptions(command, known);
  for (const CLI::App* below : command.get_subcommands({})) AppendOptions(*below, known);
  return "unknown option " + Shown(name) + DidYouMean(name, known);
}

bool TakesValue(const CLI::Option& option) { return option.get_items_expected_min() > 0; }

// The words behind a command, read one after the other.
class CommandWords {
 public:
  CommandWords(const CLI::App& command, const Words& words) : command_(command), words_(words) {}

  std::string FindFault() {
    std::string fault;
    bool only_files = false;
    while (next_ < words_.size()) {
      const std::string& word = words_[next_++];
      std::string found;
      if (only_files || !LooksLikeOption(word)) {
        found = TakeFile(word);
      } else if (word == "--") {
        only_files = true;
      } else if (AsksForHelp(word)) {
        return "";
      } else {
        found = TakeOption(word);
      }
      if (fault.empty()) fault = found;
    }
    return fault;
  }

 private:
  std::string TakeFile(const std::string& word) {
    const auto options = command_.get_options();
    const auto file = std::find_if(options.begin(), options.end(), [](const CLI::Option* option) {
      return option->get_positional();
    });
    if (file == options.end()) return command_.get_name() + " takes no FILE: " + Shown(word);
    if (given_.insert(*file).second) return "";
    std::string too_many = Shown(word) + " is one FILE too many";
    if (given_.count(command_.get_option_no_throw("--running")) > 0) return too_many;
    return too_many + "; the configuration before a change is given by --running FILE";
  }

  std::string TakeOption(const std::string& word) {
    const size_t equals = word.find('=');
    const std::string name = word.substr(0, equals);
    const CLI::Option* option = command_.get_option_no_throw(name);
    if (option == nullptr) return UnknownOption(command_, name);
    if (!TakesValue(*option)) return "";
    const bool has_value = equals == std::string::npos ? TakeValue() : equals + 1 < word.size();
    if (!has_value) return name + " lacks its " + ValueName(*option);
    return given_.insert(option).second ? "" : name + " is given twice";
  }

  // Whether there is a next word and it is no option of this command. A file that is called like
  // one can be given behind "=".
  bool TakeValue() {
    if (next_ == words_.size()) return false;
    const std::string& value = words_[next_];
    if (LooksLikeOption(value) &&
        command_.get_option_no_throw(value.substr(0, value.find('='))) != nullptr) {
      return false;
    }
    ++next_;
    return true;
  }

  static std::string ValueName(const CLI::Option& option) {
    return option.get_positional() ? option.get_name(true) : option.get_type_name();
  }

  const CLI::App& command_;
  const Words& words_;
  size_t next_ = 0;
  std::set<const CLI::Option*> given_;
};

}  // namespace

std::string FindUsageFault(const CLI::App& app, const Words& words) {
  if (words.empty()) return "a command is required: check or points";
  const std::string& first = words.front();
  const Words commands = CommandNames(app);
  if (std::find(commands.begin(), commands.end(), first) != commands.end()) {
    const Words rest(words.begin() + 1, words.end());
    return CommandWords(*app.get_subcommand(first), rest).FindFault();
  }
  if (!LooksLikeOption(first)) {
    const std::string meant = DidYouMean(first, commands);
    return "unknown command " + Shown(first) +
           (meant.empty() ? ": a command is required, check or points" : meant);
  }
  const std::string name = first.substr(0, first.find('='));
  if (app.get_option_no_throw(name) != nullptr) return "";
  const auto command = std::find_if(commands.begin(), commands.end(), [&](const auto& word) {
    return app.get_subcommand(word)->get_option_no_throw(name) != nullptr;
  });
  if (command == commands.end()) return UnknownOption(app, name);
  return name + " stands before the command, but belongs behind it: " + *command + " " + name;
}

}  // namespace ipvald
