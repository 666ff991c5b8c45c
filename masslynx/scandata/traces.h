// Sample-level traces: channels recorded beside the acquisition ("_ANALOGS.INF" with "_ANALOGS.DAT"), else
// stored chromatograms ("_CHROMS.INF" with one "_CHRO001.DAT" each). docs/traces.md
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "plugin/chromatogram.h"

namespace zrml {

struct TraceList {
  std::vector<std::wstring> names;
  bool fromAnalogs = false;
};

/// The traces of a directory, none when it lists none. No value when the list is damaged.
std::optional<TraceList> ReadTraceList(const std::wstring& directory);

/// Reads the trace at a position of the list, named and with times as they are stored; analog channels end
/// where time runs backwards. False without a sound data file.
bool ReadTrace(const std::wstring& directory, const TraceList& list, int trace,
               CZRChromatogram& chromatogram);

}  // namespace zrml
