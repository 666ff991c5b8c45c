#include "tools/zrml/text_table.h"

#include <string>

#include <gtest/gtest.h>

namespace zrml::tool {
namespace {

TEST(TextTable, ACellOverTheWidestColumnMovesItsOwnRowOnly) {
  TextTable table({{"Name"}, {"No", TextTable::Align::kRight}});
  table.AddRow({"short", "1"});
  table.AddRow({std::string(120, 'x'), "2"});
  table.AddRow({std::string(200, 'y'), "3"});
  testing::internal::CaptureStdout();
  Output out;
  table.Print("", out);
  out.Finish();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Name" + std::string(116, ' ') + "  No\n" +       //
                                                        "short" + std::string(115, ' ') + "   1\n" +  //
                                                        std::string(120, 'x') + "   2\n" +            //
                                                        std::string(200, 'y') + "   3\n");
}

}  // namespace
}  // namespace zrml::tool
