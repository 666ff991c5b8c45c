#include "masslynx/function_names.h"

#include <algorithm>
#include <functional>
#include <unordered_map>

#include "masslynx/function_types.h"

namespace zrml::masslynx {
namespace {

// "(Combined, Smoothed)", or empty when no step has a text.
std::wstring ProcessDescription(const FunctionRecord& function) {
  std::wstring description;
  for (const std::uint16_t code : function.processChain) {
    const std::wstring_view text = ProcessText(code);
    if (!text.empty()) description.append(description.empty() ? L"(" : L", ").append(text);
  }
  if (!description.empty()) description += L')';
  return description;
}

}  // namespace

std::wstring NameOf(const FunctionRecord& function) {
  std::wstring name(FunctionTypeText(function.typeCode));
  name += IonModeText(function.ionMode);
  if (function.IsLost()) name.pop_back();  // the blank ahead of an ionisation mode
  for (const std::wstring& part : {ProcessDescription(function), function.label}) {
    if (!part.empty()) name += L' ' + part;
  }
  return name;
}

void MarkSharedNames(std::vector<FunctionRecord>& functions) {
  std::unordered_multimap<std::size_t, FunctionRecord*> byHash;  // the first of each name
  for (FunctionRecord& function : functions) {
    function.sharesName = false;
    const std::wstring name = NameOf(function);
    const std::size_t hash = std::hash<std::wstring>()(name);
    const auto [begin, end] = byHash.equal_range(hash);
    const auto same =
        std::find_if(begin, end, [&](const auto& entry) { return NameOf(*entry.second) == name; });
    if (same == end) {
      byHash.emplace(hash, &function);
    } else {
      function.sharesName = same->second->sharesName = true;
    }
  }
}

std::wstring FunctionName(const std::vector<FunctionRecord>& functions, std::size_t position) {
  const FunctionRecord& function = functions[position];
  const std::wstring name = NameOf(function);
  return function.sharesName ? name + L' ' + std::to_wstring(position + 1) : name;
}

}  // namespace zrml::masslynx
