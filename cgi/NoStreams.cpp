// The released program has no C++ streams. TinyXML's object files include <iostream>. Its initialiser would
// make eight streams and their locale in every process: this would cost 7 % of the time of the smallest CGI
// program, and a quarter of the size of this one. When this definition is linked in as an object file, the
// linker does not take the definition of the C++ library.
//
// The option FILEMAN_NO_STREAMS adds this file to the static program. It also adds linker options that refuse
// a program that mentions std::cout or another stream.

#include <ios>

std::ios_base::Init::Init() = default;

// NOLINTNEXTLINE(modernize-use-equals-default): only the library's header could declare it as defaulted
std::ios_base::Init::~Init() {}
