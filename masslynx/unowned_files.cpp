#include "masslynx/unowned_files.h"

#include <algorithm>
#include <charconv>
#include <set>
#include <string>
#include <vector>

#include "common/text.h"
#include "masslynx/directory_files.h"
#include "masslynx/history.h"

namespace zrml::masslynx {
namespace {

bool HoldsData(const std::string& name) {
  const std::string upper = ToUpper(name);
  return upper.ends_with(".DAT") || upper.ends_with(".IDX") || upper.ends_with(".CDT");
}

std::set<std::string> OwnedStems(const platform::SystemPath& folder,
                                 std::span<const FunctionRecord> functions) {
  std::set<std::string> stems;
  for (const FunctionRecord& function : functions)
    stems.insert(FunctionStem(platform::ToNativePath(FileNameOf(function, L"DAT"))));
  for (const std::uint16_t number : ProcessNumbersWithData(folder))
    stems.insert(FunctionStem(platform::ToNativePath(ProcessedFileName(number, L"DAT"))));
  return stems;
}

// The function that the files would belong to, by the number in their names: "_FUNC003", "_PROC001".
FindingSubject SubjectOfStem(std::string_view stem) {
  constexpr std::size_t kFront = 5;
  int number = 0;
  const auto [end, error] = std::from_chars(stem.data() + kFront, stem.data() + stem.size(), number);
  if (error != std::errc() || end != stem.data() + stem.size() || number < 1) return {};
  FindingSubject subject = {.kind = FindingSubject::Kind::kFunction};
  (stem.starts_with("_FUNC") ? subject.function : subject.process) = number;
  return subject;
}

}  // namespace

void NoticeUnownedFiles(const platform::SystemPath& folder, std::span<const FunctionRecord> functions,
                        Findings& findings) {
  const std::set<std::string> owned = OwnedStems(folder, functions);
  std::vector<std::string> names;
  for (const platform::SystemPath& listed : platform::ListFiles(folder).names) {
    const std::string name = platform::ToUtf8Path(listed);
    const std::string stem = FunctionStem(name);
    if (stem.empty() || !HoldsData(name) || owned.contains(stem)) continue;
    if (platform::StampOf(platform::PathIn(folder, listed)).size > 0) names.push_back(name);
  }
  // For each stem the data file, else the first file.
  std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
    const auto key = [](const std::string& name) {
      return std::pair(FunctionStem(name), ToUpper(name).ends_with(".DAT") ? std::string() : name);
    };
    return key(a) < key(b);
  });
  std::string stem;
  for (const std::string& name : names) {
    if (FunctionStem(name) == stem) continue;
    stem = FunctionStem(name);
    findings.Add({.code = FindingCode::kFileUnowned,
                  .file = name,
                  .problem = "belongs to no function",
                  .subject = SubjectOfStem(stem)});
  }
}

}  // namespace zrml::masslynx
