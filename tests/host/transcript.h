// Asks a data server everything and records every answer, as the same text on every platform and compiler:
// transcripts of different hosts can be compared line by line. Free-standing: no header of a standard
// library.
//
// `Api` names the host's types (Server, String, Strings, Doubles, Spectra, Spectrum, Chromatogram,
// Absorbance) and gives Text(const wchar_t*), Write(const char*, size) and views of its containers.
#pragma once

namespace host_test {

using Word = unsigned long long;

template <class Api>
class Transcript {
 public:
  using Server = typename Api::Server;
  using String = typename Api::String;
  using Doubles = typename Api::Doubles;

  explicit Transcript(Server& server) : server_(server) {}

  /// `source` is relative, so its name is the same everywhere.
  void Run(const wchar_t* source) {
    Provider();
    Source(source);
    Line("Open", server_.Open(Api::Text(source)));
    Everything();
    Line("Close", server_.Close());
    Everything();
    const String path = Api::Text(source);
    const String file = Api::Text(L"_FUNC002.DAT");
    Line("OpenFileInSet", server_.OpenFileInSet(path, file));
    Everything();
    Line("Open missing", server_.Open(Api::Text(L"no-such-directory-under-the-sun")));
    Line("Close", server_.Close());
  }

 private:
  void Provider() {
    Line("GetProviderName", server_.GetProviderName());
    Line("GetProviderGuid", server_.GetProviderGuid());
    Line("GetFileFilter", server_.GetFileFilter());
    Line("IsReportSource", server_.IsReportSource());
  }

  void Source(const wchar_t* directory) {
    const wchar_t* const paths[] = {directory, L"", L"no-such-directory-under-the-sun"};
    for (const wchar_t* path : paths) {
      const String text = Api::Text(path);
      Line("CanOpen", server_.CanOpen(text));
      Line("ValidateSource", server_.ValidateSource(text));
      Line("GetFileSampleCount", server_.GetFileSampleCount(text));
    }
  }

  void Everything() {
    const int samples = server_.GetSampleCount();
    Line("GetSampleCount", samples);
    for (int sample = -1; sample <= 1 || sample <= samples; ++sample) Sample(sample);
  }

  void Sample(int sample) {
    Line("sample", sample);
    Line("GetSampleName", server_.GetSampleName(sample));
    const int functions = server_.GetFunctionCount(sample);
    Line("GetFunctionCount", functions);
    for (int function = -1; function <= functions; ++function) Function(sample, function);
    const int traces = server_.GetTraceCount(sample);
    Line("GetTraceCount", traces);
    for (int trace = -1; trace <= traces; ++trace) {
      Line("GetTraceName", server_.GetTraceName(sample, trace));
      typename Api::Chromatogram chromatogram;
      Line("GetTrace", server_.GetTrace(sample, trace, chromatogram));
      Show(chromatogram);
    }
    Absorbance(sample);
  }

  void Absorbance(int sample) {
    Line("HasAbsorbanceData", server_.HasAbsorbanceData(sample));
    const int scans = server_.GetAbsorbanceScanCount(sample);
    Line("GetAbsorbanceScanCount", scans);
    const int asked[] = {-1, 0, scans / 2, scans - 1, scans};
    for (int scan : asked) {
      typename Api::Absorbance spectrum;
      Line("GetAbsorbanceSpectrum", server_.GetAbsorbanceSpectrum(sample, scan, spectrum));
      Numbers(Api::Wavelengths(spectrum));
      Numbers(Api::Absorbances(spectrum));
      Line(" time", Api::StartTime(spectrum));
      Line(" scan", Api::FirstScan(spectrum));
    }
  }

