// The frame of an mzML file around its spectra: description, chromatograms, index and checksum.
#include <algorithm>
#include <array>
#include <optional>

#include "convert/date_time.h"
#include "convert/instrument_model.h"
#include "convert/mzml_chromatograms.h"
#include "convert/mzml_params.h"
#include "convert/mzml_spectrum.h"
#include "convert/sha1.h"
#include "convert/writer.h"
#include "convert/xml.h"

namespace zrml::convert {
namespace {

constexpr std::string_view kDeclaration = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";
constexpr std::string_view kNamespaces =
    "xmlns=\"http://psi.hupo.org/ms/mzml\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
    "xsi:schemaLocation=\"http://psi.hupo.org/ms/mzml http://psidev.info/files/ms/mzML/xsd/";
constexpr std::string_view kVocabularies =
    "<cvList count=\"2\">\n"
    "<cv id=\"MS\" fullName=\"Proteomics Standards Initiative Mass Spectrometry Ontology\" "
    "URI=\"https://raw.githubusercontent.com/HUPO-PSI/psi-ms-CV/master/psi-ms.obo\"/>\n"
    "<cv id=\"UO\" fullName=\"Unit Ontology\" "
    "URI=\"https://raw.githubusercontent.com/bio-ontology-research-group/unit-ontology/master/unit.obo\"/>\n"
    "</cvList>\n";

constexpr std::string_view kDateKey = "AnalysisDateTime";
constexpr std::string_view kSampleKey = "SampleName";
// The formats' names for the text of the instrument.
constexpr std::array<std::string_view, 2> kInstrumentKeys = {"InstrumentName", "InstrumentDescription"};

std::string ValueOf(const RunPlan& plan, std::string_view key) {
  for (const source::MetadataItem& item : plan.metadata) {
    if (item.key == key) return item.value.value_or(std::string());
  }
  return {};
}

std::string InstrumentText(const RunPlan& plan) {
  std::string text;
  for (const std::string_view key : kInstrumentKeys) {
    if (text.empty()) text = ValueOf(plan, key);
  }
  return text;
}

class MzmlDocument : public Document {
 public:
  MzmlDocument(const RunContext& context, ByteSink& out)
      : context_(context),
        plan_(context.plan),
        out_(out),
        totals_(ReadTotals(context.source, plan_, context.losses)),
        traces_(ReadTraces(context.source, plan_, context.losses, context.cancel)),
        isIndexed_(context.isIndexed && !(plan_.entries.empty() && ChromatogramCount() == 0)) {
    if (isIndexed_) hash_.emplace();
  }

  void Begin() override {
    std::string text(kDeclaration);
    if (isIndexed_) text.append("<indexedmzML ").append(kNamespaces).append("mzML1.1.0_idx.xsd\">\n");
    text.append("<mzML ").append(kNamespaces).append("mzML1.1.0.xsd\"");
    AppendAttribute(text, "id", XmlText(plan_.name));
    text += " version=\"1.1.0\">\n";
    text += kVocabularies;
    AppendFileDescription(text);
    AppendSample(text);
    AppendSoftware(text);
    AppendInstrument(text);
    AppendProcessing(text);
    AppendRun(text);
    text += "<spectrumList";  // even when empty, since readers expect it
    AppendAttribute(text, "count", plan_.entries.size());
    text += " defaultDataProcessingRef=\"conversion\">\n";
    Emit(text);
  }

  void Add(std::string_view text) override {
    if (isIndexed_) spectrumOffsets_.push_back(position_);
    Emit(text);
  }

  void End() override {
    Emit("</spectrumList>\n");
    EmitChromatograms();
    Emit("</run>\n</mzML>\n");
    if (isIndexed_) EmitIndex();
  }

  std::size_t ChromatogramCount() const override { return totals_.size() + ChannelCount() + traces_.size(); }

 private:
  void Emit(std::string_view text) {
    if (hash_) hash_->Add(std::as_bytes(std::span(text)));
    out_.Write(text);
    position_ += text.size();
  }

  bool IsReport() const { return plan_.sourceFormat == source::Format::kReport; }

