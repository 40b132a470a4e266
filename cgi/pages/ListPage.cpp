#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <string_view>

#include "cgi/CFileManCGI.h"
#include "cgi/Output.h"
#include "cgi/pages/CGICommonUtils.h"
#include "cgi/pages/PageLine.h"
#include "common/CCommUtils.h"
#include "fileman/CFileManager.h"

namespace {

using page::line;
using Html = CGICommonUtils;
// Calls its visitor with each row of a list page.
using RowSource = std::function<void(const RowVisitor&)>;

// Writes the elements of griddata to standard output, in pieces of half a pipe: the server reads one half
// while this program fills the other. It does not use stdio, which checks its state for each part of each
// row.
class RowWriter {
public:
    RowWriter() = default;
    RowWriter(const RowWriter&) = delete;
    RowWriter& operator=(const RowWriter&) = delete;
    ~RowWriter() { flush(); }

    // Values are written as they are stored, even when they end the script's string, and the last element has
    // a comma too. This is intentional: the scripts rely on these bytes.
    void write(const ListedRow& row) {
        makeRoom(kFixedText + row.id.size() + row.name.size() + row.module.size() + row.mode.size() +
                 row.test.size() + row.port.size() + row.datetime.size() + row.rsltype.size() +
                 row.path.size());
        char* end = &m_buffer[m_used];
        end = put(put(end, "\t\t{ id: '"), row.id);
        end = put(put(end, "', name: '"), row.name);
        end = put(put(end, "', module: '"), row.module);
        end = put(put(end, "', mode: '"), row.mode);
        end = put(put(end, "', test: '"), row.test);
        end = put(put(end, "', port: '"), row.port);
        end = put(put(end, "', datetime: '"), row.datetime);
        end = put(put(end, "', rsltype: '"), row.rsltype);
        end = put(put(end, "', path: '"), row.path);
        end = put(end, "' },\n");
        m_used = static_cast<std::size_t>(end - m_buffer.get());
    }

private:
    static constexpr std::size_t kFixedText = 128;   // more than the fixed text of a row
    static constexpr std::size_t kPieceSize = 32768; // half a pipe

    // Returns the end of what is written.
    static char* put(char* at, std::string_view text) { return std::copy(text.begin(), text.end(), at); }

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

void writeHiddenInput(const char* format, const std::string& value) {
    line(2, Html::createHTMLine(format, value.c_str()));
}

// Each line of the page is one line of this source.
// clang-format off
void writePageUntilForms(const RowSource& showRows) {
    Html::writeCGIHeader();
    Html::writeHTMLBeginNode();
    line(0, "<head>");
    line(1, R"(<link href="../css/fileman.css" rel="stylesheet" type="text/css" />)");
    line(1, R"(<script src="../js/fileman.js" type="text/javascript"></script>)");
    line(1, R"(<script src="../js/homepage.js" type="text/javascript"></script>)");
    line(1, R"(<link href="../LigerUI/lib/ligerUI/skins/Aqua/css/ligerui-all.css" rel="stylesheet" type="text/css" />)");
    line(1, R"(<script src="../LigerUI/lib/jquery/jquery-1.3.2.min.js" type="text/javascript"></script>)");
    line(1, R"(<script src="../LigerUI/lib/ligerUI/js/core/base.js" type="text/javascript"></script>)");
    line(1, R"(<script src="../LigerUI/lib/ligerUI/js/plugins/ligerGrid.js" type="text/javascript"></script>)");
    line(1, R"(<script src="../LigerUI/lib/ligerUI/js/plugins/ligerDialog.js" type="text/javascript"></script>)");
    line(1, R"(<script src="../LigerUI/lib/ligerUI/js/ligerui.min.js" type="text/javascript"></script>)");
    line(1, R"(<script src="../LigerUI/lib/ligerUI/js/ligerui.all.js" type="text/javascript"></script>)");
    line(1, R"(<script type="text/javascript">)");
    writeGridData(showRows);
    line(0, "</script>");
    line(0, "</head>");
    line(0, R"(<body onload="onInitPages();">)");
    line(1, R"(<form id="fm_form1" name="fm_form1">)");
    line(2, R"(<div style="display:block; background-color:white;">)");
    line(3, R"(<div id="rsltgrid" style="margin:0; padding:0;"></div>)");
    line(2, "</div>");
    line(1, "</form>");
    line(1, R"(<div style="display:none;"></div>)");
}
// clang-format on

} // namespace

// NOLINTNEXTLINE(performance-unnecessary-value-param): the given interface takes a copy
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
