#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <string>

// The records that each kind of request finds on disk. The classes of the program load them.
class Requests {
public:
    enum Kind : std::size_t { All, Results, Profiles, Screenshots, Deliveries, kKinds };
    static const char* title(Kind kind);

    struct Row {
        std::string id;
        std::string module;
        std::string mode;
        std::string test;
        std::string port;
        std::string rsltype;
    };
    using Rows = std::multimap<std::string, Row>; // by path

    // Scans /home and loads all rows. The configuration must have been read.
    Requests();
    const Rows& rows(Kind kind) const { return m_rows[kind]; }

private:
    std::array<Rows, kKinds> m_rows;
};