  void AppendFileDescription(std::string& text) const {
    text += "<fileDescription>\n<fileContent>\n";
    std::vector<const CvTerm*> terms;
    const auto add = [&](const CvTerm& term) {
      if (std::find(terms.begin(), terms.end(), &term) == terms.end()) terms.push_back(&term);
    };
    for (const RunEntry& entry : plan_.entries) add(SpectrumType(plan_.FunctionOf(entry)));
    if (!totals_.empty()) add(cv::kTicChromatogram);
    for (const RunFunction& function : plan_.functions) {
      if (!function.channels.empty()) add(ChannelType(function.info));
    }
    if (terms.empty()) terms.push_back(&cv::kMassSpectrum);  // a term is required in any case
    for (const CvTerm* const term : terms) AppendCvParam(text, *term);
    text += "</fileContent>\n";
    AppendSourceFiles(text);
    text += "</fileDescription>\n";
  }

  void AppendSourceFiles(std::string& text) const {
    if (context_.files.empty()) return;
    text += "<sourceFileList";
    AppendAttribute(text, "count", context_.files.size());
    text += ">\n";
    std::size_t number = 0;
    for (const SourceFile& file : context_.files) {
      text += "<sourceFile";
      AppendAttribute(text, "id", "source" + std::to_string(++number));
      AppendAttribute(text, "name", XmlText(file.name));
      AppendAttribute(text, "location", XmlText(file.location));
      text += ">\n";
      AppendCvParam(text, cv::kWatersNativeId);
      AppendCvParam(text, IsReport() ? cv::kTextFormat : cv::kWatersRawFormat);
      AppendCvParam(text, cv::kSha1, file.sha1);
      text += "</sourceFile>\n";
    }
    text += "</sourceFileList>\n";
  }

  void AppendSample(std::string& text) const {
    text += "<sampleList count=\"1\">\n<sample id=\"sample\"";
    const std::string name = ValueOf(plan_, kSampleKey);
    AppendAttribute(text, "name", XmlText(name.empty() ? plan_.sampleName : name));
    text += "/>\n</sampleList>\n";
  }

  void AppendSoftware(std::string& text) const {
    text += IsReport() ? "<softwareList count=\"2\">\n" : "<softwareList count=\"1\">\n";
    if (IsReport()) {
      text += "<software id=\"openlynx\" version=\"unknown\">\n";
      AppendCvParam(text, cv::kMassLynx);
      AppendUserParam(text, "program", "OpenLynx");
      text += "</software>\n";
    }
    text += "<software id=\"zrml\" version=\"" ZRML_VERSION "\">\n";
    AppendCvParam(text, cv::kCustomSoftware, "zrml");
    text += "</software>\n</softwareList>\n";
  }

  void AppendInstrument(std::string& text) const {
    const std::string instrument = InstrumentText(plan_);
    text += "<instrumentConfigurationList count=\"1\">\n<instrumentConfiguration id=\"instrument\">\n";
    AppendCvParam(text, InstrumentModel(instrument));
    if (!instrument.empty()) AppendUserParam(text, "instrument", instrument);
    text += "</instrumentConfiguration>\n</instrumentConfigurationList>\n";
  }

  // The spectra that more was done to name it; everything else is only converted.
  void AppendProcessing(std::string& text) const {
    struct Method {
      CvTerm action;
      std::string_view what;
      std::string how;
      std::string_view software = "zrml";
    };
    const PointChoice& points = plan_.selection.points;
    const Method conversion = {cv::kConversionToMzml, {}, {}};
    const Method picking = {cv::kPeakPicking, "intensities", points.centroids.isArea ? "areas" : "heights"};
    const Method filtering = {cv::kDataFiltering, "points", TextOf(points.filter)};
    const bool isFiltered = !points.filter.TakesAll();
    std::vector<std::pair<std::string_view, std::vector<Method>>> processes = {{"conversion", {conversion}}};
    if (isFiltered) processes.push_back({kFiltering, {conversion, filtering}});
    if (points.centroidLevels) processes.push_back({kCentroiding, {conversion, picking}});
    if (points.centroidLevels && isFiltered) processes.back().second.push_back(filtering);
    // The spectra and chromatograms of a report are results, whatever each of them says of how it was made.
    if (IsReport())
      for (auto& [id, methods] : processes)
        methods.insert(methods.begin(), Method{cv::kProcessing, "result", "report", "openlynx"});
    text += "<dataProcessingList";
    AppendAttribute(text, "count", processes.size());
    text += ">\n";
    for (const auto& [id, methods] : processes) {
      text += "<dataProcessing";
      AppendAttribute(text, "id", id);
      text += ">\n";
      for (std::size_t order = 0; order < methods.size(); ++order) {
        text += "<processingMethod";
        AppendAttribute(text, "order", order);
        AppendAttribute(text, "softwareRef", methods[order].software);
        text += ">\n";
        AppendCvParam(text, methods[order].action);
        if (!methods[order].what.empty()) AppendUserParam(text, methods[order].what, methods[order].how);
        text += "</processingMethod>\n";
      }
      text += "</dataProcessing>\n";
    }
    text += "</dataProcessingList>\n";
  }

