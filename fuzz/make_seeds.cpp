// make_seeds FOLDER: writes seeds for every fuzzer, made with the test writers, into FOLDER/<fuzzer>/.
#include <bit>
#include <filesystem>
#include <functional>
#include <map>
#include <string>

#include "fuzz/packed_directory.h"
#include "tests/support/raw_directory_builder.h"

namespace {

using namespace zrml;

constexpr unsigned kLayouts = 15;
constexpr std::size_t kLargestPoint = 12;

using Seeds = std::map<std::string, FileBytes>;

FileBytes Noise(std::size_t count) {
  FileBytes bytes(count);
  std::uint32_t state = 1;
  for (std::byte& byte : bytes) byte = static_cast<std::byte>((state = state * 1664525u + 1013904223u) >> 24);
  return bytes;
}

ScanFiles NoisyScan(float time, std::uint32_t points) {
  ScanFiles scan;
  scan.index.pointCount = points;
  scan.index.retentionTime = time;
  scan.data = Noise(points * kLargestPoint);
  return scan;
}

FunctionFiles NoisyFunction(unsigned format, unsigned type = 18) {
  FunctionFiles function;
  function.record.type = type;
  function.record.dataFormat = format;
  for (std::size_t i = 0; i < function.record.startMasses.size(); ++i) {
    function.record.startMasses[i] = 100 + static_cast<float>(i);
    function.record.endMasses[i] = 200 + static_cast<float>(i);
  }
  function.scans = {NoisyScan(0.5F, 3), NoisyScan(0.25F, 1), NoisyScan(1, 4)};
  return function;
}

std::vector<std::string> CalibratedHeader() {
  return {HeaderLine("Version", "01.00"),
          HeaderLine("Acquired Name", "acquisition"),
          HeaderLine("Acquired Date", "14-Nov-2026"),
          HeaderLine("Acquired Time", "09:15:00"),
          HeaderLine("Instrument", "QTOF"),
          HeaderLine("Sample Description", "eight \xb5g"),
          CalLine("MS1 Static", {0.01, 0.999, 1.5e-6}, Domain::kRoot),
          CalLine("MS2 Dynamic", {-0.5, 1.001}),
          CalLine("Function 2", {0.1, 0.9, 1e-5}),
          CalLine("Modification 1", {0.2, 1.1}),
          CalLine("Segment 1", {0.3, 1.2}, Domain::kRoot),
          "$$ Cal Temperature: 21.5"};
}

std::vector<std::string> Labels() {
  return {"Created by MassLynx v4.2", FunctionHeading(1, "REFERENCE"),
          FunctionHeading(2, "A label of its own"), "Ramp High Energy from 20.000 to 30.000"};
}

Seeds RawDirectories() {
  const auto pack = [](const RawDirectoryBuilder& raw) { return fuzz::PackDirectory(raw.Files()); };
  Seeds seeds;
  for (unsigned format = 0; format < kLayouts; ++format) {
    RawDirectoryBuilder raw;
    raw.functions = {NoisyFunction(format)};
    seeds["layout" + std::to_string(format)] = pack(raw);
  }
  RawDirectoryBuilder raw;
  raw.header = CalibratedHeader();
  raw.labels = Labels();
  raw.functions = {NoisyFunction(8), NoisyFunction(9, 16), NoisyFunction(1, 12)};
  for (FunctionFiles& function : raw.functions) {
    function.statistics = StatisticsLayout();
    for (ScanFiles& scan : function.scans) scan.statistics.temperatureValid = 1;
  }
  raw.functions[1].indexRecordSize = masslynx::scan_index_format::kLongRecordSize;
  raw.processed[1] = NoisyFunction(8);
  raw.processed[2] = NoisyFunction(8);
  raw.history = {{.processNumber = 1, .processCode = 3},
                 {.processNumber = 2, .derivedFrom = 1, .processCode = 5}};
  raw.chroms = {{"Pressure", {{0.5F, 1}, {1, 2}}}, {"", {{0.5F, 3}}}};
  seeds["everything"] = pack(raw);
  raw.chroms.clear();
  raw.analogNames = {"Channel A", "Channel \xb5"};
  raw.analogs = {{0.5F, {8, 16}}, {1, {24, 32}}, {0.75F, {40, 48}}};
  std::map<std::string, FileBytes> files = raw.Files();
  files["_FUNC001.CDT"] = HexToBytes("01 02 01 03 01 01 04 01 09 0A 0B 0C 01 01 01 02 03 FF 09 0A 0B 02");
  files["_FUNC002.CDT"] = HexToBytes("05 01 07 01 03");
  seeds["analogs_and_mobility"] = fuzz::PackDirectory(files);
  return seeds;
}

Seeds HeaderTexts() {
  return {{"calibrated", WriteLines(CalibratedHeader())},
          {"calibrated_lf", WriteLines(CalibratedHeader(), LineEnd::kLf, LastLine::kUnended)},
          {"labels", WriteLines(Labels())},
          {"long_line",
           WriteLines({HeaderLine("Instrument", std::string(10100, 'i')), "$$ Cal MS1 Static: 1,2"})}};
}

FileBytes ScanData(unsigned format, std::uint8_t shape, std::uint16_t points) {
  ByteWriter scan;
  scan.U8(static_cast<std::uint8_t>(format)).U8(shape).U16(points);
  if ((shape & 0x20) != 0) scan.U32(0).F32(30).F32(12.5F).F32(20);
  if ((shape & 0x40) != 0) {
    for (int polynomial = 0; polynomial < 3; ++polynomial)
      scan.U8(polynomial == 0).U16(2).F32(0.5F).F32(0.99F);
  }
  for (int channel = 0; channel < 32 && (shape & 0x80) == 0; ++channel)
    scan.U8(static_cast<std::uint8_t>(channel)).U8(static_cast<std::uint8_t>(channel));
  return scan.Append(Noise(points * kLargestPoint)).Take();
}

// Two sub-scans of three points each, starting at the same mass.
FileBytes RepeatedScan() {
  ByteWriter scan;
  scan.U8(12).U8(0x80).U16(6);
  const StoredPoint12 low{
      .massExponent = 7, .massMantissa = 1u << 25, .intensity = {.magnitude = 64, .exponent = 20}};
  std::vector<StoredPoint12> points(3, low);
  points[1].massMantissa += 1u << 20;
  points[2].massMantissa += 1u << 21;
  for (int repeat = 0; repeat < 2; ++repeat) scan.Append(EncodePoints(points));
  return scan.Take();
}

Seeds ScanDatas() {
  Seeds seeds;
  for (unsigned format = 0; format < kLayouts; ++format) {
    const std::string name = "layout" + std::to_string(format);
    seeds[name] = ScanData(format, 0, 9);
    seeds[name + "_calibrated"] = ScanData(format, 0x6D, 5);
  }
  seeds["repeated_scan"] = RepeatedScan();
  return seeds;
}

Seeds Reports() {
  const std::vector<std::string> spectrum = {"[SPECTRUM]",      "{",    "Time 1.5", "BPI 200",  "TIC 400",
                                             "Continuum FALSE", "[MS]", "{",        "100.5 50", ";comment",
                                             "200.25 100",      "}",    "}"};
  const std::vector<std::string> chromatogram = {"[CHROMATOGRAM]",
                                                 "{",
                                                 "Description UV 254 nm",
                                                 "MaxIntensity 50",
                                                 "[TRACE]",
                                                 "{",
                                                 "0.5 10",
                                                 "1.0 100",
                                                 "}",
                                                 "}"};
  std::vector<std::string> report = {"[SAMPLE]",        "{",
                                     "FileName A1",     "UserName M",
                                     "SampleID S1",     "Date 14-Nov-2026",
                                     "Time 09:15:00",   "Instrument Q",
                                     "[FUNCTION]",      "{",
                                     "IonMode ES+",     "Type MS/MS",
                                     "Description Scan"};
  report.insert(report.end(), spectrum.begin(), spectrum.end());
  report.insert(report.end(), spectrum.begin(), spectrum.end());
  report.insert(report.end(), chromatogram.begin(), chromatogram.end());
  report.insert(report.end(), {"}", "[FUNCTION]", "{", "Description ANALOG"});
  report.insert(report.end(), chromatogram.begin(), chromatogram.end());
  report.insert(report.end(), {"}", "}", "[SAMPLE]", "{", "}"});
  std::vector<std::string> nested = {"[SAMPLE]", "{"};
  for (int i = 0; i < 4; ++i) {
    nested.insert(nested.end(), {"[FUNCTION]", "{", i == 0 ? "Type MS/MS" : "Type MS"});
    nested.insert(nested.end(), spectrum.begin(), spectrum.end());
    nested.insert(nested.end(), chromatogram.begin(), chromatogram.end());
  }
  return {{"crlf", WriteLines(report)},
          {"lf", WriteLines(report, LineEnd::kLf, LastLine::kUnended)},
          {"nested", WriteLines(nested)}};
}

// Each after questions in a different order.
Seeds WithQuestions(Seeds seeds) {
  for (auto& [name, bytes] : seeds) {
    const FileBytes questions = Noise(16 + 4 * name.size());
    bytes =
        ByteWriter().U8(static_cast<std::uint8_t>(questions.size())).Append(questions).Append(bytes).Take();
  }
  return seeds;
}

Seeds RawSources() { return WithQuestions(RawDirectories()); }
Seeds ReportSources() { return WithQuestions(Reports()); }

// Each kind of files behind calls of its own, which begin with the opening of it.
Seeds LibraryCalls() {
  Seeds calls;
  const auto add = [&](std::uint8_t isReport, const Seeds& files) {
    for (const auto& [name, bytes] : files) {
      const FileBytes noise = Noise(60 + 4 * name.size());
      calls[(isReport != 0 ? "report_" : "raw_") + name] =
          ByteWriter()
              .U8(isReport)
              .U8(static_cast<std::uint8_t>(noise.size() + 1))
              .U8(isReport)
              .Append(noise)
              .Append(bytes)
              .Take();
    }
  };
  add(0, RawDirectories());
  add(1, Reports());
  return calls;
}

// Operations on the containers are bytes that are valid in any order.
Seeds Operations() { return {{"few", Noise(40)}, {"many", Noise(2000)}}; }

// A count, a law, a step, the kind, then what the points need, twice.
Seeds Sums() {
  Seeds seeds;
  for (std::uint16_t law = 0; law < 5; ++law) {
    for (std::uint8_t centroided = 0; centroided < 2; ++centroided) {
      ByteWriter sum;
      for (int spectrum = 0; spectrum < 2; ++spectrum) {
        constexpr std::uint16_t kPoints = 40;
        sum.U16(kPoints)
            .U16(law)
            .U8(32)
            .U8(centroided)
            .Append(Noise(kPoints * (law == 0   ? 16
                                     : law == 4 ? 2
                                                : 1)))
            .U16(0);
      }
      seeds["law" + std::to_string(law) + (centroided != 0 ? "_centroids" : "_profile")] = sum.Take();
    }
  }
  return seeds;
}

// One of each kind, alone and after one another.
Seeds Questions() {
  const std::map<std::string, std::string> questions = {
      {"run", "run"},
      {"sample", "sample?sample=0"},
      {"findings", "findings?points=1"},
      {"total", "chromatogram?from=1&function=0&kind=tic&sample=0&to=3"},
      {"ion", "chromatogram?function=0&high=101&kind=sum&limit=2&low=100&sample=0"},
      {"trace", "trace?from=0&sample=0&to=1&trace=0"},
      {"peaks", "peaks?function=1&sample=0"},
      {"spectrum", "spectrum?centroids=1&function=0&sample=0&scan=3"},
      {"average", "average?backFrom=2&backTo=4&from=1&function=0&sample=0&to=2"},
      {"map", "map?columns=9&from=1&function=0&high=400&low=50&rows=9&sample=0&to=2"},
      {"absorbance", "absorbance?sample=0&scan=1"},
      {"absorbance_map", "absorbance-map?columns=9&rows=9&sample=0"},
      {"absorbance_largest", "absorbance-largest?sample=0"},
      {"wavelength", "wavelength?high=400&low=100&sample=0"}};
  Seeds seeds;
  std::vector<std::string> all;
  for (const auto& [name, question] : questions) {
    seeds[name] = WriteLines({question}, LineEnd::kLf, LastLine::kUnended);
    all.push_back(question);
  }
  seeds["all"] = WriteLines(all, LineEnd::kLf);
  return seeds;
}

const std::map<std::string, std::function<Seeds()>> kMakers = {
    {"header_text", HeaderTexts},
    {"host_types", Operations},
    {"library_calls", LibraryCalls},
    {"question", Questions},
    {"raw_directory", RawDirectories},
    {"raw_directory_source", RawSources},
    {"report", Reports},
    {"report_source", ReportSources},
    {"scan_data", ScanDatas},
    {"spectrum_container", Operations},
    {"spectrum_sum", Sums},
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  for (const auto& [fuzzer, make] : kMakers) {
    const std::filesystem::path folder = std::filesystem::path(argv[1]) / fuzzer;
    std::filesystem::create_directories(folder);
    for (const auto& [name, bytes] : make()) WriteFileBytes(folder / name, bytes);
  }
}
