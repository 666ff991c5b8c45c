#include "tools/zrml/selection_options.h"

#include <algorithm>
#include <vector>

#include "tools/zrml/command.h"
#include "tools/zrml/open_source.h"

namespace zrml::tool {

void AddSelectionOptions(CLI::App& options, convert::Selection& selection) {
  AddParsed(options, "--rt", selection.minutes, convert::ParseTimeRange, "a time range such as 0.5-3",
            "Only scans of these minutes, such as 0.5-3")
      ->option_text("LO-HI");
  AddParsed(options, "--function", selection.functions, convert::FunctionSet::Parse,
            "a list of functions such as 1,3-5,p2",
            "Functions by the numbers of their files, such as 1,3-5; p2 is processed data")
      ->option_text("LIST");
  AddNumberSet(options, "--ms-level", selection.msLevels, "MS levels, such as 2-");
}

bool HasLevel(const source::Function& function) {
  return function.monitoring == source::Monitoring::kNone &&
         (function.kind == source::FunctionKind::kMs || function.kind == source::FunctionKind::kMsMs);
}

bool Chooses(const convert::Selection& selection, const source::Function& function) {
  return selection.functions.Has(function.id) &&
         (selection.msLevels.IsAll() || (HasLevel(function) && selection.msLevels.Has(function.msLevel)));
}

void RefuseWithoutLevel(source::Source& source, int sample, const std::string& ofLevel) {
  if (source.Functions(sample).empty() && source.HasAbsorbance(sample)) RefuseAbsorbance(source, sample);
  throw Failure(ExitStatus::kWrongUsage, NameOf(source, sample) + " has no MS function " + ofLevel +
                                             "; --function chooses one of " + FunctionsText(source, sample));
}

void RequireFunctions(source::Source& source, std::span<const int> samples,
                      const convert::FunctionSet& wanted, AbsorbanceFunction absorbance) {
  if (samples.empty()) return;
  for (const source::FunctionId& name : wanted.Named()) {
    const auto isNamed = [&](const source::Function& function) { return IsSameName(function.id, name); };
    const auto hasNamed = [&](int sample) {
      return std::ranges::any_of(source.Functions(sample), isNamed) ||
             (absorbance == AbsorbanceFunction::kCounts && source.HasAbsorbance(sample) &&
              isNamed(source.AbsorbanceFunction(sample)));
    };
    if (std::ranges::none_of(samples, hasNamed))
      FindFunction(source, samples.front() + 1, name);  // says which there are
  }
}

}  // namespace zrml::tool
