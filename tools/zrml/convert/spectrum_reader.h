// The spectra of a run, read by one worker through a provider of its own.
#pragma once

#include <span>
#include <vector>

#include "plugin/data_server.h"
#include "tools/zrml/convert/run_plan.h"

namespace zrml {

class SpectrumReader {
 public:
  SpectrumReader(CDataServerImpl& server, const RunPlan& plan) : server_(server), plan_(plan) {}

  const RunPlan& Plan() const { return plan_; }

  /// What cannot be read is empty once the plan's losses know of it.
  CZRMassSpectrum ReadMass(const RunEntry& entry) const;

  /// The drift bins of a scan in one spectrum, by mass, then bin; `bins` gets each point's bin from 1. Empty
  /// when one of them cannot be read.
  CZRMassSpectrum ReadDrift(const RunEntry& entry, std::vector<double>& bins) const;

  CZRAbsorbanceSpectrum ReadAbsorbance(const RunEntry& entry) const;

 private:
  void Lose(const RunEntry& entry) const;

  CDataServerImpl& server_;
  const RunPlan& plan_;
};

/// The usable points.
std::span<const double> MassesOf(const CZRMassSpectrum& spectrum);
std::span<const double> IntensitiesOf(const CZRMassSpectrum& spectrum);

}  // namespace zrml
