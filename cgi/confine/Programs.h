#pragma once

#include <list>
#include <string>

class Landlock;

// Programs that a rule may allow to run.
namespace programs {

// The programs of this name in the directories of PATH: the one that the shell runs, and those that it may be
// a wrapper of. A name with a '/' stands for itself.
std::list<std::string> find(const std::string& name);

// Allows to run the program at path, and what the kernel starts to run it: the dynamic loader of an ELF file,
// the interpreter that the first line of a script names.
void allow(Landlock& rules, const std::string& path);

} // namespace programs
