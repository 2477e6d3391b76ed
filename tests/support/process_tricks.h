// What a plug-in can do to the process that it runs in, and to the processes around it.
#ifndef TESTS_SUPPORT_PROCESS_TRICKS_H_
#define TESTS_SUPPORT_PROCESS_TRICKS_H_

#include <string>

/// Plays the trick with that name; nothing for another name. Tricks that start processes append the
/// numbers of these, and of this one if it is to hang, to the file that the environment variable
/// MISBEHAVE_PROCESSES names.
void PlayProcessTrick(const std::string& name);

#endif  // TESTS_SUPPORT_PROCESS_TRICKS_H_
