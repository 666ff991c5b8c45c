#include "tests/openlynx/literal_reader.h"

#include <cctype>
#include <cfloat>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "common/platform/platform.h"

namespace zrml {
namespace {

std::optional<std::string> ReadFile(const std::wstring& path) {
  std::ifstream file(std::filesystem::path(path), std::ios::binary);
  if (!file) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(file), {});
}

// The result of a stream in text mode on Windows.
std::string TextMode(const std::string& bytes) {
  std::string text;
  for (std::size_t i = 0; i < bytes.size() && bytes[i] != '\x1a'; ++i) {
    if (bytes[i] == '\r' && i + 1 < bytes.size() && bytes[i + 1] == '\n') continue;
    text += bytes[i];
  }
  return text;
}

bool BeginsWith(const char* line, const std::string& text) {
  return line[0] == text[0] && std::strncmp(line, text.c_str(), text.size()) == 0;  // no text is empty
}

std::string Trimmed(std::string text) {
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back())) != 0) text.pop_back();
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front())) != 0) text.erase(0, 1);
  return text;
}

std::wstring Numbered(const wchar_t* noun, int position) {
  return std::wstring(noun) + L" " + std::to_wstring(position + 1);
}

// Not std::atof, which in an old C library of Windows knows no infinity.
double Atof(const std::string& text) { return std::strtod(text.c_str(), nullptr); }

// "%lf %lf". By strtod, since C libraries differ in how scanf reads an incomplete number ("1e-").
bool ScanTwoNumbers(const char* line, double& first, double& second) {
  char* end = nullptr;
  first = std::strtod(line, &end);
  if (end == line) return false;
  const char* const rest = end;
  second = std::strtod(rest, &end);
  return end != rest;
}

bool IsIn(int position, std::size_t size) { return position >= 0 && position < static_cast<int>(size); }

}  // namespace

// fgets.
bool LiteralReader::Gets(char* buffer, int size) {
  int count = 0;
  while (count < size - 1 && at_ < file_->size()) {
    const char c = (*file_)[at_++];
    buffer[count++] = c;
    if (c == '\n') break;
  }
  buffer[count] = '\0';
  return count > 0;
}

bool LiteralReader::Open(const std::wstring& path) {
  file_ = ReadFile(path);
  return file_.has_value();
}

bool LiteralReader::Close() {
  file_.reset();
  samples_.clear();
  return true;
}

bool LiteralReader::ValidateSource(const std::wstring& path) {
  LiteralReader reader;
  if (!path.ends_with(L".rpt") || !reader.Open(path)) return false;
  reader.file_ = TextMode(*reader.file_);
  char line[999];
  for (int i = 0; i < 10 && reader.Gets(line, sizeof(line)); ++i) {
    if (std::strstr(line, "[SAMPLE]") != nullptr) return true;
  }
  return false;
}

int LiteralReader::GetFileSampleCount(const std::wstring& path) {
  LiteralReader reader;
  if (!reader.Open(path)) return 0;
  reader.file_ = TextMode(*reader.file_);
  int count = 0;
  char line[kBuffer];
  while (reader.Gets(line)) count += BeginsWith(line, "[SAMPLE]") ? 1 : 0;
  return count;
}

// Calls visit(position, line) for the inner lines that are not braces, until it returns false.
template <class Visit>
void LiteralReader::Walk(std::size_t position, Visit visit) {
  at_ = position;
  char line[kBuffer];
  int count = 0;
  int depth = 0;
  while (true) {
    const std::size_t lineAt = at_;
    if (!Gets(line)) return;
    if (line[0] == '{') {
      ++depth;
    } else if (line[0] == '}') {
      --depth;
    } else if (depth > 0 && !visit(lineAt, line)) {
      return;
    }
    ++count;
    if (count > 1 && depth <= 0) return;  // below 0 when the second line is a "}"
  }
}

void LiteralReader::ReadKeys(std::size_t position, KeyMap& keys) {
  at_ = position;
  char line[kBuffer];
  int count = 0;
  int depth = 0;
  while (Gets(line)) {
    if (line[0] == '}') {
      --depth;
    } else {
      if (line[0] == '{') ++depth;
      for (auto& [key, value] : keys) {
        if (!value.empty() || !BeginsWith(line, key)) continue;
        value = Trimmed(line + key.size());
        break;
      }
    }
    ++count;
    if (count > 1 && depth <= 0) return;  // below 0 when the second line is a "}"
    bool isComplete = true;
    for (const auto& [key, value] : keys) isComplete = isComplete && !value.empty();
    if (isComplete) return;
  }
}

