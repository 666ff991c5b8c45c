// The frame of an mzML file around its spectra: description, chromatograms, index and checksum.
#include <algorithm>
#include <array>
#include <optional>

#include "common/text.h"
#include "plugin/provider_table.h"
#include "tools/zrml/convert/date_time.h"
#include "tools/zrml/convert/instrument_model.h"
#include "tools/zrml/convert/mzml_chromatograms.h"
#include "tools/zrml/convert/mzml_params.h"
#include "tools/zrml/convert/mzml_spectrum.h"
#include "tools/zrml/convert/run_format.h"
#include "tools/zrml/convert/sha1.h"
#include "tools/zrml/convert/xml.h"

namespace zrml {
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

constexpr std::wstring_view kDateKey = L"AnalysisDateTime";
constexpr std::wstring_view kSampleKey = L"SampleName";
// What providers call the instrument's text.
constexpr std::array<std::wstring_view, 2> kInstrumentKeys = {L"InstrumentName", L"InstrumentDescription"};

std::wstring ValueOf(const RunPlan& plan, std::wstring_view key) {
  for (const MetadataItem& item : plan.metadata) {
    if (item.key == key) return item.value.value_or(std::wstring());
  }
  return {};
}

std::wstring InstrumentText(const RunPlan& plan) {
  std::wstring text;
  for (const std::wstring_view key : kInstrumentKeys) {
    if (text.empty()) text = ValueOf(plan, key);
  }
  return text;
}

// Where each element begins, for the index; 8 bytes each.
using Offsets = std::vector<std::uint64_t>;

class MzmlDocument : public Document {
 public:
  MzmlDocument(const RunContext& context, ByteSink& out)
      : context_(context),
        plan_(context.plan),
        out_(out),
        chromatograms_(ListChromatograms(context.server, context.plan)),
        isIndexed_(context.isIndexed && !(plan_.entries.empty() && chromatograms_.empty())) {
    if (isIndexed_) hash_.emplace();
  }

  void Begin() override {
    std::string text(kDeclaration);
    if (isIndexed_) text.append("<indexedmzML ").append(kNamespaces).append("mzML1.1.0_idx.xsd\">\n");
    text.append("<mzML ").append(kNamespaces).append("mzML1.1.0.xsd\"");
    AppendAttribute(text, "id", XmlText(context_.name));
    text += " version=\"1.1.0\">\n";
    text += kVocabularies;
    AppendFileDescription(text);
    AppendSample(text);
    AppendSoftware(text);
    AppendInstrument(text);
    AppendRun(text);
    text += "<spectrumList";  // an empty one, too, which readers look for
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

  std::size_t ChromatogramCount() const override { return chromatograms_.size(); }

 private:
  void Emit(std::string_view text) {
    if (hash_) hash_->Add(std::as_bytes(std::span(text)));
    out_.Write(text);
    position_ += text.size();
  }

  void AppendFileDescription(std::string& text) const {
    text += "<fileDescription>\n<fileContent>\n";
    std::vector<const CvTerm*> terms;
    for (const RunEntry& entry : plan_.entries) {
      const CvTerm* const term = &SpectrumType(plan_.FunctionOf(entry));
      if (std::find(terms.begin(), terms.end(), term) == terms.end()) terms.push_back(term);
    }
    if (HasTotalIonCurrent(plan_)) terms.push_back(&cv::kTicChromatogram);
    if (terms.empty()) terms.push_back(&cv::kMassSpectrum);  // a term is asked for, whatever there is
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
      AppendCvParam(text, plan_.isReport ? cv::kTextFormat : cv::kWatersRawFormat);
      AppendCvParam(text, cv::kSha1, file.sha1);
      text += "</sourceFile>\n";
    }
    text += "</sourceFileList>\n";
  }

  void AppendSample(std::string& text) const {
    text += "<sampleList count=\"1\">\n<sample id=\"sample\"";
    const std::wstring name = ValueOf(plan_, kSampleKey);
    AppendAttribute(text, "name", XmlText(name.empty() ? plan_.sampleName : name));
    text += "/>\n</sampleList>\n";
  }

  void AppendSoftware(std::string& text) const {
    text += "<softwareList count=\"2\">\n<software id=\"zrml\" version=\"" ZRML_VERSION "\">\n";
    AppendCvParam(text, cv::kCustomSoftware, "zrml");
    text += "</software>\n<software id=\"provider\" version=\"interface ";
    text += std::to_string(kInterfaceVersion) + "\">\n";
    AppendCvParam(text, cv::kCustomSoftware, XmlText(plan_.provider));
    text += "</software>\n</softwareList>\n";
  }

