// What of a sample is converted and in which order: one run of the open formats. Holds 16 bytes a spectrum
// and no points.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "plugin/data_server.h"
#include "tools/zrml/convert/losses.h"
#include "tools/zrml/convert/selection.h"
#include "tools/zrml/description.h"

namespace zrml {

struct RunFunction {
  int position = 0;
  int number = 0;  // from 1; the absorbance spectra have the number after the last function's
  bool isAbsorbance = false;
  std::wstring name = {};
  int kind = 0;
  int msLevel = 0;
  int scanType = 0;
  int polarity = 0;
  std::optional<NumberRange> massRange = {};
  int driftBins = 0;  // 0 without mobility data
};

/// One spectrum.
struct RunEntry {
  double minutes = 0;
  std::int32_t function = 0;  // index into RunPlan::functions
  std::int32_t scan = 0;
};

struct RunPlan {
  int sample = 0;
  std::wstring sampleName;
  bool isReport = false;
  int traces = 0;  // of the sample
  Losses* losses = nullptr;
  std::vector<std::wstring> notes = {};  // what the provider does not give of what there is, a line each
  std::wstring provider;
  std::vector<RunFunction> functions;
  std::vector<RunEntry> entries;  // by time; those without one last; equal times by function and scan
  std::vector<MetadataItem> metadata;
  Selection selection;

  const RunFunction& FunctionOf(const RunEntry& entry) const {
    return functions[static_cast<std::size_t>(entry.function)];
  }
};

/// What a format takes of a run.
enum class Content { kAll, kMassSpectra, kFragmentSpectra };

/// Whether scans of the function at `position` are asked for.
bool IsFunctionWanted(CDataServerImpl& server, int sample, int position, const Selection& selection,
                      Content content);
bool IsAbsorbanceWanted(const Selection& selection, Content content);

/// Notes in `losses`, which must outlive the plan, what cannot be read: such a scan stays, without a time if
/// it is that. Throws a Failure when the selection leaves nothing of what there is.
RunPlan PlanRun(CDataServerImpl& server, int sample, const Selection& selection, Content content,
                Losses& losses);

/// Notes that a spectrum cannot be read. Of a report that is none: it gives no spectrum without points.
void LoseSpectrum(const RunPlan& plan, const RunFunction& function, int scan);

}  // namespace zrml
