#include "masslynx/labels.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <utility>

#include "common/scan_text.h"
#include "common/text.h"
#include "common/text_file.h"
#include "masslynx/directory_files.h"
#include "masslynx/function_types.h"

namespace zrml::masslynx {
namespace {

constexpr std::size_t kLineBuffer = 10000;
constexpr std::string_view kFunctionHeading = "Function Parameters - Function";
constexpr std::string_view kRampHighEnergy = "Ramp High Energy";
// Version 4.2 marks MS^E functions in no other way.
constexpr std::int64_t kRampVersion = 42;

constexpr std::array<std::string_view, 2> kCreators = {"Created by MassLynx", "Created by Masslynx"};

constexpr std::array<std::pair<std::string_view, std::string_view>, 2> kRenamed = {{
    {"REFERENCE", "Lock Mass"},
    {"MOBILITY MS FUNCTION", "IMS"},
}};

// The text after "Function Parameters - Function <n> - ": from a fixed column that allows for three digits at
// most.
std::wstring HeadingLabel(std::string_view line, int number) {
  const std::size_t column = number < 10 ? 34 : number < 100 ? 35 : 36;
  const std::string_view label = Trim(line.substr(std::min(column, line.size())));
  for (const auto& [written, shown] : kRenamed) {
    if (label == written) return Widen(shown);
  }
  return FromBytes(label);
}

class LabelReader {
 public:
  explicit LabelReader(std::vector<FunctionRecord>& functions) : functions_(functions) {}

  void ReadLine(std::string_view line) {
    for (const std::string_view creator : kCreators) {
      if (line.starts_with(creator)) ReadCreator(line, creator);
    }
    if (line.starts_with(kFunctionHeading)) ReadHeading(line);
    if (line.starts_with(kRampHighEnergy) && version_ == kRampVersion && selected_ != nullptr &&
        selected_->typeCode != kDadType) {
      selected_->typeCode = kMs2Type;
      selected_->label = L"MS^E Product Ions";
    }
  }

 private:
  void ReadCreator(std::string_view line, std::string_view creator) {
    ScanText scan(line);
    if (!scan.Literal(creator) || !scan.Literal(" v")) return;
    const std::optional<int> major = scan.Int();
    if (!major || !scan.Literal(".")) return;
    if (const std::optional<int> minor = scan.Int()) version_ = std::int64_t{*major} * 10 + *minor;
  }

  void ReadHeading(std::string_view line) {
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

void ApplyLabels(const platform::SystemPath& folder, std::vector<FunctionRecord>& functions,
                 Findings* findings, std::string* refusal) {
  const platform::File file = OpenInDirectory(folder, kLabelsName);
  const std::string text = ReadTextOf(file, kLabelsName, findings);
  NoticeRefusal(file, folder, kLabelsName, Spellings::kUpperLower, refusal);
  if (!file.IsOpen()) return NoticeUnreadable(folder, kLabelsName, findings);
  ByteLineReader lines(text, kLineBuffer);
  LabelReader labels(functions);
  for (std::string_view line; lines.Next(line);) labels.ReadLine(line);
}

}  // namespace zrml::masslynx
