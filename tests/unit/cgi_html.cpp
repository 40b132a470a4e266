#include <gtest/gtest.h>

#include <functional>

#include "cgi/CFileManCGI.h"
#include "cgi/CGICommonUtils.h"

namespace {

using Html = CGICommonUtils;

std::string outputOf(const std::function<void()>& write) {
    testing::internal::CaptureStdout();
    write();
    return testing::internal::GetCapturedStdout();
}

TEST(HtmlLines, FixedLines) {
    EXPECT_EQ("Content-type:text/html;charset=utf-8\n\n<html>\n</html>\n", outputOf([] {
                  Html::writeCGIHeader();
                  Html::writeHTMLBeginNode();
                  Html::writeHTMLEndNode();
              }));
    EXPECT_EQ("<b>\n\n</b>\n", outputOf([] {
                  EXPECT_EQ(4, Html::writeBeginNode("b"));
                  EXPECT_EQ(1, Html::writeHTMLine(""));
                  EXPECT_EQ(5, Html::writeEndNode("b"));
              }));
    EXPECT_EQ("\t\t<div class=\"topmenu\">\n\t\t\t<div class=\"topmenu-logo\"></div>\n\t\t</div>\n",
              outputOf([] { Html::writePageTop("\t\t"); }));
    EXPECT_EQ("><div style=\"height:32px; line-height:32px; text-align:center; color:#FFFFFF;\">\n>\t<div "
              "id=\"copyright\">Copyright (c) the Result File Manager authors</div>\n></div>\n",
              outputOf([] { Html::writePageFoot(">"); }));
    EXPECT_EQ("Content-type:text/html;charset=utf-8\n\n<html>\nx\r\n</html>\n",
              outputOf([] { Html::writeDebugInfo("x"); }));
}

TEST(HtmlLines, FormatsOfAnyLengthAndNullStrings) {
    EXPECT_EQ("<span class=\"title\">Result</span>",
              Html::createHTMLine(std::string("span"), std::string("title"), std::string("Result")));
    EXPECT_EQ("a-(null)-c-d", Html::createHTMLine("%s-%s-%s-%s", "a", nullptr, "c", "d"));
    EXPECT_EQ("1-2-3", Html::createHTMLine("%s-%s-%s", "1", "2", "3"));
    EXPECT_EQ("-7%", Html::createHTMLine("%d%%", -7));
    const std::string longText(100000, 'x');
    EXPECT_EQ(longText + "|", Html::createHTMLine("%s|", longText.c_str()));
}

TEST(HtmlLines, ContentLengthCellShowsItsNumber) {
    const std::pair<const char*, const char*> rows[] = {
        {nullptr, "0"}, {"", "0"}, {"no number", "0"}, {"42", "42"}, {"5000000000", "5000000000"}};
    for (const auto& [value, shown] : rows) {
        if (value == nullptr)
            ::unsetenv("CONTENT_LENGTH");
        else
            ::setenv("CONTENT_LENGTH", value, 1);
        const std::string page = outputOf([] { Html::writeRequestInfo(); });
        const std::string cell = std::string("<th width=\"30%\">CONTENT_LENGTH</th><td>") + shown + "</td>\n";
        EXPECT_NE(std::string::npos, page.find("\t<tr>\n\t" + cell + "\t</tr>\n")) << page;
    }
}

TEST(ListPage, RowsStandAsStoredAndWhole) {
    _ResultInfo record;
    record.id = "i";
    record.name = "it's </script> \\";
    record.path = std::string(3000, 'p');
    CFileManCGI cgi;
    const std::string page = outputOf([&] { cgi.writeFileManPage({&record, &record}); });
    const std::string row =
        "\t\t{ id: 'i', name: 'it's </script> \\', module: '', mode: '', test: '', port: '', "
        "datetime: '', rsltype: '', path: '" +
        record.path + "' },\n";
    EXPECT_NE(std::string::npos, page.find("\tvar griddata = [\n" + row + row + "\t\t];\n</script>\n"));
    EXPECT_NE(std::string::npos, outputOf([&] {
                                     cgi.writeFileManPage(std::list<_ResultInfo*>());
                                 }).find("griddata = [\n\t\t];\n"));
}

TEST(ListPage, SubmitFormCarriesTheFilter) {
    CFileManCGI cgi;
    cgi.parseQueryInfo("fmtype=Rslt&module=1GE,10G&port=&fname=a\"b,c");
    _ResultFilter filter;
    cgi.getFilterFromRequest(filter);
    const std::string form = outputOf([&] { cgi.writeSubmitForm(); });
    for (const char* const input : {"fmtype\" value=\"Rslt", "module\" value=\"1GE,10G", "port\" value=\"",
                                    "fname\" value=\"a\"b,c", "suffix\" value=\""}) {
        EXPECT_NE(std::string::npos, form.find(std::string(" name=\"") + input + "\" />\n")) << input;
    }
    EXPECT_EQ("\t<form action=\"fileman.cgi\" id=\"cmd_form\">\n"
              "\t\t<input type=\"hidden\" id=\"opertype\" name=\"opertype\" value=\"\" />\n"
              "\t\t<input type=\"hidden\" id=\"rsltid\" name=\"rsltid\" value=\"\" />\n"
              "\t</form>\n",
              outputOf([&] { cgi.writeCommandForm(); }));
}

TEST(FilterPage, ResultBoxesShowTheRequestAndAreDisabled) {
    CFileManCGI cgi;
    cgi.m_filter.includeProfiles = true;
    const std::string box = "\t<div style=\"margin:5 0 5 5;width:120px;float:left;font-size:14px;\">"
                            "<input type=\"checkbox\" id=\"id_rslt_type_opt_";
    EXPECT_EQ(
        "<fieldset id=\"field_rslt_type\" style=\"margin:10px; border:1px solid gray;font-size:14px;\">\n"
        "\t<legend>Result/Profile</legend>\n" +
            box + "Result\" value=\"Result\"  disabled>Result</input></div>\n" + box +
            "Profile\" value=\"Profile\" checked disabled>Profile</input></div>\n</fieldset>\n",
        outputOf([&] { cgi.writeOptionField(CFileManCGI::FIELD_RESULT_TYPE); }));
    EXPECT_EQ("", outputOf([&] { cgi.writeOptionField(static_cast<CFileManCGI::FilterType>(0)); }));
    EXPECT_EQ("<div style=\"width:3; height:-4; float:left;border:1px solid red;\">\n</div>\n", outputOf([] {
                  CFileManCGI::startOptionColumn(3, -4);
                  CFileManCGI::endOptionColumn();
              }));
}

TEST(FilterPage, OptionIds) {
    const char* const ids[] = {"",
                               "id_module_opt_a b",
                               "id_mode_opt_a b",
                               "id_test_opt_a b",
                               "id_port_opt_a b",
                               "id_rslt_type_opt_a b",
                               ""};
    for (int type = 0; type < 7; ++type)
        EXPECT_EQ(ids[type], CFileManCGI::getOptionId(static_cast<CFileManCGI::FilterType>(type), "a b"));
    EXPECT_EQ("id_row_check_7", CFileManCGI::getRowCheckId("7"));
}

} // namespace