  void AppendRun(std::string& text) const {
    text += "<run";
    AppendAttribute(text, "id", "run_" + XmlIdPart(plan_.name));
    text += " defaultInstrumentConfigurationRef=\"instrument\" sampleRef=\"sample\"";
    if (const std::optional<std::string> date = XmlDateTime(ValueOf(plan_, kDateKey)))
      AppendAttribute(text, "startTimeStamp", *date);
    text += ">\n";
    for (const source::MetadataItem& item : plan_.metadata) {
      if (item.value && !item.value->empty()) AppendUserParam(text, item.key, *item.value);
    }
  }

  void EmitChromatograms() {
    if (ChromatogramCount() == 0) return;
    std::string text = "<chromatogramList";
    AppendAttribute(text, "count", ChromatogramCount());
    text += " defaultDataProcessingRef=\"conversion\">\n";
    Emit(text);
    ArrayWriter arrays(context_.arrays);
    EmitAll(totals_, arrays);
    for (std::int32_t i = 0; i < static_cast<std::int32_t>(plan_.functions.size()); ++i) {
      if (plan_.functions[static_cast<std::size_t>(i)].channels.empty()) continue;
      EmitAll(ReadChannelChromatograms(context_.source, plan_, i, context_.losses), arrays);
    }
    EmitAll(traces_, arrays);
    Emit("</chromatogramList>\n");
  }

  void EmitAll(const std::vector<RunChromatogram>& chromatograms, ArrayWriter& arrays) {
    for (const RunChromatogram& chromatogram : chromatograms) {
      std::string text;
      AppendChromatogram(text, chromatograms_.size(), chromatogram, context_.arrays, arrays);
      chromatograms_.push_back({XmlText(chromatogram.id), position_});
      Emit(text);
    }
  }

  std::size_t ChannelCount() const {
    std::size_t count = 0;
    for (const RunFunction& function : plan_.functions) count += function.channels.size();
    return count;
  }

  void EmitOffset(const std::string& id, std::uint64_t offset) {
    Emit("<offset idRef=\"" + id + "\">" + std::to_string(offset) + "</offset>\n");
  }

  void EmitIndex() {
    const std::uint64_t listOffset = position_;
    const int lists = (spectrumOffsets_.empty() ? 0 : 1) + (chromatograms_.empty() ? 0 : 1);
    Emit("<indexList count=\"" + std::to_string(lists) + "\">\n");
    if (!spectrumOffsets_.empty()) {
      Emit("<index name=\"spectrum\">\n");
      for (std::size_t i = 0; i < spectrumOffsets_.size(); ++i) {
        const RunEntry& entry = plan_.entries[i];
        EmitOffset(NativeId(plan_.FunctionOf(entry).info.id, entry.scan + 1), spectrumOffsets_[i]);
      }
      Emit("</index>\n");
    }
    if (!chromatograms_.empty()) {
      Emit("<index name=\"chromatogram\">\n");
      for (const Indexed& chromatogram : chromatograms_) EmitOffset(chromatogram.id, chromatogram.offset);
      Emit("</index>\n");
    }
    Emit("</indexList>\n<indexListOffset>" + std::to_string(listOffset) + "</indexListOffset>\n");
    EmitChecksum();
  }

  // The checksum of everything before it.
  void EmitChecksum() {
    Emit("<fileChecksum>");
    const std::string checksum = hash_->Finish();
    hash_.reset();
    Emit(checksum + "</fileChecksum>\n</indexedmzML>\n");
  }

  struct Indexed {
    std::string id;  // as XML text
    std::uint64_t offset;
  };

  const RunContext& context_;
  const RunPlan& plan_;
  ByteSink& out_;
  std::vector<RunChromatogram> totals_;
  std::vector<RunChromatogram> traces_;
  bool isIndexed_;
  std::optional<Sha1> hash_;  // while there is an index to come
  std::uint64_t position_ = 0;
  std::vector<std::uint64_t> spectrumOffsets_;  // 8 bytes each
  std::vector<Indexed> chromatograms_;          // that are written
};

}  // namespace

std::unique_ptr<Document> MakeMzmlDocument(const RunContext& context, ByteSink& out) {
  return std::make_unique<MzmlDocument>(context, out);
}

}  // namespace zrml::convert