std::string LiteralReader::Value(std::size_t position, const std::string& key) {
  KeyMap keys = {{key, ""}};
  ReadKeys(position, keys);
  return keys[key];
}

LiteralReader::Sample* LiteralReader::SampleAt(int sample) {
  if (!file_) return nullptr;
  if (samples_.empty()) {
    at_ = 0;
    char line[kBuffer];
    for (std::size_t position = 0; Gets(line); position = at_) {
      if (BeginsWith(line, "[SAMPLE]")) samples_.emplace_back().position = position;
    }
  }
  return IsIn(sample, samples_.size()) ? &samples_[static_cast<std::size_t>(sample)] : nullptr;
}

void LiteralReader::IndexSampleFunctions(Sample& sample) {
  std::vector<std::size_t> positions;
  Walk(sample.position, [&](std::size_t position, const char* line) {
    if (BeginsWith(line, "[FUNCTION]")) positions.push_back(position);
    return true;
  });
  for (const std::size_t function : positions) {
    KeyMap keys = {{"Description", ""}, {"Type", ""}};
    ReadKeys(function, keys);
    if (keys["Description"].find("ANALOG") != std::string::npos ||
        keys["Type"].find("DAD") != std::string::npos) {
      Walk(function, [&](std::size_t position, const char* line) {
        if (BeginsWith(line, "[CHROMATOGRAM]")) sample.analogTraces.push_back(position);
        return true;
      });
    } else {
      sample.functions.emplace_back().position = function;
    }
  }
  if (!sample.functions.empty()) sample.functionsIndexed = true;
}

LiteralReader::Sample* LiteralReader::SampleWithFunctions(int sample) {
  Sample* const record = SampleAt(sample);
  if (record != nullptr && !record->functionsIndexed) IndexSampleFunctions(*record);
  return record;
}

LiteralReader::Function* LiteralReader::FunctionAt(int sample, int function) {
  Sample* const record = SampleWithFunctions(sample);
  if (record == nullptr || !IsIn(function, record->functions.size())) return nullptr;
  return &record->functions[static_cast<std::size_t>(function)];
}

void LiteralReader::IndexFunctionBlocks(Function& function) {
  if (function.blocksIndexed) return;
  function.spectra.clear();
  function.chromatograms.clear();
  Walk(function.position, [&](std::size_t position, const char* line) {
    if (BeginsWith(line, "[SPECTRUM]")) function.spectra.push_back(position);
    if (BeginsWith(line, "[CHROMATOGRAM]")) function.chromatograms.push_back(position);
    return true;
  });
  function.blocksIndexed = !function.spectra.empty() || !function.chromatograms.empty();
}

LiteralReader::Function* LiteralReader::FunctionWithBlocks(int sample, int function) {
  Function* const record = FunctionAt(sample, function);
  if (record != nullptr && record->spectra.empty() && record->chromatograms.empty()) {
    IndexFunctionBlocks(*record);
  }
  return record;
}

int LiteralReader::GetSampleCount() {
  SampleAt(0);
  return file_ ? static_cast<int>(samples_.size()) : 0;
}

std::wstring LiteralReader::GetSampleName(int sample) {
  const Sample* const record = SampleAt(sample);
  if (record == nullptr) return {};
  const std::string name = Value(record->position, "FileName");
  return name.empty() ? Numbered(L"Sample", sample) : platform::FromCodePage(name);
}

int LiteralReader::GetFunctionCount(int sample) {
  Sample* const record = SampleWithFunctions(sample);
  if (record == nullptr) return 0;
  for (std::size_t i = 0; i < record->functions.size();) {
    IndexFunctionBlocks(record->functions[i]);
    if (record->functions[i].blocksIndexed) {
      ++i;
    } else {
      record->functions.erase(record->functions.begin() + static_cast<std::ptrdiff_t>(i));
    }
  }
  return static_cast<int>(record->functions.size());
}

std::wstring LiteralReader::GetFunctionName(int sample, int function) {
  const Function* const record = FunctionAt(sample, function);
  if (record == nullptr) return {};
  std::wstring name;
  for (const char* key : {"IonMode", "Type", "Description"}) {
    const std::wstring part = platform::FromCodePage(Value(record->position, key));
    if (!part.empty() && !name.empty()) name += L" ";
    name += part;
  }
  return name.empty() ? Numbered(L"Function", function) : name;
}

