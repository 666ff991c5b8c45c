#include "tools/zrml/convert/losses.h"

#include "tools/zrml/failure.h"

namespace zrml {

std::wstring Losses::Owner(int function) {
  return function > 0 ? L" of function " + std::to_wstring(function) : std::wstring();
}

void Losses::Add(int function, const Kind& kind, int number) {
  if (policy_ == Policy::kRefused) {
    throw Failure(ExitStatus::kDamaged, L"cannot read " + kind.one + L' ' + std::to_wstring(number) +
                                            kind.owner + L" (--damaged converts what there is)");
  }
  const Lock lock(mutex_);
  lost_[{function, kind.many + kind.owner}].insert(number);
}

std::vector<std::wstring> Losses::Describe() const {
  const Lock lock(mutex_);
  std::vector<std::wstring> lines;
  for (const auto& [key, numbers] : lost_) {
    lines.push_back(key.second + L" that cannot be read: " + std::to_wstring(numbers.size()) +
                    L"; the first is " + std::to_wstring(*numbers.begin()));
  }
  return lines;
}

}  // namespace zrml
