// The random part of temporary names, for the sources of the support library.
#pragma once

// Returns a pseudo-random number, for names that other processes are unlikely to use.
unsigned drawNumber();
