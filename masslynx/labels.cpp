#include "masslynx/labels.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <utility>

#include "common/scan_text.h"
#include "common/text.h"
#include "common/text_file.h"
#include "masslynx/function_types.h"
#include "masslynx/raw_directory.h"

namespace zrml {
namespace {

constexpr std::size_t kLineBuffer = 10000;
constexpr std::wstring_view kFunctionHeading = L"Function Parameters - Function";
constexpr std::wstring_view kRampHighEnergy = L"Ramp High Energy";
// Version 4.2 marks MS^E functions in no other way.
constexpr std::int64_t kRampVersion = 42;

constexpr std::array<std::wstring_view, 2> kCreators = {L"Created by MassLynx", L"Created by Masslynx"};

constexpr std::array<std::pair<std::wstring_view, std::wstring_view>, 2> kRenamed = {{
    {L"REFERENCE", L"Lock Mass"},
    {L"MOBILITY MS FUNCTION", L"IMS"},
}};

// What stands behind "Function Parameters - Function <n> - ": from a fixed column that allows for three
// digits at most.
std::wstring HeadingLabel(std::wstring_view line, int number) {
  const std::size_t column = number < 10 ? 34 : number < 100 ? 35 : 36;
  const std::wstring_view label = Trim(line.substr(std::min(column, line.size())));
  for (const auto& [written, shown] : kRenamed) {
    if (label == written) return std::wstring(shown);
  }
  return std::wstring(label);
}

class LabelReader {
 public:
  explicit LabelReader(std::vector<FunctionRecord>& functions) : functions_(functions) {}

  void ReadLine(std::wstring_view line) {
    for (const std::wstring_view creator : kCreators) {
      if (line.starts_with(creator)) ReadCreator(line, creator);
    }
    if (line.starts_with(kFunctionHeading)) ReadHeading(line);
    if (line.starts_with(kRampHighEnergy) && version_ == kRampVersion && selected_ != nullptr) {
      selected_->typeCode = kMs2Type;
      selected_->label = L"MS^E Product Ions";
    }
  }

 private:
  void ReadCreator(std::wstring_view line, std::wstring_view creator) {
    ScanText scan(line);
    if (!scan.Literal(creator) || !scan.Literal(L" v")) return;
    const std::optional<int> major = scan.Int();
    if (!major || !scan.Literal(L".")) return;
    if (const std::optional<int> minor = scan.Int()) version_ = std::int64_t{*major} * 10 + *minor;
  }

  void ReadHeading(std::wstring_view line) {
    ScanText scan(line);
    scan.Literal(kFunctionHeading);
    const int number = scan.Int().value_or(0);
    const bool known = number >= 1 && static_cast<std::size_t>(number) <= functions_.size();
    selected_ = known ? &functions_[static_cast<std::size_t>(number) - 1] : nullptr;
    if (known) selected_->label = HeadingLabel(line, number);
  }

  std::vector<FunctionRecord>& functions_;
  FunctionRecord* selected_ = nullptr;
  std::int64_t version_ = 0;
};

}  // namespace

void ApplyLabels(const std::wstring& directory, std::vector<FunctionRecord>& functions) {
  const platform::File file = OpenInDirectory(directory, L"_extern.inf");
  if (!file.IsOpen()) return;
  const std::wstring text = ReadText(file);
  LineReader lines(text, kLineBuffer);
  LabelReader labels(functions);
  for (std::wstring_view line; lines.Next(line);) labels.ReadLine(line);
}

}  // namespace zrml