  void AppendInstrument(std::string& text) const {
    const std::wstring instrument = InstrumentText(plan_);
    text += "<instrumentConfigurationList count=\"1\">\n<instrumentConfiguration id=\"instrument\">\n";
    AppendCvParam(text, InstrumentModel(instrument));
    if (!instrument.empty()) AppendUserParam(text, L"instrument", instrument);
    text +=
        "</instrumentConfiguration>\n</instrumentConfigurationList>\n"
        "<dataProcessingList count=\"1\">\n<dataProcessing id=\"conversion\">\n"
        "<processingMethod order=\"0\" softwareRef=\"zrml\">\n";
    AppendCvParam(text, cv::kConversionToMzml);
    text += "</processingMethod>\n</dataProcessing>\n</dataProcessingList>\n";
  }

  void AppendRun(std::string& text) const {
    text += "<run";
    AppendAttribute(text, "id", "run_" + XmlIdPart(context_.name));
    text += " defaultInstrumentConfigurationRef=\"instrument\" sampleRef=\"sample\"";
    if (const std::optional<std::wstring> date = XmlDateTime(ValueOf(plan_, kDateKey)))
      AppendAttribute(text, "startTimeStamp", XmlText(*date));
    text += ">\n";
    for (const MetadataItem& item : plan_.metadata) {
      if (item.value && !item.value->empty()) AppendUserParam(text, item.key, *item.value);
    }
  }

  void EmitChromatograms() {
    if (chromatograms_.empty()) return;
    std::string text = "<chromatogramList";
    AppendAttribute(text, "count", chromatograms_.size());
    text += " defaultDataProcessingRef=\"conversion\">\n";
    Emit(text);
    ChromatogramRenderer renderer(context_.server, plan_, context_.arrays);
    for (std::size_t i = 0; i < chromatograms_.size(); ++i) {
      if (isIndexed_) chromatogramOffsets_.push_back(position_);
      text.clear();
      renderer.Append(text, i, chromatograms_[i]);
      Emit(text);
    }
    Emit("</chromatogramList>\n");
  }

  void EmitOffset(const std::string& id, std::uint64_t offset) {
    Emit("<offset idRef=\"" + id + "\">" + std::to_string(offset) + "</offset>\n");
  }

  void EmitIndex() {
    const std::uint64_t listOffset = position_;
    const int lists = (spectrumOffsets_.empty() ? 0 : 1) + (chromatogramOffsets_.empty() ? 0 : 1);
    Emit("<indexList count=\"" + std::to_string(lists) + "\">\n");
    if (!spectrumOffsets_.empty()) {
      Emit("<index name=\"spectrum\">\n");
      for (std::size_t i = 0; i < spectrumOffsets_.size(); ++i) {
        const RunEntry& entry = plan_.entries[i];
        EmitOffset(NativeId(plan_.FunctionOf(entry).number, entry.scan + 1), spectrumOffsets_[i]);
      }
      Emit("</index>\n");
    }
    if (!chromatogramOffsets_.empty()) {
      Emit("<index name=\"chromatogram\">\n");
      for (std::size_t i = 0; i < chromatogramOffsets_.size(); ++i) {
        EmitOffset(XmlText(chromatograms_[i].id), chromatogramOffsets_[i]);
      }
      Emit("</index>\n");
    }
    Emit("</indexList>\n<indexListOffset>" + std::to_string(listOffset) + "</indexListOffset>\n");
    Emit("<fileChecksum>");  // the checksum is of everything up to here
    const std::string checksum = hash_->Finish();
    hash_.reset();
    Emit(checksum + "</fileChecksum>\n</indexedmzML>\n");
  }

  const RunContext& context_;
  const RunPlan& plan_;
  ByteSink& out_;
  std::vector<ChromatogramSource> chromatograms_;
  bool isIndexed_;
  std::optional<Sha1> hash_;  // while there is an index to come
  std::uint64_t position_ = 0;
  Offsets spectrumOffsets_;
  Offsets chromatogramOffsets_;
};

}  // namespace

std::unique_ptr<Document> MakeMzmlDocument(const RunContext& context, ByteSink& out) {
  return std::make_unique<MzmlDocument>(context, out);
}

}  // namespace zrml
