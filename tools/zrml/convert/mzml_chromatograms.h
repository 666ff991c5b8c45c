// The chromatograms of a run in mzML: total ion current, the sample's traces, the traces of its functions.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/zrml/convert/mzml_arrays.h"
#include "tools/zrml/convert/run_plan.h"

namespace zrml {

struct ChromatogramSource {
  enum class Kind { kTotalIonCurrent, kSampleTrace, kFunctionTrace };

  Kind kind = Kind::kTotalIonCurrent;
  int function = 0;  // position
  int trace = 0;     // position
  std::wstring id = {};
  std::wstring name = {};
};

/// Whether there are mass spectra, and so a total ion current.
bool HasTotalIonCurrent(const RunPlan& plan);

/// In the order in which they are written. Traces that cannot be read are left out, once the plan's losses
/// know of them; a report gives none without points, which is no loss.
std::vector<ChromatogramSource> ListChromatograms(CDataServerImpl& server, const RunPlan& plan);

/// The term for a trace that is called `name`.
const CvTerm& TraceType(std::wstring_view name);

class ChromatogramRenderer {
 public:
  ChromatogramRenderer(CDataServerImpl& server, const RunPlan& plan, const ArrayOptions& options);

  /// What cannot be read is left out once the plan's losses know of it.
  void Append(std::string& out, std::size_t index, const ChromatogramSource& source);

 private:
  CDataServerImpl& server_;
  const RunPlan& plan_;
  ArrayOptions options_;
  ArrayWriter arrays_;
};

}  // namespace zrml
