#include "options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

#include "one_line.h"
#include "usage_fault.h"

namespace ipvald {
namespace {

constexpr uint32_t kMaxTimeout = 86400;  // seconds

constexpr const char* kExitStatus =
    "Exit status: 0 accepted, 1 rejected, 2 no verdict (usage, unreadable or invalid\n"
    "input, too few descriptors or too little memory, output not written), 3 the\n"
    "plug-in failed, 128+N ended by signal N.\n";

constexpr const char* kCheckExamples =
    "Examples:\n"
    "  ipvald check candidate.xml\n"
    "      validate a configuration as the first one on an empty device\n"
    "  ipvald check --running running.json candidate.json\n"
    "      validate the change from one configuration to another\n"
    "  ipvald check --trace --running - candidate.xml < running.xml\n"
    "      the running configuration from standard input; what was called and why\n";

constexpr const char* kPointsExamples =
    "Examples:\n"
    "  ipvald points\n"
    "      list the validation points of the data model\n"
    "  ipvald points --format json\n"
    "      the same for programs\n"
    "\n"
    "Exit status: 0 listed, 2 usage, unusable data model or output not written.\n";

// Where an installation has what the program needs, relative to the program.
constexpr const char* kPluginPlace = "../lib/libip_app_validation.so";
constexpr const char* kYangPlace = "../share/ipvald/yang";

// An option that is also the positional argument FILE shows that name behind its own.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_option_name(const CLI::Option* option, bool is_positional) const override {
    const std::string name = Formatter::make_option_name(option, is_positional);
    return is_positional || !option->get_positional() ? name : name + " " + option->get_name(true);
  }
};

// What `place` means for this executable; the build tree has the shape of an installation.
std::string BesideProgram(const char* place) {
  std::error_code ignored;
  const auto executable = std::filesystem::read_symlink("/proc/self/exe", ignored);
  return (executable.parent_path() / place).lexically_normal();
}

// An option that takes one of a few words.
template <typename T>
void AddChoice(CLI::App& command, const std::string& name, T& target,
               std::vector<std::pair<std::string, T>> words, const std::string& description) {
  const auto choose = [name, &target, words = std::move(words)](const std::string& given) {
    std::string known;
    for (const auto& [word, value] : words) {
      if (given == word) {
        target = value;
        return;
      }
      known += (known.empty() ? "" : ", ") + word;
    }
    throw CLI::ValidationError(name, given + " is not one of " + known);
  };
  command.add_option_function<std::string>(name, choose, description)->type_name("WORD");
}

std::string TimeoutError(const std::string& text) {
  uint32_t seconds = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  const bool is_number = error == std::errc() && end == text.data() + text.size();
  if (is_number && seconds >= 1 && seconds <= kMaxTimeout) return "";
  return text + " is not a number from 1 to " + std::to_string(kMaxTimeout);
}

void AddCommonOptions(CLI::App& command, Options& options) {
  AddChoice<Format>(command, "--format", options.format,
                    {{"text", Format::kText}, {"json", Format::kJson}},
                    "output format: text (default) or json");
  command
      .add_option("--yang", options.yang,
                  "directory with the data model, default\n" + std::string(kYangPlace) +
                      " beside the program")
      ->type_name("DIR");
}

struct CheckCommand {
  CLI::App* command;
  CLI::Option* running;
};

CheckCommand AddCheck(CLI::App& app, Options& options, std::string& running_file) {
  CheckOptions& check = options.check;
  CLI::App* command = app.add_subcommand(
      "check", "Say whether the device would accept a configuration, and why not");
  command->footer(std::string(kCheckExamples) + "\n" + kExitStatus);
  command
      ->add_option("FILE,--candidate", check.candidate,
                   "configuration to validate, XML or JSON; - is standard input")
      ->type_name("")
      ->required();
  CLI::Option* running =
      command
          ->add_option("--running", running_file,
                       "configuration that the device has now; empty when not given")
          ->type_name("FILE");
  AddCommonOptions(*command, options);
  command->add_flag("--trace", check.trace,
                    "list the validation points that were called, why, and what they logged");
  command
      ->add_option("--plugin", check.plugin,
                   "validation plug-in to load, default\n" + std::string(kPluginPlace) +
                       " beside the program")
      ->type_name("SO");
  command
      ->add_option(
          "--timeout", check.timeout,
          "time for reading each file and for all calls of the plug-in,\n1 to 86400, default 60")
      ->type_name("SECONDS")
      ->check(TimeoutError);
  AddChoice<Color>(*command, "--color", check.color,
                   {{"auto", Color::kAuto}, {"always", Color::kAlways}, {"never", Color::kNever}},
                   "colour the verdict: auto (default), always or never");
  return {command, running};
}

CLI::App* AddPoints(CLI::App& app, Options& options) {
  CLI::App* command = app.add_subcommand("points", "List the validation points of the data model");
  command->footer(kPointsExamples);
  AddCommonOptions(*command, options);
  return command;
}

Options TextToPrint(std::string text) {
  Options options;
  options.command = Options::Command::kText;
  options.text = std::move(text);
  return options;
}

// A fault in `words`, and where their command, if they name one, is explained.
UsageError Fault(const std::string& message, const std::vector<std::string>& words) {
  const bool has_command = !words.empty() && (words[0] == "check" || words[0] == "points");
  return UsageError(OneLine(message) + " (see ipvald " + (has_command ? words[0] + " " : "") +
                    "--help)");
}

}  // namespace

Options ParseOptions(int argc, const char* const* argv) {
  Options options;
  options.yang = BesideProgram(kYangPlace);
  options.check.plugin = BesideProgram(kPluginPlace);

  CLI::App app("Tell what a device's configuration validation says about a configuration",
               "ipvald");
  app.set_version_flag("--version", "ipvald " IPVALD_VERSION, "Print the version and exit");
  app.set_help_flag("--help,-h", "Print this help and exit");
  app.require_subcommand(1);
  app.formatter(std::make_shared<HelpFormatter>());
  app.get_formatter()->column_width(28);
  app.get_formatter()->label("REQUIRED", "");
  std::string running_file;
  const auto [check, running] = AddCheck(app, options, running_file);
  const CLI::App* points = AddPoints(app, options);
  app.footer(std::string(kCheckExamples) +
             "  ipvald points\n"
             "      list the validation points of the data model\n\n" +
             kExitStatus);

  const std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
  if (const std::string fault = FindUsageFault(app, words); !fault.empty()) {
    throw Fault(fault, words);
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForVersion& version) {
    return TextToPrint(std::string(version.what()) + "\n");
  } catch (const CLI::Success&) {
    // Help was asked for: of the command that was named before, if any.
    if (check->parsed()) return TextToPrint(check->help("ipvald"));
    if (points->parsed()) return TextToPrint(points->help("ipvald"));
    return TextToPrint(app.help());
  } catch (const CLI::RequiredError&) {
    throw Fault(running->count() > 0 ? "check: FILE is required: the candidate, beside --running"
                                     : "check: FILE is required",
                words);
  } catch (const CLI::ParseError& error) {
    throw Fault(error.what(), words);
  }
  if (points->parsed()) options.command = Options::Command::kPoints;
  if (running->count() > 0) options.check.running = running_file;
  if (options.check.candidate == "-" && options.check.running == "-") {
    throw Fault("only one of the two configurations can be standard input", words);
  }
  return options;
}

}  // namespace ipvald
