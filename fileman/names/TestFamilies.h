#pragma once

#include <list>
#include <string>

#include "fileman/TestMode.h"

// Test families: where each stores its files, and which configured modes belong to it.
namespace families {

// Appends the family's first-level directories; nothing for a number that is no family.
void appendRoots(std::list<std::string>& out, TestMode family, bool isResult);

bool hasMode(TestMode family, const std::string& modeName);

} // namespace families
