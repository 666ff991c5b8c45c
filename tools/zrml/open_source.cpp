#include "tools/zrml/open_source.h"

#include <algorithm>
#include <span>
#include <vector>

#include "tools/zrml/host_system.h"

namespace zrml::tool {
namespace {

using source::FunctionId;

bool IsNext(const FunctionId& id, const FunctionId& before) {
  return id.process == 0 && before.process == 0 && id.number == before.number + 1;
}

// "1 to 3, 5, p1".
std::string ListOf(std::span<const source::Function> functions) {
  std::string list;
  for (std::size_t i = 0; i < functions.size();) {
    std::size_t last = i;
    while (last + 1 < functions.size() && IsNext(functions[last + 1].id, functions[last].id)) ++last;
    if (!list.empty()) list += ", ";
    list += TextOf(functions[i].id);
    if (last > i) list += (last > i + 1 ? " to " : ", ") + TextOf(functions[last].id);
    i = last + 1;
  }
  return list;
}

// The `count` existing items, by number.
std::string ListText(const std::string& noun, int count, const std::string& list) {
  if (count < 1) return "no " + noun + 's';
  return (count == 1 ? "only " + noun : noun + 's') + ' ' + list;
}

[[noreturn]] void Refuse(const std::string& noun, const std::string& name, const std::string& owner,
                         const std::string& others) {
  throw Failure(ExitStatus::kWrongUsage,
                "there is no " + noun + ' ' + name + ": " + owner + " has " + others);
}

}  // namespace

std::unique_ptr<source::Source> OpenSource(const std::string& path) {
  if (path.empty()) throw Failure(ExitStatus::kWrongUsage, "PATH is empty");
  try {
    return source::Source::Open(path);
  } catch (const source::Error& error) {
    throw FailureOf(error);
  }
}

void RequireFiles(int count) {
  std::string error;
  if (CanOpenFiles(count, error)) return;
  throw Failure(ExitStatus::kUnreadable,
                "cannot have " + std::to_string(count) + " more files open (" + error + ")");
}

std::string NameOf(source::Source& source, int sample) {
  return source.SampleCount() > 1 ? source.Path() + ", sample " + std::to_string(sample + 1) : source.Path();
}

int PositionOf(int number, int count, const std::string& noun, const std::string& owner) {
  if (number >= 1 && number <= count) return number - 1;
  Refuse(noun, std::to_string(number), owner,
         ListText(noun, count, count == 1 ? "1" : "1 to " + std::to_string(count)));
}

int FindSample(source::Source& source, int sampleNumber) {
  return PositionOf(sampleNumber, source.SampleCount(), "sample", source.Path());
}

std::string FunctionsText(source::Source& source, int sample) {
  const std::span<const source::Function> functions = source.Functions(sample);
  return ListText("function", static_cast<int>(functions.size()), ListOf(functions));
}

bool IsSameName(const FunctionId& a, const FunctionId& b) {
  const bool isProcessed = a.process != 0;
  return a.process == b.process && (isProcessed ? a.repeat == b.repeat : a.number == b.number);
}

void RefuseAbsorbance(source::Source& source, int sample) {
  throw Failure(ExitStatus::kWrongUsage,
                "function " + TextOf(source.AbsorbanceFunction(sample).id) + " of " + NameOf(source, sample) +
                    " is absorbance data: zrml spectrum --absorbance has its spectra, zrml chromatogram "
                    "--wavelength its chromatograms");
}

FunctionPosition FindFunction(source::Source& source, int sampleNumber, const FunctionId& id) {
  const int sample = FindSample(source, sampleNumber);
  const std::span<const source::Function> functions = source.Functions(sample);
  const auto found = std::find_if(functions.begin(), functions.end(), [&](const source::Function& function) {
    return IsSameName(function.id, id);
  });
  if (found != functions.end()) return {sample, static_cast<int>(found - functions.begin())};
  if (source.HasAbsorbance(sample) && IsSameName(source.AbsorbanceFunction(sample).id, id))
    RefuseAbsorbance(source, sample);
  Refuse("function", TextOf(id), NameOf(source, sample), FunctionsText(source, sample));
}

FunctionPosition FindChosen(source::Source& source, int sampleNumber, const std::optional<FunctionId>& id) {
  if (id) return FindFunction(source, sampleNumber, *id);
  const int sample = FindSample(source, sampleNumber);
  if (source.Functions(sample).size() == 1) return {sample, 0};
  throw Failure(ExitStatus::kWrongUsage, "--function is required: " + NameOf(source, sample) + " has " +
                                             FunctionsText(source, sample));
}

const source::Function& FunctionAt(source::Source& source, const FunctionPosition& position) {
  return source.Functions(position.sample)[static_cast<std::size_t>(position.function)];
}

FindingSubject SubjectOf(const source::Source& source, int sample, const FunctionId& id) {
  const bool isReport = source.GetFormat() == source::Format::kReport;
  return {FindingSubject::Kind::kFunction, isReport ? sample + 1 : 0, id.number, id.process, id.repeat};
}

}  // namespace zrml::tool