int LiteralReader::GetFunctionKind(int sample, int function) {
  const Function* const record = FunctionAt(sample, function);
  const std::string type = record == nullptr ? "" : Value(record->position, "Type");
  for (const char* part : {"MS/MS", "MSMS", "MS2", "MS3", "MS4", "MS5", "MS6"}) {
    if (type.find(part) != std::string::npos) return 4;
  }
  if (type.find("SIM") != std::string::npos || type.find("MRM") != std::string::npos) return 32;
  return type.find("MS") != std::string::npos ? 2 : 1;
}

int LiteralReader::GetPolarity(int sample, int function) {
  const Function* const record = FunctionAt(sample, function);
  const std::string mode = record == nullptr ? "" : Value(record->position, "IonMode");
  if (mode.find('+') != std::string::npos) return 1;
  return mode.find('-') != std::string::npos ? 2 : 0;
}

int LiteralReader::GetScanCount(int sample, int function) {
  const Function* const record = FunctionWithBlocks(sample, function);
  return record == nullptr ? 0 : static_cast<int>(record->spectra.size());
}

bool LiteralReader::Series(int sample, int function, const std::string& key, HostVector<double>& times,
                           HostVector<double>& values) {
  const Function* const record = FunctionWithBlocks(sample, function);
  if (record == nullptr) return false;
  times.clear();
  values.clear();
  for (const std::size_t position : record->spectra) {
    times.push_back(Atof(Value(position, "Time")));
    values.push_back(Atof(Value(position, key)));
  }
  return true;
}

bool LiteralReader::GetBasePeakChromatogram(bool allowCompute, int sample, int function, CZRChromatogram& c) {
  HostVector<double> times;
  HostVector<double> values;
  if (!Series(sample, function, "BPI", times, values)) {
    return GetMassRangeBasePeakChromatogram(-DBL_MAX, DBL_MAX, allowCompute, sample, function, c);
  }
  c.SetSize(static_cast<int>(times.size()));
  c.AssignTimes(times);
  c.AssignIntensities(values);
  return true;
}

bool LiteralReader::GetTotalIonChromatogram(bool allowCompute, int sample, int function, CZRChromatogram& c) {
  HostVector<double> times;
  HostVector<double> values;
  if (!Series(sample, function, "TIC", times, values)) {
    return GetMassRangeChromatogram(-DBL_MAX, DBL_MAX, allowCompute, sample, function, c);
  }
  c.SetSize(static_cast<int>(times.size()));
  c.AssignTimes(times);
  c.AssignIntensities(values);
  return true;
}

bool LiteralReader::GetRetentionTimes(int sample, int function, HostVector<double>& times) {
  HostVector<double> values;
  return Series(sample, function, "TIC", times, values);
}

bool LiteralReader::ReadList(std::size_t position, const char* marker, double scale, bool positiveOnly,
                             HostVector<double>& x, HostVector<double>& y) {
  bool isFound = false;
  Walk(position, [&](std::size_t, const char* line) {
    isFound = BeginsWith(line, marker);
    return !isFound;
  });
  char line[kBuffer];
  while (isFound && Gets(line) && line[0] != '}') {
    if (line[0] == ';') continue;
    double first = 0;
    double second = 0;
    if (!ScanTwoNumbers(line, first, second)) continue;
    if (positiveOnly && !(first > 0 && second > 0)) continue;
    x.push_back(first);
    y.push_back(second * scale / 100.0);
  }
  return !x.empty();
}

bool LiteralReader::GetSpectrum(int sample, int function, int scan, CZRMassSpectrum& spectrum) {
  const Function* const record = FunctionWithBlocks(sample, function);
  if (record == nullptr || !IsIn(scan, record->spectra.size())) return false;
  const std::size_t position = record->spectra[static_cast<std::size_t>(scan)];
  const double minutes = Atof(Value(position, "Time"));
  double bpi = Atof(Value(position, "BPI"));
  if (bpi == 0) bpi = 100.0;
  HostVector<double> masses;
  HostVector<double> intensities;
  if (!ReadList(position, "[MS]", bpi, true, masses, intensities)) return false;
  spectrum.SetSize(static_cast<int>(masses.size()));
  spectrum.AssignMasses(masses);
  spectrum.AssignIntensities(intensities);
  spectrum.SetStartTime(minutes);
  spectrum.SetEndTime(minutes);
  spectrum.SetFirstScan(static_cast<std::int16_t>(scan + 1));
  spectrum.SetLastScan(static_cast<std::int16_t>(scan + 1));
  spectrum.SetCentroided(Value(position, "Continuum") == "FALSE");
  const int kind = GetFunctionKind(sample, function);
  spectrum.SetScanType(kind);
  spectrum.SetMSLevel(kind == 4 ? 2 : 1);
  spectrum.SetPolarity(GetPolarity(sample, function) == 2 ? 2 : 1);
  spectrum.InvalidateStatistics();
  return true;
}

