// What is wrong with a command line, in words that say what was meant.
#ifndef HOST_COMMAND_USAGE_FAULT_H_
#define HOST_COMMAND_USAGE_FAULT_H_

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace ipvald {

/// The first fault among the words behind the program's name, as far as it shows without a look at
/// the options' values: commands and options that are not known, options that stand before the
/// command, twice or without their value, and files too many.
/// @returns one line, or "" when there is no such fault or help is asked for
std::string FindUsageFault(const CLI::App& app, const std::vector<std::string>& words);

}  // namespace ipvald

#endif  // HOST_COMMAND_USAGE_FAULT_H_
