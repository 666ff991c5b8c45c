// The kinds of findings beside the table in docs/check.md.
#include "common/findings.h"

#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/text.h"

namespace zrml {
namespace {

// The cells of a row, without white space at their ends.
std::vector<std::string> CellsOf(const std::string& row) {
  std::vector<std::string> cells;
  for (std::size_t begin = 1; begin < row.size();) {
    const std::size_t end = std::min(row.find(" |", begin), row.size());
    cells.emplace_back(Trim(std::string_view(row).substr(begin, end - begin)));
    begin = end + 2;
  }
  return cells;
}

// The rows of the table of findings, by code.
std::map<std::string, std::vector<std::string>> DocumentedFindings() {
  std::map<std::string, std::vector<std::string>> rows;
  std::ifstream page(ZRML_CHECK_PAGE);
  bool isTable = false;
  for (std::string line; std::getline(page, line);) {
    if (line.starts_with("| code |")) isTable = true;
    if (line.empty()) isTable = false;
    if (!isTable || !line.starts_with("| `")) continue;
    std::vector<std::string> cells = CellsOf(line);
    const std::string code = cells.front().substr(1, cells.front().size() - 2);
    EXPECT_TRUE(rows.emplace(code, std::move(cells)).second) << code << " has two rows";
  }
  return rows;
}

TEST(Findings, AreDocumented) {
  auto rows = DocumentedFindings();
  for (const FindingKind& kind : FindingKinds()) {
    const auto row = rows.find(std::string(kind.name));
    ASSERT_NE(row, rows.end()) << kind.name;
    ASSERT_EQ(row->second.size(), 5U) << kind.name;
    const std::string status = kind.severity == Severity::kLost ? "7" : "0";
    EXPECT_EQ(row->second[1], NameOf(kind.severity)) << kind.name;
    EXPECT_EQ(row->second[3], status) << kind.name;
    EXPECT_EQ(row->second[4], status) << kind.name;
    rows.erase(row);
  }
  for (const auto& [code, row] : rows) ADD_FAILURE() << code << " is no finding";
}

TEST(Findings, NumbersAsText) {
  Numbers numbers;
  EXPECT_EQ(numbers.Text(), "");
  for (const std::uint64_t number : {20, 21, 22, 25, 7}) numbers.Add(number);
  EXPECT_EQ(numbers.Text(), "7, 20-22, 25");
  EXPECT_TRUE(numbers.HasGaps());
  Numbers backwards;
  for (const std::uint64_t number : {3, 2, 2}) backwards.Add(number);
  EXPECT_EQ(backwards.Text(), "2-3");
  EXPECT_FALSE(backwards.HasGaps());
}

TEST(Findings, OfOneKindFileAndSubjectAreOne) {
  Findings findings;
  findings.Add({.code = FindingCode::kDataCut, .file = "a", .problem = "p", .count = 2, .first = 7});
  findings.Add({.code = FindingCode::kDataCut, .file = "b", .problem = "p"});
  findings.Add({.code = FindingCode::kDataCut, .file = "a", .problem = "q", .count = 3, .first = 9});
  ASSERT_EQ(findings.List().size(), 2U);
  EXPECT_EQ(findings.List()[0].count, 5U);
  EXPECT_EQ(findings.List()[0].first, 7U);
  EXPECT_EQ(TextOf(findings.List()[0]), "a p");
  EXPECT_EQ(TextOf(Finding{.problem = "alone"}), "alone");
}

}  // namespace
}  // namespace zrml
