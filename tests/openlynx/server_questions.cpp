#include "tests/openlynx/server_questions.h"

#include <array>
#include <bit>
#include <charconv>
#include <cstdint>

namespace zrml {
namespace {

// Writes values as text that is equal exactly when the values have the same bits. Not a stream: tests that
// ask questions spend most of their time writing.
class Writer {
 public:
  explicit Writer(std::string& text) : text_(text) {}

  Writer& operator<<(const char* text) { return text_ += text, *this; }
  Writer& operator<<(bool value) { return text_ += value ? " true" : " false", *this; }
  Writer& operator<<(int value) { return Append(value, kDecimal); }
  Writer& operator<<(double value) { return Append(std::bit_cast<std::uint64_t>(value), kHexadecimal); }
  Writer& operator<<(const std::wstring& value) {
    text_ += " \"";
    for (const wchar_t c : value) {
      if (c >= 0x20 && c < 0x7F) {
        text_ += static_cast<char>(c);
      } else {
        text_ += "<" + std::to_string(static_cast<unsigned>(c)) + ">";
      }
    }
    text_ += '"';
    return *this;
  }
  Writer& operator<<(const HostVector<double>& values) {
    text_ += " (";
    for (const double value : values) *this << value;
    text_ += " )";
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

 private:
  static constexpr int kDecimal = 10;
  static constexpr int kHexadecimal = 16;

  template <class Number>
  Writer& Append(Number value, int base) {
    std::array<char, 24> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, base).ptr;
    text_ += ' ';
    text_.append(digits.data(), end);
    return *this;
  }

