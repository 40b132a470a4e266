#pragma once

#include <algorithm>
#include <cstdio>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

#include "cgi/answer/Output.h"
#include "cgi/pages/RowFormat.h"
#include "fileman/load/LoadedList.h"

// Calls its visitor with each row of a list.
using RowSource = std::function<void(const RowVisitor&)>;

// Tells which rows hold only values that a format carries as they are. Most do, and the rows of one source
// differ in little more than the file's name.
template<class Format>
class PlainRows {
public:
    bool contain(const ListedRow& row) {
        if (row.startsSource) {
            m_isSourcePlain = arePlain(
                {row.id, row.module, row.mode, row.test, row.port, row.datetime, row.rsltype, row.path});
            m_directorySize = row.path.rfind('/') + 1;
        }
        const std::string_view file = row.path.substr(m_directorySize);
        // The file's name mostly begins with the record's.
        const bool isNameInFile = file.substr(0, row.name.size()) == row.name;
        return m_isSourcePlain && Format::isPlain(file) && (isNameInFile || Format::isPlain(row.name));
    }

private:
    static bool arePlain(std::initializer_list<std::string_view> values) {
        return std::all_of(values.begin(), values.end(), &Format::isPlain);
    }

    bool m_isSourcePlain = false;
    std::size_t m_directorySize = 0; // of the source's paths, with the '/' behind it
};

// A row with its values escaped for a format.
template<class Format>
class EscapedRow {
public:
    explicit EscapedRow(const ListedRow& row)
        : m_id(escaped(row.id)), m_name(escaped(row.name)), m_module(escaped(row.module)),
          m_mode(escaped(row.mode)), m_test(escaped(row.test)), m_port(escaped(row.port)),
          m_datetime(escaped(row.datetime)), m_rsltype(escaped(row.rsltype)), m_path(escaped(row.path)) {}

    ListedRow row() const {
        return {m_id, m_name, m_module, m_mode, m_test, m_port, m_datetime, m_rsltype, m_path};
    }

private:
    static std::string escaped(std::string_view value) {
        std::string text;
        Format::append(text, value);
        return text;
    }

    std::string m_id, m_name, m_module, m_mode, m_test, m_port, m_datetime, m_rsltype, m_path;
};

// Writes rows to standard output, in pieces of half a pipe: the server reads one half while this program
// fills the other. It does not use stdio, which checks its state for each part of each row.
template<class Format>
class RowWriter {
public:
    RowWriter() = default;
    RowWriter(const RowWriter&) = delete;
    RowWriter& operator=(const RowWriter&) = delete;
    ~RowWriter() {
        if (m_hasRow)
            writeText(Format::kText.last);
        flush();
    }

    void write(const ListedRow& row) {
        if constexpr (Format::kIsVerbatim)
            writeEscaped(row);
        else if (m_plainRows.contain(row))
            writeEscaped(row);
        else
            writeEscaped(EscapedRow<Format>(row).row());
    }

private:
    static constexpr std::size_t kFixedText = 128;   // more than the fixed text of a row
    static constexpr std::size_t kPieceSize = 32768; // half a pipe

    // The compiler knows the texts of the format and copies them by one or two instructions each. The text
    // between two rows waits for the next row, so that a list that ends too early does not look whole.
    void writeEscaped(const ListedRow& row) {
        constexpr const RowText& kText = Format::kText;
        makeRoom(kFixedText + row.id.size() + row.name.size() + row.module.size() + row.mode.size() +
                 row.test.size() + row.port.size() + row.datetime.size() + row.rsltype.size() +
                 row.path.size());
        char* end = &m_buffer[m_used];
        if (m_hasRow)
            end = put(end, kText.between);
        m_hasRow = true;
        end = put(put(end, kText.id), row.id);
        end = put(put(end, kText.name), row.name);
        end = put(put(end, kText.module), row.module);
        end = put(put(end, kText.mode), row.mode);
        end = put(put(end, kText.test), row.test);
        end = put(put(end, kText.port), row.port);
        end = put(put(end, kText.datetime), row.datetime);
        end = put(put(end, kText.rsltype), row.rsltype);
        end = put(put(end, kText.path), row.path);
        end = put(end, kText.end);
        m_used = static_cast<std::size_t>(end - m_buffer.get());
    }

    // Returns the end of what is written.
    static char* put(char* at, std::string_view text) { return std::copy(text.begin(), text.end(), at); }

    void writeText(std::string_view text) {
        makeRoom(text.size());
        put(&m_buffer[m_used], text);
        m_used += text.size();
    }

    void makeRoom(std::size_t size) {
        if (size <= m_size - m_used)
            return;
        flush();
        if (size <= m_size)
            return;
        m_size = std::max(size, kPieceSize);
        m_buffer.reset(new char[m_size]);
    }

    // The text in stdio's buffer comes before the rows, so it is written first.
    void flush() {
        if (m_used == 0)
            return;
        std::fflush(stdout);
        output::write({m_buffer.get(), m_used});
        m_used = 0;
    }

    PlainRows<Format> m_plainRows;
    std::unique_ptr<char[]> m_buffer; // grows for a row that is longer than a piece
    std::size_t m_size = 0;
    std::size_t m_used = 0;
    bool m_hasRow = false;
};

template<class Format>
void writeRows(const RowSource& showRows) {
    RowWriter<Format> rows;
    showRows([&rows](const ListedRow& row) { rows.write(row); });
}
