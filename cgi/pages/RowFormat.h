#pragma once

#include <string>
#include <string_view>

#include "cgi/answer/Escape.h"

// The formats of the rows of the list page. Every format writes the same nine values in the same order.
// RowWriter uses them; CsvAndJsonList has formats of its own.

// The fixed texts of a format: one before each value of a row, one after the last value, one between two
// rows, and one after the last row.
struct RowText {
    std::string_view id, name, module, mode, test, port, datetime, rsltype, path, end, between, last;
};

// clang-format off

// The elements of griddata in the default page. Values are written as they are stored, even when they end the
// script's string, and the last element has a comma too. This is intentional: the scripts rely on these bytes.
struct DefaultElements {
    static constexpr bool kIsVerbatim = true;
    static constexpr RowText kText = {
        "\t\t{ id: '", "', name: '", "', module: '", "', mode: '", "', test: '", "', port: '", "', datetime: '", "', rsltype: '", "', path: '", "' },\n", "", ""};
};

// Rows whose values are JSON strings.
struct JsonValues {
    static constexpr bool kIsVerbatim = false;
    static bool isPlain(std::string_view value) { return escape::isPlainInJson(value); }
    static void append(std::string& out, std::string_view value) { escape::appendJson(out, value); }
};

// The elements of griddata in the strict page: JSON objects (RFC 8259).
struct StrictElements : JsonValues {
    static constexpr RowText kText = {
        "\t\t{\"id\":\"", R"(","name":")", R"(","module":")", R"(","mode":")", R"(","test":")", R"(","port":")", R"(","datetime":")", R"(","rsltype":")", R"(","path":")", "\"}", ",\n", "\n"};
};

// clang-format on
