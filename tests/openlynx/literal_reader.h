// A second reader of reports for comparison: slow and literal, one line buffer at a time over the whole file
// in memory, with the C library's functions. Shares no reading code with the provider.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "plugin/data_server.h"

namespace zrml {

class LiteralReader : public CDataServerImpl {
 public:
  std::wstring GetProviderName() override { return L"ZROpenLynxRptProvider"; }
  std::wstring GetProviderGuid() override { return L""; }
  bool Open(const std::wstring& path) override;
  bool Close() override;
  bool ValidateSource(const std::wstring& path) override;
  int GetSampleCount() override;
  int GetFileSampleCount(const std::wstring& path) override;
  std::wstring GetSampleName(int sample) override;
  int GetFunctionCount(int sample) override;
  std::wstring GetFunctionName(int sample, int function) override;
  int GetFunctionKind(int sample, int function) override;
  int GetPolarity(int sample, int function) override;
  int GetScanCount(int sample, int function) override;
  bool GetBasePeakChromatogram(bool allowCompute, int sample, int function, CZRChromatogram& c) override;
  bool GetTotalIonChromatogram(bool allowCompute, int sample, int function, CZRChromatogram& c) override;
  bool GetRetentionTimes(int sample, int function, HostVector<double>& times) override;
  bool GetSpectrum(int sample, int function, int scan, CZRMassSpectrum& spectrum) override;
  int GetTraceCount(int sample) override;
  std::wstring GetTraceName(int sample, int trace) override;
  bool GetTrace(int sample, int trace, CZRChromatogram& c) override;
  int GetFunctionTraceCount(int sample, int function) override;
  std::wstring GetFunctionTraceName(int sample, int function, int trace) override;
  bool GetFunctionTrace(int sample, int function, int trace, CZRChromatogram& c) override;
  bool GetMetadataValue(int sample, int function, const std::wstring& key, std::wstring& value) override;
  bool GetMetadataKeys(int sample, int function, std::vector<std::wstring>& keys) override;

 private:
  static constexpr int kBuffer = 1000;
  using KeyMap = std::map<std::string, std::string>;

  struct Function {
    std::size_t position = 0;
    bool blocksIndexed = false;
    std::vector<std::size_t> spectra;
    std::vector<std::size_t> chromatograms;
  };

  struct Sample {
    std::size_t position = 0;
    bool functionsIndexed = false;
    std::vector<Function> functions;
    std::vector<std::size_t> analogTraces;
  };

  bool Gets(char* buffer, int size = kBuffer);
  template <class Visit>
  void Walk(std::size_t position, Visit visit);
  void ReadKeys(std::size_t position, KeyMap& keys);
  std::string Value(std::size_t position, const std::string& key);
  bool ReadList(std::size_t position, const char* marker, double scale, bool positiveOnly,
                HostVector<double>& x, HostVector<double>& y);
  bool ReadTraceBlock(std::size_t position, CZRChromatogram& c);

  Sample* SampleAt(int sample);
  Sample* SampleWithFunctions(int sample);
  Function* FunctionAt(int sample, int function);
  Function* FunctionWithBlocks(int sample, int function);
  void IndexSampleFunctions(Sample& sample);
  void IndexFunctionBlocks(Function& function);
  bool Series(int sample, int function, const std::string& key, HostVector<double>& times,
              HostVector<double>& values);

  std::optional<std::string> file_;
  std::size_t at_ = 0;
  std::vector<Sample> samples_;
};

}  // namespace zrml
