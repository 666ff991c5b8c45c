// The plain formats: MGF, which holds fragment spectra for search engines, and TSV, a row per point.
#include <cmath>

#include "tools/zrml/convert/mzml_params.h"
#include "tools/zrml/convert/run_format.h"
#include "tools/zrml/convert/spectrum_reader.h"
#include "tools/zrml/format.h"

namespace zrml {
namespace {

class MgfRenderer : public Renderer {
 public:
  MgfRenderer(CDataServerImpl& server, const RunPlan& plan) : reader_(server, plan) {}

  // Nothing for a spectrum without points, which readers of the format refuse.
  void Render(std::size_t index, std::string& text) override {
    constexpr double kSecondsPerMinute = 60;
    const RunEntry& entry = reader_.Plan().entries[index];
    const RunFunction& function = reader_.Plan().FunctionOf(entry);
    const CZRMassSpectrum spectrum = reader_.ReadMass(entry);
    points_.clear();
    AppendPoints(spectrum);
    text.clear();
    if (points_.empty()) return;
    text += "BEGIN IONS\nTITLE=" + NativeId(function.number, entry.scan + 1);
    if (!function.name.empty()) text += " " + VisibleUtf8(function.name);
    if (std::isfinite(entry.minutes)) text += "\nRTINSECONDS=" + Number(entry.minutes * kSecondsPerMinute);
    const double precursor = spectrum.GetPrecursorMass();
    if (std::isfinite(precursor) && precursor != 0) text += "\nPEPMASS=" + Number(precursor);
    text += "\n" + points_ + "END IONS\n\n";
  }

 private:
  // The format has no form for what is no number.
  void AppendPoints(const CZRMassSpectrum& spectrum) {
    const auto masses = MassesOf(spectrum);
    const auto intensities = IntensitiesOf(spectrum);
    for (std::size_t i = 0; i < masses.size(); ++i) {
      if (!std::isfinite(masses[i]) || !std::isfinite(intensities[i])) continue;
      AppendNumber(masses[i], points_);
      points_.push_back(' ');
      AppendNumber(intensities[i], points_);
      points_.push_back('\n');
    }
  }

  SpectrumReader reader_;
  std::string points_;
};

class TsvRenderer : public Renderer {
 public:
  TsvRenderer(CDataServerImpl& server, const RunPlan& plan) : reader_(server, plan) {}

  void Render(std::size_t index, std::string& text) override {
    const RunEntry& entry = reader_.Plan().entries[index];
    const RunFunction& function = reader_.Plan().FunctionOf(entry);
    const CZRMassSpectrum spectrum = reader_.ReadMass(entry);
    const std::string front = std::to_string(function.number) + '\t' + std::to_string(entry.scan + 1) + '\t' +
                              Number(entry.minutes) + '\t';
    const auto masses = MassesOf(spectrum);
    const auto intensities = IntensitiesOf(spectrum);
    text.clear();
    for (std::size_t i = 0; i < masses.size(); ++i) {
      text += front;
      AppendNumber(masses[i], text);
      text.push_back('\t');
      AppendNumber(intensities[i], text);
      text.push_back('\n');
    }
  }

 private:
  SpectrumReader reader_;
};

class PlainDocument : public Document {
 public:
  PlainDocument(std::string_view heading, ByteSink& out) : heading_(heading), out_(out) {}

  void Begin() override { out_.Write(heading_); }
  void Add(std::string_view text) override { out_.Write(text); }
  void End() override {}

 private:
  std::string heading_;
  ByteSink& out_;
};

}  // namespace

std::unique_ptr<Renderer> MakeMgfRenderer(CDataServerImpl& server, const RunPlan& plan) {
  return std::make_unique<MgfRenderer>(server, plan);
}

std::unique_ptr<Renderer> MakeTsvRenderer(CDataServerImpl& server, const RunPlan& plan) {
  return std::make_unique<TsvRenderer>(server, plan);
}

std::unique_ptr<Document> MakePlainDocument(std::string_view heading, ByteSink& out) {
  return std::make_unique<PlainDocument>(heading, out);
}

}  // namespace zrml
