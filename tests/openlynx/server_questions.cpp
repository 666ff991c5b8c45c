#include "tests/openlynx/server_questions.h"

#include <array>
#include <bit>
#include <cstdint>
#include <sstream>

namespace zrml {
namespace {

// Writes values so that two texts are equal when the values are, to the bit.
class Writer {
 public:
  Writer& operator<<(const char* text) { return text_ << text, *this; }
  Writer& operator<<(bool value) { return text_ << (value ? " true" : " false"), *this; }
  Writer& operator<<(int value) { return text_ << ' ' << value, *this; }
  Writer& operator<<(double value) {
    text_ << ' ' << std::hex << std::bit_cast<std::uint64_t>(value) << std::dec;
    return *this;
  }
  Writer& operator<<(const std::wstring& value) {
    text_ << " \"";
    for (const wchar_t c : value)
      text_ << (c >= 0x20 && c < 0x7F ? std::string(1, static_cast<char>(c)) : Code(c));
    text_ << '"';
    return *this;
  }
  Writer& operator<<(const HostVector<double>& values) {
    text_ << " (";
    for (const double value : values) *this << value;
    text_ << " )";
    return *this;
  }
  Writer& operator<<(const CZRChromatogram& c) {
    return *this << std::wstring(std::wstring_view(c.Name())) << c.Times() << c.Intensities();
  }
  Writer& operator<<(const CZRMassSpectrum& s) {
    return *this << s.GetCount() << s.MassVector() << s.IntensityVector() << s.GetStartTime()
                 << s.GetEndTime() << s.GetFirstScan() << s.GetLastScan() << s.IsCentroided()
                 << s.GetScanType() << s.GetMSLevel() << s.GetPolarity() << s.AreStatisticsStale();
  }
  std::string Text() const { return text_.str(); }

 private:
  static std::string Code(wchar_t c) { return "<" + std::to_string(static_cast<unsigned>(c)) + ">"; }

