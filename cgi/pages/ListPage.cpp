#include <algorithm>
#include <cstdio>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

#include "cgi/Answers.h"
#include "cgi/CFileManCGI.h"
#include "cgi/Escape.h"
#include "cgi/Output.h"
#include "cgi/pages/CGICommonUtils.h"
#include "cgi/pages/PageLine.h"
#include "common/CCommUtils.h"
#include "fileman/CFileManager.h"

namespace {

using page::defaultLine;
using page::either;
using page::line;
using page::value;
using Html = CGICommonUtils;
// Calls its visitor with each row of a list page.
using RowSource = std::function<void(const RowVisitor&)>;

// The fixed texts of a row: one before each value, and one after the last.
struct RowText {
    std::string_view id, name, module, mode, test, port, datetime, rsltype, path, end;
};

// clang-format off
constexpr RowText kDefaultRow = {
    "\t\t{ id: '", "', name: '", "', module: '", "', mode: '", "', test: '", "', port: '", "', datetime: '", "', rsltype: '", "', path: '", "' },\n"};
// A JSON object (RFC 8259).
constexpr RowText kStrictRow = {
    "\t\t{\"id\":\"", R"(","name":")", R"(","module":")", R"(","mode":")", R"(","test":")", R"(","port":")", R"(","datetime":")", R"(","rsltype":")", R"(","path":")", "\"},\n"};
// clang-format on

// Tells which rows hold only values that a JSON string carries as they are. Most do, and the rows of one
// source differ in little more than the file's name.
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
        return m_isSourcePlain && escape::isPlainInJson(file) &&
               (isNameInFile || escape::isPlainInJson(row.name));
    }

private:
    static bool arePlain(std::initializer_list<std::string_view> values) {
        return std::all_of(values.begin(), values.end(), &escape::isPlainInJson);
    }

    bool m_isSourcePlain = false;
    std::size_t m_directorySize = 0; // of the source's paths, with the '/' behind it
};

// A row with its values escaped for a JSON string.
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
        escape::appendJson(text, value);
        return text;
    }

    std::string m_id, m_name, m_module, m_mode, m_test, m_port, m_datetime, m_rsltype, m_path;
};

// Writes the elements of griddata to standard output, in pieces of half a pipe: the server reads one half
// while this program fills the other. It does not use stdio, which checks its state for each part of each
// row.
class RowWriter {
public:
    RowWriter() = default;
    RowWriter(const RowWriter&) = delete;
    RowWriter& operator=(const RowWriter&) = delete;
    ~RowWriter() {
        if (m_areStrict)
            dropLastComma();
        flush();
    }

    // In default answers values are written as they are stored, even when they end the script's string, and
    // the last element has a comma too. This is intentional: the scripts rely on these bytes.
    void write(const ListedRow& row) {
        if (!m_areStrict)
            writeWith<kDefaultRow>(row);
        else if (m_plainRows.contain(row))
            writeWith<kStrictRow>(row);
        else
            writeWith<kStrictRow>(EscapedRow(row).row());
    }

private:
    static constexpr std::size_t kFixedText = 128;   // more than the fixed text of a row
    static constexpr std::size_t kPieceSize = 32768; // half a pipe

    // For texts that the compiler knows: it copies them by one or two instructions each.
    template<const RowText& Text>
    void writeWith(const ListedRow& row) {
        makeRoom(kFixedText + row.id.size() + row.name.size() + row.module.size() + row.mode.size() +
                 row.test.size() + row.port.size() + row.datetime.size() + row.rsltype.size() +
                 row.path.size());
        char* end = &m_buffer[m_used];
        end = put(put(end, Text.id), row.id);
        end = put(put(end, Text.name), row.name);
        end = put(put(end, Text.module), row.module);
        end = put(put(end, Text.mode), row.mode);
        end = put(put(end, Text.test), row.test);
        end = put(put(end, Text.port), row.port);
        end = put(put(end, Text.datetime), row.datetime);
        end = put(put(end, Text.rsltype), row.rsltype);
        end = put(put(end, Text.path), row.path);
        end = put(end, Text.end);
        m_used = static_cast<std::size_t>(end - m_buffer.get());
    }

    // Returns the end of what is written.
    static char* put(char* at, std::string_view text) { return std::copy(text.begin(), text.end(), at); }

