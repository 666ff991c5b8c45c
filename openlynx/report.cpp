#include "openlynx/report.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>

#include "common/platform/platform.h"
#include "common/text_file.h"
#include "openlynx/report_faults.h"

namespace zrml::openlynx {
namespace {

// Longer texts of a block are not returned.
constexpr std::size_t kLargestText = 10'000'000;
// The most bytes per character in a code page, which UTF-8 has.
constexpr std::size_t kBytesPerCharacter = 4;

constexpr std::string_view kExtension = ".rpt";

// A report is recognised by this many lines, read through a line buffer of this size.
constexpr int kRecognisedLines = 10;
constexpr std::size_t kLineBuffer = 999;

bool IsLetter(char lowerCase, platform::SystemPath::value_type c) {
  return c == lowerCase || (c >= 'A' && c <= 'Z' && c - 'A' + 'a' == lowerCase);
}

}  // namespace

bool HasReportExtension(const platform::SystemPath& path) {
  return path.size() >= kExtension.size() &&
         std::equal(kExtension.rbegin(), kExtension.rend(), path.rbegin(), IsLetter);
}

bool BeginsLikeReport(const platform::File& file) {
  // Twice the buffers: CR LF is two bytes of the file and one of the buffer.
  const std::string text = ReadTextBytes(file, std::uint64_t{2} * kRecognisedLines * kLineBuffer);
  ByteLineReader reader(text, kLineBuffer);
  std::string_view line;
  for (int i = 0; i < kRecognisedLines && reader.Next(line); ++i) {
    if (Contains(line, report_format::kSample)) return true;
  }
  return false;
}

int CountOf(std::size_t size) {
  return static_cast<int>(std::min<std::size_t>(size, std::numeric_limits<int>::max()));
}

ReportStream Report::Exchange(ReportStream stream) {
  for (Sample& sample : samples_) sample.ForgetTexts();
  return std::exchange(stream_, std::move(stream));
}

std::span<Sample> Report::Samples() {
  if (!stream_.IsOpen()) return {};
  if (samples_.empty()) samples_ = FindSamples(stream_);
  return samples_;
}

std::span<Function> Report::FunctionsOf(Sample& sample) {
  if (!sample.areFunctionsSought) FindFunctions(stream_, sample);
  return sample.functions;
}

std::span<const std::uint64_t> Report::SpectraOf(Sample& sample, Function& function) {
  FindBlocks(stream_, sample, function);
  return sample.SpectraOf(function);
}

std::span<const std::uint64_t> Report::ChromatogramsOf(Sample& sample, Function& function) {
  FindBlocks(stream_, sample, function);
  return sample.ChromatogramsOf(function);
}

std::wstring Report::NameOf(const Sample& sample) {
  constexpr std::array kName = {SampleItem{"FileName", report_format::kFileNameKey}};
  return ReadItems(sample, kName).front();
}

std::wstring Report::NameOf(Sample& sample, const Function& function) {
  ReadNames(stream_, sample, function);
  ReadIonMode(stream_, sample, function);
  std::wstring name;
  for (const TextNumber number : {function.ionMode, function.type, function.description}) {
    const std::string_view part = sample.Text(number);
    if (part.empty()) continue;
    if (!name.empty()) name += L' ';
    name += platform::FromCodePage(part);
  }
  return name;
}

std::string_view Report::TypeOf(Sample& sample, const Function& function) {
  ReadNames(stream_, sample, function);
  return sample.Text(function.type);
}

Polarity Report::PolarityOf(Sample& sample, const Function& function) {
  ReadIonMode(stream_, sample, function);
  return PolarityOfIonMode(sample.Text(function.ionMode));
}

// A spectrum's own values are ignored when it has no points.
bool Report::IsCentroided(Sample& sample, Function& function) {
  const std::span<const std::uint64_t> spectra = SpectraOf(sample, function);
  if (spectra.empty()) return false;
  const SpectrumHead first = ReadSpectrumHead(spectra.front());
  return first.isCentroided && !ReadPoints(first).x.empty();
}

std::optional<std::wstring> Report::ReadText(const Function& function, std::uint64_t end) {
  std::wstring text = platform::FromCodePage(
      ReadBlockText(stream_, function.position, kLargestText * kBytesPerCharacter, end));
  return text.size() <= kLargestText ? std::optional(std::move(text)) : std::nullopt;
}

void Report::Check(const std::string& name, Findings& findings) {
  FindSamples(stream_, name, &findings);
  NoticeFaultyLines(stream_, name, findings);
}

}  // namespace zrml::openlynx
