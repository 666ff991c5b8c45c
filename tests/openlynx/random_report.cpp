#include "tests/openlynx/random_report.h"

#include <algorithm>

namespace zrml {
namespace {

constexpr const char* kKeyNames[] = {"Time",         "TIC",      "BPI",        "Continuum", "Description",
                                     "Type",         "IonMode",  "FileName",   "SampleID",  "Date",
                                     "MaxIntensity", "UserName", "Instrument", "Timestamp", "Ti",
                                     "Unknown key",  "time"};
constexpr const char* kValues[] = {
    "",      "1.25",         "0",        "-3e2",          "FALSE", "TRUE", "false",  "MS",     "MS/MS of 5",
    "SIM 3", "DAD Spectrum", "ANALOG 1", "Analog",        "ES+",   "ES-",  "a name", "\xB5m",  "\xC2\xB5m",
    "inf",   "0x1F",         "1e999",    "MS2 Daughters", "MRM",   "1,5",  "0.0",    "100.0x", "\t 7 \v\f\r",
    "+-",    "12 13"};
constexpr const char* kSeparators[] = {"\t", " ", "", " \t ", ":"};
constexpr const char* kNumbers[] = {"1",
                                    "100.5",
                                    "0",
                                    "-2",
                                    "12.3456",
                                    "1e3",
                                    "abc",
                                    ".5",
                                    "5.",
                                    "0x10",
                                    "inf",
                                    "1e-400",
                                    "+7",
                                    "999.99",
                                    "",
                                    "1,5",
                                    "0.10000000000000000555",
                                    "123456789012345678",
                                    "4.35",
                                    "1e400",
                                    "..1",
                                    "1e-",
                                    "0x",
                                    "infi",
                                    "nan"};
constexpr const char* kLineEnds[] = {"\n", "\n", "\n", "\r\n"};
constexpr const char* kOddLines[] = {"",
                                     " [FUNCTION]",
                                     "{",
                                     "}",
                                     "[SAMPLE] again",
                                     "[FUNCTION]",
                                     "[SPECTRUM]",
                                     "[MS]",
                                     "; a remark",
                                     "[TRACE]",
                                     "{}",
                                     "x{",
                                     "[SAMPLE",
                                     "sample",
                                     "[ms]",
                                     "[CHROMATOGRAM]x",
                                     "}{",
                                     "["};

}  // namespace

std::string RandomReport::Pick(const char* const* choices, int count) { return choices[Below(count)]; }

void RandomReport::Put(const std::string& line) { text_ += line + OneOf(kLineEnds); }

void RandomReport::KeyLine() { Put(OneOf(kKeyNames) + OneOf(kSeparators) + OneOf(kValues)); }

void RandomReport::DataLine() {
  Put((Chance(5)   ? "; "
       : Chance(5) ? " "
                   : "") +
      OneOf(kNumbers) + OneOf(kSeparators) + OneOf(kNumbers) + (Chance(10) ? " 3" : ""));
}

void RandomReport::List(const char* marker) {
  Put(marker);
  if (Chance(90)) Put("{");
  for (int i = Below(8); i > 0; --i) DataLine();
  if (Chance(95)) Put("}");
}

void RandomReport::Inner(const char* marker, const char* list) {
  Put(marker);
  if (Chance(96)) Put("{");
  for (int i = Below(6); i > 0; --i) KeyLine();
  if (Chance(10)) OddLine();
  if (Chance(90)) List(list);
  if (Chance(10)) KeyLine();
  if (Chance(97)) Put("}");
}

void RandomReport::Function() {
  Put("[FUNCTION]");
  if (Chance(96)) Put("{");
  for (int i = Below(5); i > 0; --i) KeyLine();
  for (int i = Below(4); i > 0; --i) {
    Chance(65) ? Inner("[SPECTRUM]", "[MS]") : Inner("[CHROMATOGRAM]", "[TRACE]");
  }
  if (Chance(10)) OddLine();
  if (Chance(97)) Put("}");
}

void RandomReport::Sample() {
  Put("[SAMPLE]");
  if (Chance(96)) Put("{");
  for (int i = Below(5); i > 0; --i) KeyLine();
  for (int i = Below(4); i > 0; --i) Chance(8) ? Nest() : Function();
  if (Chance(97)) Put("}");
}

// Nested blocks, with other lines between their beginnings, and mostly without their ends.
void RandomReport::Nest() {
  constexpr const char* kMarkers[] = {"[FUNCTION]", "[FUNCTION]", "[SPECTRUM]", "[CHROMATOGRAM]", "[SAMPLE]"};
  const std::string usual = OneOf(kMarkers);
  const int depth = 1 + Below(Chance(10) ? 100 : 12);
  const int keyPercent = Below(40);
  for (int i = 0; i < depth; ++i) {
    Put(Chance(70) ? usual : OneOf(kMarkers));
    if (Chance(95)) Put("{");
    if (Chance(keyPercent)) KeyLine();
    if (Chance(3)) OddLine();
    if (Chance(10)) Put("}");
    if (Chance(5)) Inner("[SPECTRUM]", "[MS]");
    if (Chance(5)) Inner("[CHROMATOGRAM]", "[TRACE]");
  }
  if (Chance(50)) KeyLine();
  for (int i = Chance(30) ? Below(depth + 2) : 0; i > 0; --i) Put("}");
}

void RandomReport::OddLine() { Put(Chance(25) ? LongLine() : OneOf(kOddLines)); }

// A line around a multiple of the line buffer, with text after the border that is significant at the start of
// a line.
std::string RandomReport::LongLine() {
  const auto length = static_cast<std::size_t>(999 * (1 + Below(3)) + Below(5) - 2);
  return std::string(length, 'x') + OneOf(kOddLines) + (Chance(50) ? "\tTime 3" : "");
}

// One edit: bytes removed, inserted or repeated, a line indented, the end cut off.
void RandomReport::Damage() {
  const auto size = static_cast<int>(text_.size());
  const auto at = static_cast<std::size_t>(Below(size + 1));
  const auto length = static_cast<std::size_t>(Below(40));
  constexpr const char* kInserted[] = {"\n",    "}",     "{", "\r", "\x1a", "\n[FUNCTION]\n{\n",
                                       "\n}\n", "\n{\n", "9"};
  switch (Below(7)) {
    case 0:
      text_.erase(at, length);
      break;
    case 1:
      text_.insert(at, OneOf(kInserted));
      break;
    case 2:
      text_.insert(at, 1, '\0');
      break;
    case 3:
      text_.insert(at, std::string(text_, at, 5 * length));
      break;
    case 4:
      text_.insert(std::min(text_.find('\n', at), text_.size() - 1) + 1, Chance(50) ? " " : "\t");
      break;
    case 5:
      text_.insert(at, LongLine());
      break;
    default:
      if (Chance(30)) text_.resize(at);
      break;
  }
}

std::string RandomReport::Next() {
  text_.clear();
  if (Chance(20)) OddLine();
  for (int i = 1 + Below(3); i > 0; --i) {
    Sample();
    if (Chance(4)) Nest();
    if (Chance(10)) OddLine();
  }
  if (Below(200) == 0) {  // longer than the blocks in which files are read
    std::string filler;
    while (filler.size() < 131000U + static_cast<unsigned>(Below(200))) filler += "500.25\t12.5\n";
    text_.insert(std::min(text_.find('\n', static_cast<std::size_t>(Below(static_cast<int>(text_.size())))),
                          text_.size() - 1) +
                     1,
                 filler);
  }
  if (Chance(60)) {
    for (int i = 1 + Below(3); i > 0; --i) Damage();
  }
  return text_;
}

std::string RandomReport::NextWithPrecursors() {
  constexpr const char* kTimes[] = {"1", "2", "2", "3", "-1", "inf", "nan"};
  text_ = "[SAMPLE]\n{\n";
  for (int functions = 2 + Below(5); functions > 0; --functions) {
    text_ += "[FUNCTION]\n{\n";
    if (Chance(90)) Put(Chance(40) ? "Type MS2" : "Type MS");
    if (Chance(70)) Put(Chance(80) ? "IonMode ES+" : "IonMode ES-");
    for (int spectra = Chance(95) ? 1 + Below(3) : 0; spectra > 0; --spectra) {
      text_ += "[SPECTRUM]\n{\n";
      if (Chance(90)) Put("Time " + OneOf(kTimes));
      if (Chance(60)) Put("Continuum FALSE");
      if (Chance(90)) text_ += "[MS]\n{\n100 50\n}\n";
      if (Chance(80)) Put("}");
    }
    if (Chance(50)) Put("}");
  }
  return text_;
}

}  // namespace zrml
