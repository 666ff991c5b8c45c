#include "plugin/raw_functions.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "common/number.h"
#include "masslynx/function_types.h"

namespace zrml::plugin {

using masslynx::FunctionRecord;

void RemoveUnlisted(std::vector<FunctionRecord>& functions) {
  std::erase_if(functions, [](const FunctionRecord& function) {
    return function.typeCode == masslynx::kDadType || !function.hasDataFile;
  });
}

bool SelectFunction(const std::wstring& fileName, std::vector<FunctionRecord>& functions) {
  constexpr std::size_t kStemLength = 5;
  constexpr std::size_t kDigits = 3;
  if (fileName.size() < kStemLength) return false;
  const bool processed = fileName.starts_with(L"_proc");
  std::wstring_view digits = std::wstring_view(fileName).substr(kStemLength, kDigits);
  const std::optional<int> number = TakeInt(digits);
  const auto match = std::find_if(functions.begin(), functions.end(), [&](const FunctionRecord& function) {
    return function.processed == processed && function.number == number;
  });
  if (match == functions.end()) return false;
  std::vector<FunctionRecord> selected;
  selected.push_back(std::move(*match));
  functions = std::move(selected);
  return true;
}

}  // namespace zrml::plugin