  void Function(int sample, int function) {
    Line("function", function);
    Line("GetFunctionName", server_.GetFunctionName(sample, function));
    Line("GetFunctionKind", server_.GetFunctionKind(sample, function));
    Line("GetMSMSScanType", server_.GetMSMSScanType(sample, function));
    Line("GetPolarity", server_.GetPolarity(sample, function));
    Line("GetMSLevel", server_.GetMSLevel(sample, function));
    Line("GetDimensionCount", server_.GetDimensionCount(sample, function));
    Line("IsCentroided", server_.IsCentroided(sample, function));
    Line("HasMobility", server_.HasMobility(sample, function));
    Line("GetScanDimensionCount", server_.GetScanDimensionCount(sample, function));
    Line("GetMobilityBinCount", server_.GetMobilityBinCount(sample, function));
    double low = -1;
    double high = -2;
    Line("GetFunctionMassRange", server_.GetFunctionMassRange(sample, function, low, high));
    Range(low, high);
    Doubles times;
    Line("GetRetentionTimes", server_.GetRetentionTimes(sample, function, times));
    Numbers(times);
    Chromatograms(sample, function);
    Metadata(sample, function);
    FunctionTraces(sample, function);
    const int scans = server_.GetScanCount(sample, function);
    Line("GetScanCount", scans);
    constexpr int kFirstScans = 9;
    for (int scan = -1; scan < scans && scan < kFirstScans; ++scan) Scan(sample, function, scan);
    const int later[] = {scans / 2, scans - 1, scans};
    for (int scan : later) Scan(sample, function, scan);
  }

  // With and without leave to compute, and over a range that leaves some scans outside.
  void Chromatograms(int sample, int function) {
    const bool answers[] = {false, true};
    for (bool compute : answers) {
      typename Api::Chromatogram chromatogram;  // kept from call to call, as hosts do
      Line("GetTotalIonChromatogram",
           server_.GetTotalIonChromatogram(compute, sample, function, chromatogram));
      Show(chromatogram);
      Line("GetMassRangeBasePeakChromatogram",
           server_.GetMassRangeBasePeakChromatogram(300.25, 420.5, compute, sample, function, chromatogram));
      Show(chromatogram);
      Line("GetMassRangeChromatogram",
           server_.GetMassRangeChromatogram(300.25, 420.5, compute, sample, function, chromatogram));
      Show(chromatogram);
      Line("GetBasePeakChromatogram",
           server_.GetBasePeakChromatogram(compute, sample, function, chromatogram));
      Show(chromatogram);
    }
  }

  void Metadata(int sample, int function) {
    typename Api::Strings keys;
    Line("GetMetadataKeys", server_.GetMetadataKeys(sample, function, keys));
    for (const String& key : keys) {
      Line(" key", key);
      Value(sample, function, key);
    }
    Value(sample, function, Api::Text(L"a key that is longer than a short string and known to nobody"));
  }

  void Value(int sample, int function, const String& key) {
    typename Api::OutString value = Api::Text(L"what was there before");
    Line("GetMetadataValue", server_.GetMetadataValue(sample, function, key, value));
    Line(" value", value);
  }

  void FunctionTraces(int sample, int function) {
    const int traces = server_.GetFunctionTraceCount(sample, function);
    Line("GetFunctionTraceCount", traces);
    for (int trace = -1; trace <= 0 || trace <= traces; ++trace) {
      Line("GetFunctionTraceName", server_.GetFunctionTraceName(sample, function, trace));
      typename Api::Chromatogram chromatogram;
      Line("GetFunctionTrace", server_.GetFunctionTrace(sample, function, trace, chromatogram));
      Show(chromatogram);
    }
  }