    // A row stays in the buffer at least until the next one comes.
    void dropLastComma() {
        if (m_used == 0)
            return;
        m_buffer[m_used - 2] = '\n';
        --m_used;
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

    const bool m_areStrict = Answers::current().areStrict();
    PlainRows m_plainRows;
    std::unique_ptr<char[]> m_buffer; // grows for a row that is longer than a piece
    std::size_t m_size = 0;
    std::size_t m_used = 0;
};

void writeGridData(const RowSource& showRows) {
    line(1, "var griddata = [");
    {
        RowWriter rows;
        showRows([&rows](const ListedRow& row) { rows.write(row); });
    }
    line(2, "];");
}

void writeHiddenInput(const char* format, const std::string& stored) {
    line(2, Html::createHTMLine(format, value(stored).c_str()));
}

// Each line of the page is one line of this source.
// clang-format off
void writePageUntilForms(const RowSource& showRows) {
    Html::writeCGIHeader();
    Html::writeHTMLBeginNode();
    line(0, "<head>");
    page::writeMeta();
    line(1, R"(<link href="../css/fileman.css" rel="stylesheet" type="text/css" />)");
    line(1, R"(<script src="../js/fileman.js" type="text/javascript"></script>)");
    line(1, R"(<script src="../js/homepage.js" type="text/javascript"></script>)");
    defaultLine(1, R"(<link href="../LigerUI/lib/ligerUI/skins/Aqua/css/ligerui-all.css" rel="stylesheet" type="text/css" />)");
    defaultLine(1, R"(<script src="../LigerUI/lib/jquery/jquery-1.3.2.min.js" type="text/javascript"></script>)");
    defaultLine(1, R"(<script src="../LigerUI/lib/ligerUI/js/core/base.js" type="text/javascript"></script>)");
    defaultLine(1, R"(<script src="../LigerUI/lib/ligerUI/js/plugins/ligerGrid.js" type="text/javascript"></script>)");
    defaultLine(1, R"(<script src="../LigerUI/lib/ligerUI/js/plugins/ligerDialog.js" type="text/javascript"></script>)");
    defaultLine(1, R"(<script src="../LigerUI/lib/ligerUI/js/ligerui.min.js" type="text/javascript"></script>)");
    defaultLine(1, R"(<script src="../LigerUI/lib/ligerUI/js/ligerui.all.js" type="text/javascript"></script>)");
    // As text in a strict page: nothing may run there that is not in a file of its own.
    line(1, either(R"(<script type="text/javascript">)", R"(<script type="text/plain" id="griddata">)"));
    writeGridData(showRows);
    line(0, "</script>");
    line(0, "</head>");
    line(0, either(R"(<body onload="onInitPages();">)", "<body>"));
    page::writeIncompleteNotice();
    line(1, R"(<form id="fm_form1" name="fm_form1">)");
    line(2, either(R"(<div style="display:block; background-color:white;">)", "<div>"));
    line(3, either(R"(<div id="rsltgrid" style="margin:0; padding:0;"></div>)", R"(<div id="rsltgrid"></div>)"));
    line(2, "</div>");
    line(1, "</form>");
    defaultLine(1, R"(<div style="display:none;"></div>)");
}
// clang-format on

} // namespace

// NOLINTNEXTLINE(performance-unnecessary-value-param): callers hand over a list of their own
int CFileManCGI::writeFileManPage(std::list<_ResultInfo*> results) {
    writePageUntilForms([&results](const RowVisitor& visitor) {
        for (const _ResultInfo* const record : results)
            visitor(rowOf(*record));
    });
    return writeForms();
}

int CFileManCGI::writeFileManPage(const CFileManager& store) {
    writePageUntilForms([&store](const RowVisitor& visitor) { store.forEachLoaded(visitor); });
    return writeForms();
}

int CFileManCGI::writeForms() {
    writeSubmitForm();
    writeCommandForm();
    line(0, "</body>");
    Html::writeHTMLEndNode();
    return 1;
}

// clang-format off

void CFileManCGI::writeSubmitForm() {
    const _AdvanceInfo& advance = m_filter.advanceInfo;
    line(1, R"(<form action="fileman.cgi" id="fm_form">)");
    writeHiddenInput(R"(<input type="hidden" id="fmtype" name="fmtype" value="%s" />)", getFileManTypeString());
    writeHiddenInput(R"(<input type="hidden" id="module" name="module" value="%s" />)", CCommUtils::join(m_filter.modules, ","));
    writeHiddenInput(R"(<input type="hidden" id="mode" name="mode" value="%s" />)", CCommUtils::join(m_filter.modes, ","));
    writeHiddenInput(R"(<input type="hidden" id="test" name="test" value="%s" />)", CCommUtils::join(m_filter.tests, ","));
    writeHiddenInput(R"(<input type="hidden" id="port" name="port" value="%s" />)", CCommUtils::join(m_filter.ports, ","));
    writeHiddenInput(R"(<input type="hidden" id="jobid" name="jobid" value="%s" />)", advance.jobId);
    writeHiddenInput(R"(<input type="hidden" id="account" name="account" value="%s" />)", advance.account);
    writeHiddenInput(R"(<input type="hidden" id="locator" name="locator" value="%s" />)", advance.locator);
    writeHiddenInput(R"(<input type="hidden" id="type" name="type" value="%s" />)", advance.type);
    writeHiddenInput(R"(<input type="hidden" id="fname" name="fname" value="%s" />)", advance.fileName);
    writeHiddenInput(R"(<input type="hidden" id="prefix" name="prefix" value="%s" />)", advance.prefix);
    writeHiddenInput(R"(<input type="hidden" id="suffix" name="suffix" value="%s" />)", advance.suffix);
    line(1, "</form>");
}
// clang-format on

void CFileManCGI::writeCommandForm() {
    line(1, R"(<form action="fileman.cgi" id="cmd_form">)");
    writeHiddenInput(R"(<input type="hidden" id="opertype" name="opertype" value="%s" />)", "");
    writeHiddenInput(R"(<input type="hidden" id="rsltid" name="rsltid" value="%s" />)", "");
    line(1, "</form>");
}
