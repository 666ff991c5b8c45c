#include <array>
#include <limits>

#include "common/platform/platform.h"
#include "tests/zrml/fake_servers.h"

namespace zrml {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Positions of the functions.
enum : int { kSurvey, kProduct, kEmpty, kBroken, kOdd, kLarge, kFunctionCount };

struct FakeFunction {
  std::wstring_view name;
  int kind;
  int scanType;
  int polarity;
  int scans;
};

// The odd function's name is: Odd, tab, name, line feed, "e with acute", G clef (beyond 16 bits), backslash,
// end quote.
constexpr std::array<FakeFunction, kFunctionCount> kFunctions = {{
    {L"Survey", kMsFunction, kNoMsMsScan, kPositivePolarity, 3},
    {L"Product", kMsMsFunction, kProductIonScan, kNegativePolarity, 2},
    {L"Empty", kMsFunction, kNoMsMsScan, kPositivePolarity, 0},
    {L"Broken", kMsFunction, kNoMsMsScan, kPositivePolarity, 2},
    {L"Odd\tname\n\"\u00E9\U0001D11E\\\"", kKind8, 9, kUnknownPolarity, 1},
    {L"Large", kMsFunction, kNoMsMsScan, kPositivePolarity, 1},
}};

constexpr int kLargePoints = 100'000;

bool IsOurs(int sample, int function) { return sample == 0 && function >= 0 && function < kFunctionCount; }

const FakeFunction& Function(int function) { return kFunctions[static_cast<std::size_t>(function)]; }

void Fill(CZRMassSpectrum& spectrum, const HostVector<double>& masses, const HostVector<double>& intensities,
          double minutes) {
  spectrum = CZRMassSpectrum();
  spectrum.AssignMasses(masses);
  spectrum.AssignIntensities(intensities);
  spectrum.SetSize(static_cast<int>(masses.size()));
  spectrum.SetStartTime(minutes);
  spectrum.SetEndTime(minutes + 0.25);
}

void FillSurvey(int scan, CZRMassSpectrum& spectrum) {
  if (scan == 0) Fill(spectrum, {100, 200.5, 300.0625}, {10, 0.5, 1'000'000}, 0.5);
  if (scan == 1) Fill(spectrum, {100.25}, {5}, 1);
  if (scan == 2) Fill(spectrum, {}, {}, 1.5);
  spectrum.SetCentroided(false);
  spectrum.SetTitle(HostString(scan == 0 ? L"first\tscan" : L""));
  spectrum.SetScanAuxValue(2.5);
}

void FillProduct(int scan, CZRMassSpectrum& spectrum) {
  Fill(spectrum, {50.5}, {7}, scan == 0 ? 1.125 : 2);
  spectrum.SetMSLevel(2);
  spectrum.SetPolarity(kNegativePolarity);
  spectrum.SetPrecursorMass(scan == 0 ? 445.12 : 0);
}

void FillOdd(CZRMassSpectrum& spectrum) {
  Fill(spectrum, {1e-7, 0.1, 123456789, 1e15, 1.7976931348623157e308},
       {kNan, kInfinity, -kInfinity, -0.0, 5e-324}, kNan);
  spectrum.SetFirstDriftBin(1);
  spectrum.SetLastDriftBin(200);
  spectrum.SetFirstDriftValue(0.5);
  spectrum.SetLastDriftValue(100);
}

void FillLarge(CZRMassSpectrum& spectrum) {
  HostVector<double> masses;
  HostVector<double> intensities;
  for (int i = 0; i < kLargePoints; ++i) {
    masses.push_back(100 + i / 128.0);
    intensities.push_back(i);
  }
  Fill(spectrum, masses, intensities, 0.1);
}

std::wstring SourceText(const std::wstring& folder) {
  const platform::File file = platform::File::Open(folder + L"\\fake_source.txt");
  std::array<char, 100> text{};
  const std::size_t size = file.ReadAt(0, std::as_writable_bytes(std::span(text)));
  return {text.begin(), text.begin() + static_cast<std::ptrdiff_t>(size)};
}

}  // namespace

bool FakeFolderServer::CanOpen(const std::wstring& path) {
  return platform::IsDirectory(path) && platform::IsFile(path + L"\\fake_source.txt");
}

bool FakeFolderServer::ValidateSource(const std::wstring& path) {
  return SourceText(path).starts_with(L"valid");
}
bool FakeFolderServer::Open(const std::wstring& path) {
  const std::wstring text = SourceText(path);
  constexpr std::wstring_view kSound = L"valid and sound";
  constexpr std::wstring_view kBut = L" but for ";
  isSound_ = text.starts_with(kSound);
  if (isSound_ && text.size() > kSound.size()) lacking_ = text.substr(kSound.size() + kBut.size());
  return isSound_ || text == L"valid";
}

bool FakeFolderServer::OpenFileInSet(const std::wstring& path, const std::wstring& file) {
  sampleName_ = L"File " + file + L" in " + path;
  return Open(path);
}

std::wstring FakeFolderServer::GetSampleName(int) { return sampleName_; }
int FakeFolderServer::GetFunctionCount(int sample) { return sample == 0 ? kFunctionCount : 0; }

std::wstring FakeFolderServer::GetFunctionName(int sample, int function) {
  return IsOurs(sample, function) ? std::wstring(Function(function).name) : std::wstring();
}

int FakeFolderServer::GetFunctionKind(int sample, int function) {
  return IsOurs(sample, function) ? Function(function).kind : 1;
}

int FakeFolderServer::GetMSMSScanType(int sample, int function) {
  return IsOurs(sample, function) ? Function(function).scanType : 0;
}

int FakeFolderServer::GetPolarity(int sample, int function) {
  return IsOurs(sample, function) ? Function(function).polarity : 0;
}

