#pragma once

// Whether a person started the program with the single argument --version. Never true for a web request: some
// servers pass the words of a query as arguments, but every server also sets one of the variables of RFC
// 3875.
bool asksForVersion(int argc, const char* const* argv);

// Writes "fileman.cgi", the version and a line end to standard output.
void writeVersion();
