// The sampling step of a profile spectrum as a smooth function of mass, learned from its points.
#pragma once

#include <limits>
#include <optional>

#include "spectrum/mass_spectrum.h"
#include "spectrum/polynomial_fit.h"

namespace zrml {

struct SamplingStepModel {
  std::optional<PolynomialFit> below;  ///< the step against its lower mass
  std::optional<PolynomialFit> above;  ///< the step against its upper mass
  double minHalfStep = 1e-6;           ///< lower limit of every result
  /// The range of masses of the fit; low is above high when there is none.
  double lowMass = std::numeric_limits<double>::infinity();
  double highMass = -std::numeric_limits<double>::infinity();
};

/// Learns the model from the steps inside runs of non-zero intensity, or from all steps when there are no
/// runs. The previous curves are discarded; an empty spectrum leaves none.
void BuildStepModel(SamplingStepModel& model, const CZRMassSpectrum& spectrum);

/// The value of the curves at a mass, at least the smallest half step.
double StepBelow(const SamplingStepModel& model, double mass);
double StepAbove(const SamplingStepModel& model, double mass);

}  // namespace zrml
