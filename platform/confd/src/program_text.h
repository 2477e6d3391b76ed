// Tells a text that is written in a program from one that a program made while it ran.
#ifndef PLATFORM_CONFD_PROGRAM_TEXT_H_
#define PLATFORM_CONFD_PROGRAM_TEXT_H_

namespace confd {

/// Whether `text` lies in a segment of the program or of a library that cannot be written, as
/// string literals and other constants with static storage do. False for what is on the heap or on
/// the stack and for variables.
bool IsProgramText(const char* text);

}  // namespace confd

#endif  // PLATFORM_CONFD_PROGRAM_TEXT_H_
