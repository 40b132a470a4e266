#pragma once

#include <list>
#include <string>
#include <vector>

#include "fileman/load/ActiveFilter.h"

class Findings;
class LinedDocument;

// A directory from which the program lists files. It is declared in the document or built in.
struct Source {
    // The path of a file below the directory.
    enum class Shape {
        Tree,    // port directory, type directory, file
        Fixed,   // type directory from the list, file
        Flat,    // file
        Nothing, // nothing is listed from here
    };

    int line = 0;      // the line in the document, or 0 if built in
    std::string title; // the name in messages: "results of module 1GE, mode Ethernet"
    std::string dir;   // full path
    Shape shape = Shape::Flat;
    std::list<std::string> names; // port directories of a tree, or type directories of a fixed source
    std::string module;
    std::string mode; // empty if there is none
    std::string type; // only of a flat source
    bool isExtra = false;
    std::string port; // only of an extra directory
};

// Returns all sources. The configuration must have been read. Adds a finding for each source whose files can
// never be listed.
std::vector<Source> readSources(const LinedDocument& document, Findings& findings);

// Returns the filter of a request for everything. Views, downloads and PDF exports use it too.
ActiveFilter everything();
