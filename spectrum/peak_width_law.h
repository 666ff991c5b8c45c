// The width of a peak at a mass. Laws are immutable and held through shared pointers.
#pragma once

#include <memory>

namespace zrml {

class CZRMSPeakWidthLaw {
 public:
  enum Kind : int { kConstant = 1, kPPM = 3 };

  class Law {
   public:
    virtual ~Law() = default;
    /// Mass units.
    virtual double Width(double mass) const = 0;
    /// 1000.0 for every law.
    virtual double MaxWidth() const { return 1000.0; }
    /// Gives the law's parameter and 0.0; the result is its kind.
    virtual int GetParameters(double& width, double& second) const;

   protected:
    Law(Kind kind, double width) : m_Kind(kind), m_Width(width) {}
    Law(const Law&) = default;
    Law& operator=(const Law&) = default;

    int m_Kind;
    double m_Width;
  };

  /// `width` mass units everywhere.
  class ConstantLaw final : public Law {
   public:
    explicit ConstantLaw(double width) : Law(kConstant, width) {}
    double Width(double mass) const override;
  };

  /// Proportional to the mass: `ppm` parts per million.
  class PPMLaw final : public Law {
   public:
    explicit PPMLaw(double ppm) : Law(kPPM, ppm) {}
    double Width(double mass) const override;
  };
};

/// Sets a new law in the holder. False, with the holder unchanged, for a negative parameter.
bool SetConstantWidth(std::shared_ptr<CZRMSPeakWidthLaw::Law>& holder, double width);
bool SetPPMWidth(std::shared_ptr<CZRMSPeakWidthLaw::Law>& holder, double ppm);

}  // namespace zrml