  std::string& text_;
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

// The parts of a question that an operation uses besides the sample.
enum class Looks { kAtNothing, kAtFunction, kAtIndex, kAtFunctionAndIndex, kAtFunctionAndParity };

struct Operation {
  const char* name;
  Looks looks;
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

constexpr int kFirstIndex = -1;
constexpr int kLastIndex = 3;

constexpr std::array<Operation, 24> kTable = {{
    {"GetSampleCount", Looks::kAtNothing, [](S& s, const Q&, Writer& out) { out << s.GetSampleCount(); }},
    {"GetSampleName", Looks::kAtNothing,
     [](S& s, const Q& q, Writer& out) { out << s.GetSampleName(q.sample); }},
    {"GetFunctionCount", Looks::kAtNothing,
     [](S& s, const Q& q, Writer& out) { out << s.GetFunctionCount(q.sample); }},
    {"GetFunctionName", Looks::kAtFunction,
     [](S& s, const Q& q, Writer& out) { out << s.GetFunctionName(q.sample, q.function); }},
    {"GetFunctionKind", Looks::kAtFunction,
     [](S& s, const Q& q, Writer& out) { out << s.GetFunctionKind(q.sample, q.function); }},
    {"GetPolarity", Looks::kAtFunction,
     [](S& s, const Q& q, Writer& out) { out << s.GetPolarity(q.sample, q.function); }},
    {"GetMSLevel", Looks::kAtFunction,
     [](S& s, const Q& q, Writer& out) { out << s.GetMSLevel(q.sample, q.function); }},
    {"IsCentroided", Looks::kAtFunction,
     [](S& s, const Q& q, Writer& out) { out << s.IsCentroided(q.sample, q.function); }},
    {"GetScanCount", Looks::kAtFunction,
     [](S& s, const Q& q, Writer& out) { out << s.GetScanCount(q.sample, q.function); }},
    {"GetBasePeakChromatogram", Looks::kAtFunctionAndParity,
     [](S& s, const Q& q, Writer& out) {
       AskChromatogram(out, [&](CZRChromatogram& c) {
         return s.GetBasePeakChromatogram(q.index % 2 == 0, q.sample, q.function, c);
       });
     }},
    {"GetTotalIonChromatogram", Looks::kAtFunctionAndParity,
     [](S& s, const Q& q, Writer& out) {
       AskChromatogram(out, [&](CZRChromatogram& c) {
         return s.GetTotalIonChromatogram(q.index % 2 == 0, q.sample, q.function, c);
       });
     }},
    {"GetMassRangeChromatogram", Looks::kAtFunction,
     [](S& s, const Q& q, Writer& out) {
       AskChromatogram(out, [&](CZRChromatogram& c) {
         return s.GetMassRangeChromatogram(100, 500, true, q.sample, q.function, c);
       });
     }},
    {"GetRetentionTimes", Looks::kAtFunction, AskTimes},
    {"GetSpectrum", Looks::kAtFunctionAndIndex, AskSpectrum},
    {"GetScanMassRange", Looks::kAtFunctionAndIndex, AskMassRange},
    {"FindPrecursorScan", Looks::kAtFunctionAndIndex, AskPrecursor},
    {"GetTraceCount", Looks::kAtNothing,
     [](S& s, const Q& q, Writer& out) { out << s.GetTraceCount(q.sample); }},
    {"GetTraceName", Looks::kAtIndex,
     [](S& s, const Q& q, Writer& out) { out << s.GetTraceName(q.sample, q.index); }},
    {"GetTrace", Looks::kAtIndex,
     [](S& s, const Q& q, Writer& out) {
       AskChromatogram(out, [&](CZRChromatogram& c) { return s.GetTrace(q.sample, q.index, c); });
     }},
    {"GetFunctionTraceCount", Looks::kAtFunction,
     [](S& s, const Q& q, Writer& out) { out << s.GetFunctionTraceCount(q.sample, q.function); }},
    {"GetFunctionTraceName", Looks::kAtFunctionAndIndex,
     [](S& s, const Q& q, Writer& out) { out << s.GetFunctionTraceName(q.sample, q.function, q.index); }},
    {"GetFunctionTrace", Looks::kAtFunctionAndIndex,
     [](S& s, const Q& q, Writer& out) {
       AskChromatogram(
           out, [&](CZRChromatogram& c) { return s.GetFunctionTrace(q.sample, q.function, q.index, c); });
     }},
    {"GetMetadataValue", Looks::kAtFunctionAndIndex, AskMetadata},
    {"GetMetadataKeys", Looks::kAtFunction, AskMetadataKeys},
}};

// Whether AllAnswers asks the operation there: a part that the operation ignores only takes its first and
// last value, since the questions in between must not change the answer.
bool IsAsked(Looks looks, bool isEndOfFunctions, int index) {
  const bool isEndOfIndices = index == kFirstIndex || index == kLastIndex;
  switch (looks) {
    case Looks::kAtNothing:
      return isEndOfFunctions && isEndOfIndices;
    case Looks::kAtFunction:
      return isEndOfIndices;
    case Looks::kAtIndex:
      return isEndOfFunctions;
    case Looks::kAtFunctionAndParity:
      return isEndOfIndices || index == kLastIndex - 1;
    case Looks::kAtFunctionAndIndex:
      break;
  }
  return true;
}

void AppendAnswer(CDataServerImpl& server, const Question& question, std::string& text) {
  const Operation& operation = kTable[static_cast<std::size_t>(question.operation)];
  Writer out(text);
  out << operation.name << question.sample << question.function << question.index << ":";
  operation.ask(server, question, out);
  text += '\n';
}

}  // namespace

const int kOperations = static_cast<int>(kTable.size());

std::string Answer(CDataServerImpl& server, const Question& question) {
  std::string text;
  AppendAnswer(server, question, text);
  return text;
}

std::string AllAnswers(CDataServerImpl& server) {
  std::string text;
  const int samples = server.GetSampleCount();
  for (int sample = -1; sample <= samples; ++sample) {
    const int functions = server.GetFunctionCount(sample);
    for (int function = -1; function <= functions; ++function) {
      const bool isEnd = function == -1 || function == functions;
      for (int index = kFirstIndex; index <= kLastIndex; ++index) {
        for (int i = 0; i < kOperations; ++i) {
          const Looks looks = kTable[static_cast<std::size_t>(i)].looks;
          if (IsAsked(looks, isEnd, index)) AppendAnswer(server, {i, sample, function, index}, text);
        }
      }
    }
  }
  return text;
}

}  // namespace zrml