bool LiteralReader::ReadTraceBlock(std::size_t position, CZRChromatogram& c) {
  double scale = Atof(Value(position, "MaxIntensity"));
  if (scale == 0) scale = 100.0;
  HostVector<double> times;
  HostVector<double> intensities;
  if (!ReadList(position, "[TRACE]", scale, false, times, intensities)) return false;
  c.SetName(platform::FromCodePage(Value(position, "Description")));
  c.SetSize(static_cast<int>(times.size()));
  c.AssignTimes(times);
  c.AssignIntensities(intensities);
  return true;
}

int LiteralReader::GetTraceCount(int sample) {
  const Sample* const record = SampleWithFunctions(sample);
  return record == nullptr ? 0 : static_cast<int>(record->analogTraces.size());
}

std::wstring LiteralReader::GetTraceName(int sample, int trace) {
  const Sample* const record = SampleWithFunctions(sample);
  if (record == nullptr || !IsIn(trace, record->analogTraces.size())) return {};
  const std::string name = Value(record->analogTraces[static_cast<std::size_t>(trace)], "Description");
  return name.empty() ? Numbered(L"Analog Trace", trace) : platform::FromCodePage(name);
}

bool LiteralReader::GetTrace(int sample, int trace, CZRChromatogram& c) {
  const Sample* const record = SampleWithFunctions(sample);
  return record != nullptr && IsIn(trace, record->analogTraces.size()) &&
         ReadTraceBlock(record->analogTraces[static_cast<std::size_t>(trace)], c);
}

int LiteralReader::GetFunctionTraceCount(int sample, int function) {
  const Function* const record = FunctionWithBlocks(sample, function);
  return record == nullptr ? 0 : static_cast<int>(record->chromatograms.size());
}

std::wstring LiteralReader::GetFunctionTraceName(int sample, int function, int trace) {
  const Function* const record = FunctionWithBlocks(sample, function);
  if (record == nullptr || !IsIn(trace, record->chromatograms.size())) return {};
  const std::string name = Value(record->chromatograms[static_cast<std::size_t>(trace)], "Description");
  return name.empty() ? Numbered(L"Function Trace", trace) : platform::FromCodePage(name);
}

bool LiteralReader::GetFunctionTrace(int sample, int function, int trace, CZRChromatogram& c) {
  const Function* const record = FunctionWithBlocks(sample, function);
  if (record == nullptr) return false;
  if (!IsIn(trace, record->chromatograms.size())) return true;
  return ReadTraceBlock(record->chromatograms[static_cast<std::size_t>(trace)], c);
}

bool LiteralReader::GetMetadataValue(int sample, int function, const std::wstring& key, std::wstring& value) {
  value.clear();
  const Sample* const record = SampleAt(sample);
  if (record == nullptr) return false;
  const auto text = [&](const char* name) { return platform::FromCodePage(Value(record->position, name)); };
  if (key == L"ProviderName") return value = GetProviderName(), true;
  if (key == L"OperatorName") return value = text("UserName"), true;
  if (key == L"SampleName") return value = text("SampleID"), true;
  if (key == L"AnalysisDateTime") return value = text("Date") + L"T" + text("Time") + L"+00:00", true;
  if (key == L"InstrumentDescription") return value = text("Instrument"), true;
  if (key != L"CompleteFunctionBlock") return false;
  const Function* const block = FunctionAt(sample, function);
  if (block == nullptr) return false;
  std::string whole;
  at_ = block->position;
  char line[kBuffer];
  int count = 0;
  int depth = 0;
  while (Gets(line)) {
    whole += line;
    if (line[0] == '{') ++depth;
    if (line[0] == '}') --depth;
    ++count;
    if (count > 1 && depth <= 0) break;
  }
  value = platform::FromCodePage(whole);
  return true;
}

bool LiteralReader::GetMetadataKeys(int sample, int function, std::vector<std::wstring>& keys) {
  if (FunctionAt(sample, function) == nullptr) return false;
  keys = {L"ProviderName",     L"OperatorName",          L"SampleName",
          L"AnalysisDateTime", L"InstrumentDescription", L"CompleteFunctionBlock"};
  return true;
}

}  // namespace zrml
