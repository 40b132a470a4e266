// The released program has no C++ streams. TinyXML's objects include <iostream>, whose initialiser would make
// eight streams and their locale in every process: 7 % of the time of the smallest CGI program, and a quarter
// of this one's size. Linked in as an object, this definition keeps the library's own out.
//
// Part of the static program by the option FILEMAN_NO_STREAMS. The linker options that come with it refuse a
// program that mentions std::cout or another stream.

#include <ios>

std::ios_base::Init::Init() = default;

// NOLINTNEXTLINE(modernize-use-equals-default): a defaulted one would have to be so in the library's header
std::ios_base::Init::~Init() {}
