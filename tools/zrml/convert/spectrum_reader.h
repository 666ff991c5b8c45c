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

  /// A mass spectrum. One that cannot be read is empty where the plan allows gaps, as a report has no spectra
  /// without points; otherwise it is a Failure.
  CZRMassSpectrum ReadMass(const RunEntry& entry) const;

  /// The drift bins of a scan in one spectrum, by mass, then bin; `bins` gets each point's bin from 1. Throws
  /// a Failure when a bin cannot be read.
  CZRMassSpectrum ReadDrift(const RunEntry& entry, std::vector<double>& bins) const;

  CZRAbsorbanceSpectrum ReadAbsorbance(const RunEntry& entry) const;

 private:
  [[noreturn]] void Fail(const RunEntry& entry) const;

  CDataServerImpl& server_;
  const RunPlan& plan_;
};

/// The usable points.
std::span<const double> MassesOf(const CZRMassSpectrum& spectrum);
std::span<const double> IntensitiesOf(const CZRMassSpectrum& spectrum);

}  // namespace zrml