  std::ostringstream text_;
};

CZRChromatogram OldChromatogram() {
  CZRChromatogram c;
  c.SetSize(1);
  c.SetTime(0, -1);
  c.SetName(L"old");
  return c;
}

template <class Ask>
void AskChromatogram(Writer& out, Ask ask) {
  CZRChromatogram c = OldChromatogram();
  const bool result = ask(c);
  out << result << c;
}

constexpr std::array<const wchar_t*, 8> kKeys = {
    L"ProviderName",          L"OperatorName",          L"SampleName", L"AnalysisDateTime",
    L"InstrumentDescription", L"CompleteFunctionBlock", L"Unknown",    L"providername"};

const wchar_t* KeyAt(int index) {
  return kKeys[static_cast<std::size_t>(index < 0 ? 6 : index) % kKeys.size()];
}

using S = CDataServerImpl;
using Q = Question;

struct Operation {
  const char* name;
  void (*ask)(S& server, const Q& at, Writer& out);
};

void AskSpectrum(S& server, const Q& at, Writer& out) {
  CZRMassSpectrum spectrum(1);
  spectrum.SetMass(0, -1);
  const bool result = server.GetSpectrum(at.sample, at.function, at.index, spectrum);
  out << result << spectrum;
}

void AskTimes(S& server, const Q& at, Writer& out) {
  HostVector<double> times = {-1};
  const bool result = server.GetRetentionTimes(at.sample, at.function, times);
  out << result << times;
}

void AskMetadata(S& server, const Q& at, Writer& out) {
  std::wstring value = L"old";
  const bool result = server.GetMetadataValue(at.sample, at.function, KeyAt(at.index), value);
  out << result << value;
}

void AskMetadataKeys(S& server, const Q& at, Writer& out) {
  std::vector<std::wstring> keys = {L"old"};
  out << server.GetMetadataKeys(at.sample, at.function, keys);
  for (const std::wstring& key : keys) out << key;
}

void AskMassRange(S& server, const Q& at, Writer& out) {
  double low = -1;
  double high = -2;
  const bool result = server.GetScanMassRange(at.sample, at.function, at.index, low, high);
  out << result << low << high;
}

void AskPrecursor(S& server, const Q& at, Writer& out) {
  int function = -1;
  int scan = -2;
  const bool result = server.FindPrecursorScan(at.sample, at.function, at.index, function, scan);
  out << result << function << scan;
}

constexpr std::array<Operation, 24> kTable = {{
    {"GetSampleCount", [](S& s, const Q&, Writer& out) { out << s.GetSampleCount(); }},
    {"GetSampleName", [](S& s, const Q& q, Writer& out) { out << s.GetSampleName(q.sample); }},
    {"GetFunctionCount", [](S& s, const Q& q, Writer& out) { out << s.GetFunctionCount(q.sample); }},
    {"GetFunctionName",
     [](S& s, const Q& q, Writer& out) { out << s.GetFunctionName(q.sample, q.function); }},
    {"GetFunctionKind",
     [](S& s, const Q& q, Writer& out) { out << s.GetFunctionKind(q.sample, q.function); }},
    {"GetPolarity", [](S& s, const Q& q, Writer& out) { out << s.GetPolarity(q.sample, q.function); }},
    {"GetMSLevel", [](S& s, const Q& q, Writer& out) { out << s.GetMSLevel(q.sample, q.function); }},
    {"IsCentroided", [](S& s, const Q& q, Writer& out) { out << s.IsCentroided(q.sample, q.function); }},
    {"GetScanCount", [](S& s, const Q& q, Writer& out) { out << s.GetScanCount(q.sample, q.function); }},
    {"GetBasePeakChromatogram",
     [](S& s, const Q& q, Writer& out) {
       AskChromatogram(out, [&](CZRChromatogram& c) {
         return s.GetBasePeakChromatogram(q.index % 2 == 0, q.sample, q.function, c);
       });
     }},
    {"GetTotalIonChromatogram",
     [](S& s, const Q& q, Writer& out) {
       AskChromatogram(out, [&](CZRChromatogram& c) {
         return s.GetTotalIonChromatogram(q.index % 2 == 0, q.sample, q.function, c);
       });
     }},
    {"GetMassRangeChromatogram",
     [](S& s, const Q& q, Writer& out) {
       AskChromatogram(out, [&](CZRChromatogram& c) {
         return s.GetMassRangeChromatogram(100, 500, true, q.sample, q.function, c);
       });
     }},
    {"GetRetentionTimes", AskTimes},
    {"GetSpectrum", AskSpectrum},
    {"GetScanMassRange", AskMassRange},
    {"FindPrecursorScan", AskPrecursor},
    {"GetTraceCount", [](S& s, const Q& q, Writer& out) { out << s.GetTraceCount(q.sample); }},
    {"GetTraceName", [](S& s, const Q& q, Writer& out) { out << s.GetTraceName(q.sample, q.index); }},
    {"GetTrace",
     [](S& s, const Q& q, Writer& out) {
       AskChromatogram(out, [&](CZRChromatogram& c) { return s.GetTrace(q.sample, q.index, c); });
     }},
    {"GetFunctionTraceCount",
     [](S& s, const Q& q, Writer& out) { out << s.GetFunctionTraceCount(q.sample, q.function); }},
    {"GetFunctionTraceName",
     [](S& s, const Q& q, Writer& out) { out << s.GetFunctionTraceName(q.sample, q.function, q.index); }},
    {"GetFunctionTrace",
     [](S& s, const Q& q, Writer& out) {
       AskChromatogram(
           out, [&](CZRChromatogram& c) { return s.GetFunctionTrace(q.sample, q.function, q.index, c); });
     }},
    {"GetMetadataValue", AskMetadata},
    {"GetMetadataKeys", AskMetadataKeys},
}};

}  // namespace

const int kOperations = static_cast<int>(kTable.size());

std::string Answer(CDataServerImpl& server, const Question& question) {
  const Operation& operation = kTable[static_cast<std::size_t>(question.operation)];
  Writer out;
  out << operation.name << question.sample << question.function << question.index << ":";
  operation.ask(server, question, out);
  return out.Text() + "\n";
}

std::string AllAnswers(CDataServerImpl& server) {
  std::string text;
  const auto askAll = [&](int sample, int function, int index) {
    for (int i = 0; i < kOperations; ++i) text += Answer(server, {i, sample, function, index});
  };
  const int samples = server.GetSampleCount();
  for (int sample = -1; sample <= samples; ++sample) {
    const int functions = server.GetFunctionCount(sample);
    for (int function = -1; function <= functions; ++function) {
      constexpr int kIndices = 4;
      for (int index = -1; index < kIndices; ++index) askAll(sample, function, index);
    }
  }
  return text;
}

}  // namespace zrml
