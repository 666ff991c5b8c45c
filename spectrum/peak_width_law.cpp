#include "spectrum/peak_width_law.h"

namespace zrml {
namespace {

template <class NewLaw>
bool SetWidth(std::shared_ptr<CZRMSPeakWidthLaw::Law>& holder, double width) {
  if (width < 0) return false;
  holder = std::make_shared<NewLaw>(width);
  return true;
}

}  // namespace

int CZRMSPeakWidthLaw::Law::GetParameters(double& width, double& second) const {
  width = m_Width;
  second = 0.0;
  return m_Kind;
}

double CZRMSPeakWidthLaw::ConstantLaw::Width(double) const { return m_Width; }

double CZRMSPeakWidthLaw::PPMLaw::Width(double mass) const { return mass * m_Width / 1000000; }

bool SetConstantWidth(std::shared_ptr<CZRMSPeakWidthLaw::Law>& holder, double width) {
  return SetWidth<CZRMSPeakWidthLaw::ConstantLaw>(holder, width);
}

bool SetPPMWidth(std::shared_ptr<CZRMSPeakWidthLaw::Law>& holder, double ppm) {
  return SetWidth<CZRMSPeakWidthLaw::PPMLaw>(holder, ppm);
}

}  // namespace zrml
