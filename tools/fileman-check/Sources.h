#pragma once

#include <list>
#include <string>
#include <vector>

#include "fileman/load/ActiveFilter.h"

class Findings;
class LinedDocument;

// One place from which the program lists files, as the document declares it or as it is built in.
struct Source {
    // How the files lie below the directory.
    enum class Shape {
        Tree,    // a port directory, a type directory, the file
        Fixed,   // one of the type directories that the list names, the file
        Flat,    // the file
        Nothing, // nothing is listed from here
    };

    int line = 0;      // in the document; 0: built in
    std::string title; // for messages: "results of module 1GE, mode Ethernet"
    std::string dir;   // full path
    Shape shape = Shape::Flat;
    std::list<std::string> names; // port directories of a tree, type directories of a fixed source
    std::string module;
    std::string mode; // empty: none
    std::string type; // of a flat source
    bool isExtra = false;
    std::string port; // of an extra directory
};

// All of them. The configuration has been read; findings gets what is declared and can never be listed.
std::vector<Source> readSources(const LinedDocument& document, Findings& findings);

// The filter of a request for everything, which views, downloads and PDFs use as well.
ActiveFilter everything();
