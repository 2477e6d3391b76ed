// A plug-in that writes results in the host's name.
#ifndef TESTS_SUPPORT_FORGED_RESULTS_H_
#define TESTS_SUPPORT_FORGED_RESULTS_H_

#include <string>

/// What `how` asks for: a word that begins with "forge-" and may end with "-exit", which ends the
/// process with status 0 behind what was forged. Nothing for any other word.
void ForgeResults(const std::string& how);

#endif  // TESTS_SUPPORT_FORGED_RESULTS_H_
