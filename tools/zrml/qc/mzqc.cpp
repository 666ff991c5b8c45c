// mzQC 1.0, the JSON format of the HUPO-PSI for quality metrics.
#include <array>
#include <ctime>

#include "convert/cv_terms.h"
#include "convert/native_path.h"
#include "qc/metrics.h"
#include "tools/zrml/json_writer.h"
#include "tools/zrml/qc/reports.h"

namespace zrml::tool {
namespace {

struct VocabularySource {
  const char* name;
  const char* uri;
  const char* version;
};

// The terms are those of these versions.
constexpr std::array<VocabularySource, 2> kVocabularies = {{
    {"Proteomics Standards Initiative Mass Spectrometry Ontology",
     "https://github.com/HUPO-PSI/psi-ms-CV/releases/download/v4.1.257/psi-ms.obo", "4.1.257"},
    {"Unit Ontology",
     "https://raw.githubusercontent.com/bio-ontology-research-group/unit-ontology/v2023-05-23/"
     "unit-ontology.obo",
     "v2023-05-23"},
}};

std::string TimeNow() {
  const std::time_t now = std::time(nullptr);
  std::array<char, 32> text{};
  std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", std::gmtime(&now));
  return text.data();
}

std::string UriOf(const AssessedRun& run, Location location) {
  const auto full = platform::AbsolutePath(platform::FromUtf8Path(run.source));
  const std::string uri =
      location == Location::kFullPath ? convert::FileUri(full) : "file:///" + convert::UriPath(run.file);
  return run.sample > 0 ? uri + "#sample=" + std::to_string(run.sample) : uri;
}

void PutTerm(std::string_view accession, std::string_view name, JsonWriter& json) {
  json.Members({{"accession", std::string(accession)}, {"name", std::string(name)}});
}

void PutInput(const AssessedRun& run, Location location, JsonWriter& json) {
  const convert::CvTerm& format =
      run.format == source::Format::kReport ? convert::cv::kTextFormat : convert::cv::kWatersRawFormat;
  json.Object([&] {
    json.Members({{"name", run.input}, {"location", UriOf(run, location)}});
    json.Key("fileFormat").Object([&] { PutTerm(format.accession, format.name, json); });
  });
}

void PutSoftware(JsonWriter& json) {
  const convert::CvTerm& software = convert::cv::kCustomSoftware;
  json.Object([&] {
    PutTerm(software.accession, software.name, json);
    json.Members({{"value", "zrml"}, {"version", ZRML_VERSION}});
  });
}

void PutMetric(const qc::Metric& metric, const std::vector<double>& values, JsonWriter& json) {
  json.Object([&] {
    PutTerm(metric.term.accession, metric.term.name, json);
    json.Key("value");
    metric.shape == qc::Shape::kSingle ? json.Put(values.front()) : json.Numbers(values);
    if (metric.unit.accession.empty()) return;
    json.Key("unit").Object([&] { PutTerm(metric.unit.accession, metric.unit.name, json); });
  });
}

void PutRun(const AssessedRun& run, Location location, JsonWriter& json) {
  json.Object([&] {
    json.Key("metadata").Object([&] {
      json.Members({{"label", run.name}});
      json.Key("inputFiles").Array([&] { PutInput(run, location, json); });
      json.Key("analysisSoftware").Array([&] { PutSoftware(json); });
    });
    json.Key("qualityMetrics").Array([&] {
      const std::span<const qc::Metric> metrics = qc::Metrics();
      for (std::size_t i = 0; i < metrics.size(); ++i) {
        if (!run.quality.metrics[i].empty()) PutMetric(metrics[i], run.quality.metrics[i], json);
      }
    });
  });
}

}  // namespace

bool IsForMzqc(const AssessedRun& run) {
  return run.state == RunState::kSound || run.state == RunState::kSuspect;
}

void WriteMzqc(AssessedRuns runs, Location location, Output& out) {
  JsonWriter json(out);
  json.Object([&] {
    json.Key("mzQC").Object([&] {
      json.Members({{"version", "1.0.0"}, {"creationDate", TimeNow()}});
      json.Key("runQualities").Array([&] {
        for (const AssessedRun& run : runs) {
          if (IsForMzqc(run)) PutRun(run, location, json);
        }
      });
      json.Key("controlledVocabularies").Array([&] {
        for (const auto& [name, uri, version] : kVocabularies)
          json.Object([&, n = name, u = uri, v = version] {
            json.Members({{"name", n}, {"uri", u}, {"version", v}});
          });
      });
    });
  });
  json.Finish();
}

}  // namespace zrml::tool
