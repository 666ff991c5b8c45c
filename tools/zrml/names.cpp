#include "tools/zrml/names.h"

#include <array>

namespace zrml::tool {
namespace {

// Each in the order of its enumeration.
constexpr std::array<const char*, 2> kProviderNames = {"ZRMLProvider", "ZROpenLynxRptProvider"};
constexpr std::array kKindCodes = {2, 4, 1, 32, 0};

template <class Table, class Enumeration>
auto RowOf(const Table& table, Enumeration value) {
  return table.at(static_cast<std::size_t>(value));
}

}  // namespace

std::string ProviderName(source::Format format) { return RowOf(kProviderNames, format); }
int KindCode(source::FunctionKind kind) { return RowOf(kKindCodes, kind); }

}  // namespace zrml::tool
