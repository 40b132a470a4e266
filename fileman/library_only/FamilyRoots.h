#pragma once

#include <list>
#include <string>

#include "fileman/TestMode.h"

// Test families: the directories of each family, and the configured modes that belong to it.
namespace families {

// Appends the first-level directories of the family. Appends nothing for a number that is not a family.
void appendRoots(std::list<std::string>& out, TestMode family, bool isResult);

bool hasMode(TestMode family, const std::string& modeName);

} // namespace families
