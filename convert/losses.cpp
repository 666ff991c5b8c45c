#include "convert/losses.h"

#include <algorithm>
#include <tuple>

#include "convert/error.h"

namespace zrml::convert {
namespace {

struct LossText {
  Loss::Kind kind;
  std::string_view one;
  std::string_view many;
  std::string_view how;
};

constexpr std::string_view kUnread = " that cannot be read: ";
constexpr std::string_view kCut = " that have lost points: ";

constexpr LossText kTexts[] = {
    {Loss::Kind::kTrace, "trace", "traces", kUnread},
    {Loss::Kind::kScan, "scan", "scans", kUnread},
    {Loss::Kind::kPoints, "all points of scan", "scans", kCut},
    {Loss::Kind::kTotal, "the total ion current of scan", "total ion currents", kUnread},
    {Loss::Kind::kAbsorbance, "absorbance spectrum", "absorbance spectra", kUnread},
    {Loss::Kind::kRepresentation, "scan", "scans",
     " of which it is not known whether they are profiles, so no centroids were made of them: "},
    {Loss::Kind::kAbsorbancePoints, "all points of absorbance spectrum", "absorbance spectra", kCut},
};

const LossText& TextFor(Loss::Kind kind) {
  return *std::find_if(std::begin(kTexts), std::end(kTexts),
                       [kind](const LossText& text) { return text.kind == kind; });
}

bool IsAbsorbance(Loss::Kind kind) {
  return kind == Loss::Kind::kAbsorbance || kind == Loss::Kind::kAbsorbancePoints;
}

// " of function 2"; empty where it is obvious.
std::string Owner(Loss::Kind kind, const source::FunctionId& function) {
  if (function.number == 0 || IsAbsorbance(kind)) return {};
  return " of function " + source::TextOf(function);
}

std::string ListOf(const std::vector<int>& numbers) {
  Numbers list;
  for (const int number : numbers) list.Add(static_cast<std::uint64_t>(number));
  return list.Text();
}

// Acquired functions first.
auto Order(const Loss& loss) {
  const source::FunctionId& id = loss.function;
  return std::tuple(id.process, id.number, id.repeat, loss.kind);
}

}  // namespace

std::string TextOf(const Loss& loss) {
  const LossText& text = TextFor(loss.kind);
  return std::string(text.many) + Owner(loss.kind, loss.function) + std::string(text.how) +
         std::to_string(loss.numbers.size()) + " (" + ListOf(loss.numbers) + ")";
}

void Losses::Add(Loss::Kind kind, const source::FunctionId& function, int number) {
  if (policy_ == Policy::kRefused && kind != Loss::Kind::kRepresentation) {
    throw Error(ErrorKind::kSourceDamaged, "cannot read " + std::string(TextFor(kind).one) + ' ' +
                                               std::to_string(number) + Owner(kind, function));
  }
  const Lock lock(mutex_);
  auto known = std::find_if(lost_.begin(), lost_.end(),
                            [&](const Loss& loss) { return loss.kind == kind && loss.function == function; });
  if (known == lost_.end()) known = lost_.insert(known, {kind, function});
  known->numbers.push_back(number);
}

void Losses::AddFaults(const source::Function& function, int number,
                       const std::vector<source::ScanFault>& faults) {
  if (faults.empty()) return;
  const Lock lock(mutex_);
  faulty_.Add(function, number, faults);
}

Findings Losses::ListFaults() const {
  Findings findings;
  const Lock lock(mutex_);
  faulty_.AddTo(findings);
  return findings;
}

std::vector<Loss> Losses::List() const {
  const Lock lock(mutex_);
  std::vector<Loss> list = lost_;
  std::sort(list.begin(), list.end(), [](const Loss& a, const Loss& b) { return Order(a) < Order(b); });
  for (Loss& loss : list) std::sort(loss.numbers.begin(), loss.numbers.end());
  return list;
}

}  // namespace zrml::convert
