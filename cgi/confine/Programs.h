#pragma once

#include <string>

class Landlock;

// The programs that a request may run, and what the kernel needs to start them.
namespace programs {

// Allows the process to run the program at path, and the programs that the kernel needs for it: the dynamic
// loader of an ELF file, or the interpreter in the first line of a script.
void allow(Landlock& rules, const std::string& path);

// Allow the commands of a delivery, or only those that remove its files, with what every program needs.
void allowCommands(Landlock& rules);
void allowRemoval(Landlock& rules);

} // namespace programs
