#include "masslynx/function_names.h"

#include <string>
#include <unordered_map>

#include "masslynx/function_types.h"

namespace zrml {
namespace {

// "(Combined, Smoothed)", or nothing when no step has a text.
std::wstring ProcessDescription(const FunctionRecord& function) {
  std::wstring description;
  for (const std::uint16_t code : function.processChain) {
    const std::wstring_view text = ProcessText(code);
    if (!text.empty()) description.append(description.empty() ? L"(" : L", ").append(text);
  }
  if (!description.empty()) description += L')';
  return description;
}

std::wstring Name(const FunctionRecord& function) {
  std::wstring name(FunctionTypeText(function.typeCode));
  name += IonModeText(function.ionMode);
  for (const std::wstring& part : {ProcessDescription(function), function.label}) {
    if (!part.empty()) name += L' ' + part;
  }
  return name;
}

}  // namespace

void BuildFunctionNames(std::vector<FunctionRecord>& functions) {
  std::unordered_map<std::wstring, int> occurrences;
  for (FunctionRecord& function : functions) {
    function.name = Name(function);
    ++occurrences[function.name];
  }
  for (std::size_t i = 0; i < functions.size(); ++i) {
    if (occurrences[functions[i].name] > 1) functions[i].name += L' ' + std::to_wstring(i + 1);
  }
}

}  // namespace zrml
