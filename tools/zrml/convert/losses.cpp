#include "tools/zrml/convert/losses.h"

#include "tools/zrml/failure.h"

namespace zrml {

void Losses::Refuse(const std::wstring& what) {
  throw Failure(ExitStatus::kDamaged, L"cannot read " + what + L" (--damaged converts what there is)");
}

void Losses::Add(int function, const std::wstring& what) {
  if (policy_ == Policy::kRefused) Refuse(what);
  const Lock lock(mutex_);
  lost_.try_emplace({function, what});
}

void Losses::AddOneOf(int function, const Kind& kind, int number) {
  if (policy_ == Policy::kRefused) Refuse(kind.one + L' ' + std::to_wstring(number) + kind.owner);
  const Lock lock(mutex_);
  lost_[{function, kind.many + kind.owner}].insert(number);
}

std::vector<std::wstring> Losses::Describe() const {
  const Lock lock(mutex_);
  std::vector<std::wstring> lines;
  for (const auto& [key, numbers] : lost_) {
    const std::wstring numbered = numbers.empty()
                                      ? L""
                                      : L" that cannot be read: " + std::to_wstring(numbers.size()) +
                                            L"; the first is " + std::to_wstring(*numbers.begin());
    lines.push_back(key.second + (numbers.empty() ? L" cannot be read" : numbered));
  }
  return lines;
}

}  // namespace zrml
