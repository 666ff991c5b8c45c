// The plain formats: MGF, which holds fragment spectra for search engines, and TSV, a row per point.
#include <algorithm>
#include <cmath>

#include "common/number_text.h"
#include "convert/mzml_params.h"
#include "convert/spectrum_reader.h"
#include "convert/writer.h"

namespace zrml::convert {
namespace {

constexpr std::string_view kTsvHeading = "function\tscan\ttime\tm/z\tintensity\n";

// A title is one line.
std::string OneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; }, ' ');
  return text;
}

// As precise as the minutes: 0.57 of them are 34.2 seconds, in single precision and in double.
std::string Seconds(double minutes) {
  constexpr double kSecondsPerMinute = 60;
  constexpr double kNanoseconds = 1e9;
  const double seconds = minutes * kSecondsPerMinute;
  if (static_cast<double>(static_cast<float>(minutes)) == minutes)
    return ShortNumber(static_cast<double>(static_cast<float>(seconds)));
  return ShortNumber(std::round(seconds * kNanoseconds) / kNanoseconds);
}

class MgfRenderer : public Renderer {
 public:
  MgfRenderer(source::Source& source, const RunPlan& plan, Losses& losses) : reader_(source, plan, losses) {}

  // Empty for a spectrum without points, which readers of the format refuse.
  void Render(std::size_t index, std::string& text) override {
    const RunEntry& entry = reader_.Plan().entries[index];
    const Spectrum spectrum = reader_.ReadMass(entry);
    points_.clear();
    AppendPoints(spectrum);
    text.clear();
    if (points_.empty()) return;
    AppendAttributes(entry, spectrum.scan, text);
    text += points_ + "END IONS\n\n";
  }

 private:
  void AppendAttributes(const RunEntry& entry, const source::Scan& scan, std::string& text) const {
    const RunPlan& plan = reader_.Plan();
    const source::Function& function = plan.FunctionOf(entry).info;
    text += "BEGIN IONS\nTITLE=" + OneLine(plan.name) + ' ' + NativeId(function.id, entry.scan + 1);
    if (!function.name.empty()) text += " " + OneLine(function.name);
    text += "\nSCANS=" + std::to_string(entry.scan + 1);
    if (std::isfinite(entry.minutes)) text += "\nRTINSECONDS=" + Seconds(entry.minutes);
    const double precursor = scan.precursorMz.value_or(0);
    if (std::isfinite(precursor) && precursor != 0) text += "\nPEPMASS=" + ShortNumber(precursor);
    text += "\n";
  }

  // The format has no form for NaN and infinity.
  void AppendPoints(const Spectrum& spectrum) {
    for (std::size_t i = 0; i < spectrum.positions.size(); ++i) {
      if (!std::isfinite(spectrum.positions[i]) || !std::isfinite(spectrum.intensities[i])) continue;
      AppendShortNumber(spectrum.positions[i], points_);
      points_.push_back(' ');
      AppendShortNumber(spectrum.intensities[i], points_);
      points_.push_back('\n');
    }
  }

  SpectrumReader reader_;
  std::string points_;
};

class TsvRenderer : public Renderer {
 public:
  TsvRenderer(source::Source& source, const RunPlan& plan, Losses& losses) : reader_(source, plan, losses) {}

  void Render(std::size_t index, std::string& text) override {
    const RunEntry& entry = reader_.Plan().entries[index];
    const Spectrum spectrum = reader_.ReadMass(entry);
    const std::string front = TextOf(reader_.Plan().FunctionOf(entry).info.id) + '\t' +
                              std::to_string(entry.scan + 1) + '\t' + ShortNumber(entry.minutes) + '\t';
    text.clear();
    for (std::size_t i = 0; i < spectrum.positions.size(); ++i) {
      text += front;
      AppendShortNumber(spectrum.positions[i], text);
      text.push_back('\t');
      AppendShortNumber(spectrum.intensities[i], text);
      text.push_back('\n');
    }
  }

 private:
  SpectrumReader reader_;
};

// A heading, then one text after the other.
class PlainDocument : public Document {
 public:
  PlainDocument(std::string_view heading, ByteSink& out) : heading_(heading), out_(out) {}

  void Begin() override { out_.Write(heading_); }
  void Add(std::string_view text) override { out_.Write(text); }
  void End() override {}

 private:
  std::string_view heading_;
  ByteSink& out_;
};

}  // namespace

std::unique_ptr<Renderer> MakeMgfRenderer(source::Source& source, const RunPlan& plan, Losses& losses) {
  return std::make_unique<MgfRenderer>(source, plan, losses);
}

std::unique_ptr<Renderer> MakeTsvRenderer(source::Source& source, const RunPlan& plan, Losses& losses) {
  return std::make_unique<TsvRenderer>(source, plan, losses);
}

std::unique_ptr<Document> MakeMgfDocument(ByteSink& out) {
  return std::make_unique<PlainDocument>(std::string_view(), out);
}

std::unique_ptr<Document> MakeTsvDocument(ByteSink& out) {
  return std::make_unique<PlainDocument>(kTsvHeading, out);
}

}  // namespace zrml::convert
