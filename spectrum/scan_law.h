// How the points of a profile spectrum are spaced on the mass axis: evenly in a coordinate that depends on
// the analyser. Laws are immutable and held through shared pointers, empty when no law is known.
#pragma once

#include <memory>
#include <typeinfo>

#include "spectrum/mass_spectrum.h"

namespace zrml {

class CZRMSScanLaw {
 public:
  enum TypeCode : int { kNone = 0, kConstant = 1, kTOF = 2, kFT = 3, kFT2 = 4, kSector = 5 };

  class DeltaCalc {
   public:
    DeltaCalc() = default;
    DeltaCalc(const DeltaCalc&) = delete;
    DeltaCalc& operator=(const DeltaCalc&) = delete;
    virtual ~DeltaCalc() = default;
    /// Masses of the points one step below and above.
    virtual double Previous(double mass) const = 0;
    virtual double Next(double mass) const = 0;
    virtual int Type() const = 0;
    /// Whether `other` has the same class and a step equal within 2 %: 0.98 < own / other <= 1.02,
    /// deliberately exclusive below and inclusive above.
    virtual bool IsSame(const DeltaCalc& other) const = 0;
  };

  /// The common part of the laws: the step in the coordinate that the law samples evenly.
  template <class Law, TypeCode kType>
  class SteppedLaw : public DeltaCalc {
   public:
    explicit SteppedLaw(double delta) : m_Delta(delta) {}
    int Type() const final { return kType; }
    bool IsSame(const DeltaCalc& other) const final {
      if (typeid(other) != typeid(Law)) return false;
      const double ratio = m_Delta / static_cast<const SteppedLaw&>(other).m_Delta;
      return 0.98 < ratio && ratio <= 1.02;
    }

   protected:
    double m_Delta;
  };

  /// Evenly in m; Previous ends at 0.
  class ConstantDelta final : public SteppedLaw<ConstantDelta, kConstant> {
   public:
    using SteppedLaw::SteppedLaw;
    double Previous(double mass) const override;
    double Next(double mass) const override;
  };

  /// Time of flight: evenly in sqrt(m); Previous ends at 0.
  class TOFDelta final : public SteppedLaw<TOFDelta, kTOF> {
   public:
    using SteppedLaw::SteppedLaw;
    double Previous(double mass) const override;
    double Next(double mass) const override;
  };

  /// Fourier transform, in a magnetic field: evenly in 1/m.
  class FTDelta final : public SteppedLaw<FTDelta, kFT> {
   public:
    using SteppedLaw::SteppedLaw;
    double Previous(double mass) const override;
    double Next(double mass) const override;
  };

  /// Fourier transform, in an electric field: evenly in 1/sqrt(m).
  class FT2Delta final : public SteppedLaw<FT2Delta, kFT2> {
   public:
    using SteppedLaw::SteppedLaw;
    double Previous(double mass) const override;
    double Next(double mass) const override;
  };

  /// Magnetic sector: evenly in ln(m).
  class SectorDelta final : public SteppedLaw<SectorDelta, kSector> {
   public:
    using SteppedLaw::SteppedLaw;
    double Previous(double mass) const override;
    double Next(double mass) const override;
  };
};

using ScanLawHolder = std::shared_ptr<CZRMSScanLaw::DeltaCalc>;

/// The coordinate that laws of one type sample evenly, and its inverse. It rises with the mass, so the
/// reciprocal ones are negated.
struct ScanLawCoordinate {
  double (*fromMass)(double mass);
  double (*toMass)(double coordinate);
};

/// Null for an unknown type code.
const ScanLawCoordinate* CoordinateOfScanLaw(int type);

/// Finds the law of a profile spectrum, from all its points or else from those of positive intensity, and
/// gives its type code; 0, with an empty holder, when there is none.
int DetectScanLaw(ScanLawHolder& holder, const CZRMassSpectrum& spectrum);

/// The same, from all points only.
int FindScanLaw(ScanLawHolder& holder, const CZRMassSpectrum& spectrum);

/// Finds the value with the most values within 1 % of it, the first of several, and returns their number. A
/// negative value is not even within 1 % of itself; 0 and 0 when no value has any.
int EstimateModeValue(const double* values, int count, double& value);

/// The mass of the next point; 1.0 higher when there is no law or it does not advance.
double NextMass(const ScanLawHolder& law, double mass);

/// The mass of the previous point, or 0.0 when that is not above a tenth of the mass; the mass itself when
/// there is no law or it is not positive.
double PreviousMass(const ScanLawHolder& law, double mass);

/// 1 when both hold a law and the laws are the same, else 0.
int SameScanLaw(const ScanLawHolder& one, const ScanLawHolder& other);

}  // namespace zrml