bool FakeFolderServer::HasMobility(int sample, int function) { return sample == 0 && function == kOdd; }
int FakeFolderServer::GetScanDimensionCount(int, int function) { return function == kOdd ? 2 : 1; }

int FakeFolderServer::GetScanCount(int sample, int function) {
  if (isSound_ && function == kBroken) return 0;
  return IsOurs(sample, function) ? Function(function).scans : 0;
}

int FakeFolderServer::GetMobilityBinCount(int, int function) { return function == kOdd ? 200 : 0; }

bool FakeFolderServer::GetFunctionMassRange(int sample, int function, double& low, double& high) {
  if (sample != 0 || function > kProduct) return false;
  low = function == kSurvey ? 50 : 0.1;
  high = function == kSurvey ? 1200.5 : 0.1 + 0.2;  // 0.30000000000000004
  return true;
}

bool FakeFolderServer::GetSpectrum(int sample, int function, int scan, CZRMassSpectrum& spectrum) {
  if (scan < 0 || scan >= GetScanCount(sample, function)) return false;
  switch (function) {
    case kSurvey:
      FillSurvey(scan, spectrum);
      return true;
    case kProduct:
      FillProduct(scan, spectrum);
      return true;
    case kBroken:
      Fill(spectrum, {10}, {1}, 3);
      return scan == 0;
    case kOdd:
      FillOdd(spectrum);
      return true;
    case kLarge:
      FillLarge(spectrum);
      return true;
    default:
      return false;
  }
}

bool FakeFolderServer::GetRetentionTimes(int sample, int function, HostVector<double>& times) {
  const bool isRead = CDataServerImpl::GetRetentionTimes(sample, function, times);
  if (lacking_ == L"times" && !times.empty()) times.pop_back();
  return isRead;
}

bool FakeFolderServer::GetTotalIonChromatogram(bool allowCompute, int sample, int function,
                                               CZRChromatogram& chromatogram) {
  const bool isRead = CDataServerImpl::GetTotalIonChromatogram(allowCompute, sample, function, chromatogram);
  const int points = static_cast<int>(chromatogram.Times().size());
  if (lacking_ == L"totals" && points > 0) chromatogram.SetSize(points - 1);
  return isRead;
}

bool FakeFolderServer::GetMobilitySpectrum(int, int function, int, int bin, CZRMassSpectrum& spectrum) {
  if (isSound_) {
    if (lacking_ == L"bins" && bin == 9) return false;
    spectrum = CZRMassSpectrum();
    if (bin == 4) Fill(spectrum, {50, 100}, {1, 2}, 1);
    if (bin == 9) Fill(spectrum, {100, 150}, {3, 4}, 1);
    return function == kOdd;
  }
  Fill(spectrum, {55.5}, {9}, 0.5);
  spectrum.SetFirstDriftBin(bin + 1);
  spectrum.SetLastDriftBin(bin + 1);
  spectrum.SetFirstDriftValue(bin + 1);
  spectrum.SetLastDriftValue(bin + 1);
  return function == kOdd && bin == 1;
}

bool FakeFolderServer::FindPrecursorScan(int, int function, int scan, int& precursorFunction,
                                         int& precursorScan) {
  if (function != kProduct || scan != 0) return false;
  precursorFunction = kSurvey;
  precursorScan = 1;
  return true;
}

int FakeFolderServer::GetTraceCount(int) { return 2; }
std::wstring FakeFolderServer::GetTraceName(int, int trace) {
  return trace == 0 ? L"Pressure" : L"UV\x1B[31m 254";
}

bool FakeFolderServer::GetTrace(int, int trace, CZRChromatogram& chromatogram) {
  if (!readTraces_.insert(trace).second && lacking_ == L"traces" && trace == 0) return false;
  chromatogram.SetSize(2);
  chromatogram.SetTime(0, 0.5);
  chromatogram.SetIntensity(0, 1.25);
  chromatogram.SetTime(1, 1);
  chromatogram.SetIntensity(1, 2);
  if (isSound_ && trace == 1) chromatogram.AssignIntensities({100, 0.1});
  return trace == 0 || isSound_;
}

bool FakeFolderServer::HasAbsorbanceData(int sample) { return sample == 0; }
int FakeFolderServer::GetAbsorbanceScanCount(int) { return 25; }

bool FakeFolderServer::GetAbsorbanceSpectrum(int, int scan, CZRAbsorbanceSpectrum& spectrum) {
  if (!readAbsorbance_.insert(scan).second && lacking_ == L"absorbance") return false;
  spectrum.SetSize(2);
  spectrum.SetWavelength(0, 210);
  spectrum.SetWavelength(1, 210.5);
  spectrum.SetAbsorbance(1, isSound_ ? scan : 0.75);
  spectrum.SetTime(isSound_ ? scan / 8.0 : 0.125);
  return scan == 0 || isSound_;
}

// "Operator" is listed twice, "Absent" has no value, "Mode" depends on the function.
bool FakeFolderServer::GetMetadataKeys(int, int, std::vector<std::wstring>& keys) {
  keys = {L"Operator", L"Comment", L"Operator", L"Absent", L"Mode", L"Tab\tkey"};
  return true;
}

bool FakeFolderServer::GetMetadataValue(int, int function, const std::wstring& key, std::wstring& value) {
  if (key == L"Absent") return false;
  value.clear();
  if (key == L"Operator") value = L"Zo\u00EB \"Z\"\r\nnext\u2028line";
  if (key == L"Mode") value = function == kProduct ? L"ES-" : L"ES+";
  if (key == L"Tab\tkey") value = L"\u00B5 \u0085 \u202E";
  return true;
}

}  // namespace zrml
