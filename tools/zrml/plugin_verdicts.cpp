#include "tools/zrml/plugin_verdicts.h"

#include <algorithm>

#include "tools/zrml/format.h"

namespace zrml::tool {

namespace {

std::string Shown(bool value) { return value ? "true" : "false"; }
std::string Shown(int value) { return std::to_string(value); }
std::string Shown(double value) { return Number(value); }
std::string Shown(const std::string& value) {
  constexpr std::size_t kShown = 60;
  const std::string_view first = FirstCharacters(value, kShown);
  return '"' + VisibleText(first) + (first.size() < value.size() ? "...\"" : "\"");
}

}  // namespace

std::string Place::Text() const {
  std::string text;
  const auto add = [&](const std::string& part) { text += (text.empty() ? " of " : ", ") + part; };
  if (sample) add("sample " + std::to_string(*sample + 1));
  if (!function.empty()) add("function " + function);
  if (scan) add("scan " + std::to_string(*scan + 1));
  if (trace) add("trace " + std::to_string(*trace + 1));
  return text;
}

void Verdicts::AddFault(std::string_view slot, const std::string& text) {
  if (result_.faultCount++ >= static_cast<long long>(PluginComparison::kMostFaults)) return;
  result_.faults.push_back(std::string(slot) + place_.Text() + ": " + text);
}

template <class T>
bool Verdicts::Check(std::string_view slot, const char* what, const std::type_identity_t<T>& given,
                     const T& expected) {
  ++result_.answers;
  if (IsSame(given, expected)) return true;
  AddFault(slot, std::string(what) + ": the plug-in gives " + Shown(given) + ", not " + Shown(expected));
  return false;
}
template bool Verdicts::Check(std::string_view, const char*, const bool&, const bool&);
template bool Verdicts::Check(std::string_view, const char*, const int&, const int&);
template bool Verdicts::Check(std::string_view, const char*, const double&, const double&);
template bool Verdicts::Check(std::string_view, const char*, const std::string&, const std::string&);

void Verdicts::CheckOptional(const Wanted& difference, const char* what, double given,
                             const std::optional<double>& held) {
  if (!held) Count(difference);
  Check(difference.slot, what, given, held.value_or(0));
}

int Verdicts::Agreed(std::string_view slot, int given, int expected) {
  Check(slot, "count", given, expected);
  return std::max(std::min(given, expected), 0);
}

void Verdicts::CheckColumn(std::string_view slot, const char* what, std::span<const double> given,
                           std::span<const double> expected) {
  if (!Check(slot, "points", static_cast<int>(given.size()), static_cast<int>(expected.size()))) return;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    place_.scan = static_cast<int>(i);
    if (!Check(slot, what, given[i], expected[i])) break;
  }
  place_.scan.reset();
}

void Verdicts::CheckPoints(std::string_view slot, const Columns& given, const Columns& expected) {
  const auto textOf = [](const Columns& columns, std::size_t i) {
    return i < columns.x.size() ? Number(columns.x[i]) + ", " + Number(columns.y[i]) : "no more";
  };
  ++result_.answers;
  const std::size_t both = std::min(given.x.size(), expected.x.size());
  std::size_t i = 0;
  while (i < both && IsSame(given.x[i], expected.x[i]) && IsSame(given.y[i], expected.y[i])) ++i;
  if (i == given.x.size() && i == expected.x.size()) return;
  AddFault(slot, "point " + std::to_string(i + 1) + ": the plug-in gives " + textOf(given, i) + ", not " +
                     textOf(expected, i));
}

namespace {

// Whether places are 0 in the slots where the file has a point without intensity, and all others the same.
bool HasUnwritten(const Columns& own, const Columns& held) {
  bool hasOne = false;
  for (std::size_t i = 0; i < held.x.size(); ++i) {
    const bool isSame = own.x[i] == held.x[i] && own.y[i] == held.y[i];
    if (!isSame && (own.x[i] != 0 || own.y[i] != 0 || held.y[i] != 0)) return false;
    hasOne = hasOne || !isSame;
  }
  return hasOne;
}

}  // namespace

void Verdicts::CheckSlotPoints(std::string_view slot, const Columns& given, const Columns& held, bool isLost,
                               const std::optional<StoredPoints>& ofSlots) {
  const auto isSame = [](std::span<const double> a, std::span<const double> b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end());
  };
  const Columns own = ofSlots ? ofSlots->View() : held;
  const bool isProfileSum = ofSlots && ofSlots->isProfileSum;
  const bool isSorted = ofSlots && ofSlots->isSorted && !isProfileSum;
  const bool isUnwritten = own.x.size() != held.x.size() || HasUnwritten(own, held);
  const bool areOthers =
      isLost || isProfileSum || isSorted ? !isSame(own.x, held.x) || !isSame(own.y, held.y) : isUnwritten;
  if (areOthers) {
    Count(isLost         ? kWanted.lostPoints
          : isProfileSum ? kWanted.profileSubScans
          : isSorted     ? kWanted.sortedPoints
                         : kWanted.unwrittenPoints);
  }
  CheckPoints(slot, given, areOthers ? own : held);
}

}  // namespace zrml::tool
