#pragma once

#include <list>
#include <string>

class Landlock;

// Programs that a rule may allow to run.
namespace programs {

// Returns all programs of this name in the directories of PATH. The shell runs the first one, which may be a
// script that runs another one. A name that contains '/' is returned as it is.
std::list<std::string> find(const std::string& name);

// Allows the process to run the program at path, and the programs that the kernel needs for it: the dynamic
// loader of an ELF file, or the interpreter in the first line of a script.
void allow(Landlock& rules, const std::string& path);

} // namespace programs