  void Scan(int sample, int function, int scan) {
    Line("scan", scan);
    Line("GetSpectrum", server_.GetSpectrum(sample, function, scan, kept_));
    Show(kept_);
    typename Api::Spectrum fresh;
    Line("GetSpectrum", server_.GetSpectrum(sample, function, scan, fresh));
    Show(fresh);
    double low = -1;
    double high = -2;
    Line("GetScanRetentionTime", server_.GetScanRetentionTime(sample, function, scan, low));
    Range(low, high);
    Line("GetScanMassRange", server_.GetScanMassRange(sample, function, scan, low, high));
    Range(low, high);
    Line("GetScanMobilityRange", server_.GetScanMobilityRange(sample, function, scan, low, high));
    Range(low, high);
    Line("GetScanIntensityRange", server_.GetScanIntensityRange(sample, function, scan, low, high));
    Range(low, high);
    Doubles axis;
    Line("GetMobilityAxis", server_.GetMobilityAxis(sample, function, scan, axis));
    Numbers(axis);
    Line("GetMobilitySpectrum", server_.GetMobilitySpectrum(sample, function, scan, 0, fresh));
    Show(fresh);
    typename Api::Spectra spectra;
    const int lasts[] = {-1, 0, 3};
    for (int last : lasts) {
      Line("GetMobilitySpectra", server_.GetMobilitySpectra(sample, function, scan, 0, last, spectra));
      for (auto& spectrum : spectra) Show(spectrum);
    }
    int precursorFunction = -3;
    int precursorScan = -4;
    Line("FindPrecursorScan",
         server_.FindPrecursorScan(sample, function, scan, precursorFunction, precursorScan));
    Line(" function", precursorFunction);
    Line(" scan", precursorScan);
  }

  void Show(const typename Api::Chromatogram& chromatogram) {
    Line(" name", Api::Name(chromatogram));
    Numbers(Api::Times(chromatogram));
    Numbers(Api::Intensities(chromatogram));
  }

  void Show(const typename Api::Spectrum& spectrum) {
    Numbers(Api::Masses(spectrum));
    Numbers(Api::Intensities(spectrum));
    Api::ForEachAttribute(spectrum, [this](const char* name, const auto& value) { this->Line(name, value); });
  }

  void Range(double low, double high) {
    Line(" low", low);
    Line(" high", high);
  }

  // The count, a few of the values, and a hash over the bits of all.
  template <class Values>
  void Numbers(const Values& values) {
    Word hash = 0xcbf29ce484222325;
    Word count = 0;
    for (const double value : values) {
      hash = (hash ^ Bits(value)) * 0x100000001b3;
      if (count < 3) Line("  value", value);
      ++count;
    }
    Put("  count");
    PutHex(count);
    Put(" hash");
    PutHex(hash);
    Put("\n");
  }

  void Line(const char* name, bool value) { LineOf(name, value ? "true" : "false"); }
  void Line(const char* name, int value) {
    Put(name);
    PutHex(static_cast<unsigned>(value));
    Put("\n");
  }
  void Line(const char* name, double value) {
    Put(name);
    PutHex(Bits(value));
    Put("\n");
  }
  void Line(const char* name, const char* value) { LineOf(name, value); }

  // ASCII characters unchanged, others by code.
  template <class Text>
  void Line(const char* name, const Text& text) {
    Put(name);
    Put(" \"");
    for (decltype(text.size()) i = 0; i < text.size(); ++i) {
      const auto code = static_cast<unsigned>(text.data()[i]);
      if (code >= 0x20 && code < 0x7f) {
        const char c = static_cast<char>(code);
        Api::Write(&c, 1);
      } else {
        Put("<");
        PutHex(code);
        Put(">");
      }
    }
    Put(text.data()[text.size()] == 0 ? "\"\n" : "\" not terminated\n");
  }

  void LineOf(const char* name, const char* value) {
    Put(name);
    Put(" ");
    Put(value);
    Put("\n");
  }

  static Word Bits(double value) { return __builtin_bit_cast(Word, value); }

  static void Put(const char* text) {
    unsigned long long size = 0;
    while (text[size] != 0) ++size;
    Api::Write(text, size);
  }

  // A blank and the value in hexadecimal.
  static void PutHex(Word value) {
    constexpr int kDigits = 16;
    char text[1 + kDigits];
    int first = 1 + kDigits;
    do {
      text[--first] = "0123456789abcdef"[value & 15];
      value >>= 4;
    } while (value != 0);
    text[--first] = ' ';
    Api::Write(text + first, static_cast<Word>(1 + kDigits - first));
  }

  Server& server_;
  typename Api::Spectrum kept_;  // filled again and again, as hosts do
};

}  // namespace host_test
