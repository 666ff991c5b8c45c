// Spectra and drift bins of a function, and the chromatograms that a plug-in computes of its spectra.
#pragma once

#include <optional>
#include <vector>

#include "plugin/data_server.h"
#include "tools/zrml/plugin_verdicts.h"
#include "tools/zrml/slot_view.h"

namespace zrml::tool {

/// Both sides, open.
struct ComparedSource {
  CDataServerImpl& server;
  source::Source& source;
  RawSlots* rawSlots;        // null for a report
  ReportSlots* reportSlots;  // null for a raw directory
};

inline constexpr int kNotHeld = -1;

/// The functions of a sample that the plug-in lists.
struct ComparedList {
  std::vector<int> positions;  // in the source's list; kNotHeld of one that the source has not
  bool hasOtherScans = false;  // in some function
  bool hasOtherTimes = false;  // in some function of a report: a time that it lacks is 0
  bool hasEmptyLevel = false;  // a function of level 1 without scans
};

/// One of them.
struct ComparedFunction {
  int sample = 0;
  int position = 0;  // in the plug-in's list
  int held = 0;      // in the source's
  source::Function function = {};
  int kind = 0;  // in the interface's numbers
  std::optional<SlotScans> others = {};
  // As the plug-in should report it.
  bool hasMobility = false;
  int driftBins = 0;
};

/// Compares the first `scans` scans, which both sides have.
void CompareScans(PluginComparison& result, const ComparedSource& compared, const ComparedList& list,
                  const ComparedFunction& function, int scans);

}  // namespace zrml::tool
