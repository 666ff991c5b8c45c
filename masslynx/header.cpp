#include "masslynx/header.h"

#include <algorithm>
#include <array>
#include <utility>

#include "common/text.h"
#include "common/text_file.h"

namespace zrml::masslynx {
namespace {

constexpr std::size_t kLineBuffer = 10000;
constexpr std::size_t kFirstLineBuffer = 1000;
constexpr std::size_t kDateTimeBuffer = 80;

constexpr std::array<std::wstring_view, 12> kMonths = {L"Jan", L"Feb", L"Mar", L"Apr", L"May", L"Jun",
                                                       L"Jul", L"Aug", L"Sep", L"Oct", L"Nov", L"Dec"};

int MonthNumber(std::wstring_view name) {
  const auto month = std::find(kMonths.begin(), kMonths.end(), name);
  return month == kMonths.end() ? 0 : static_cast<int>(month - kMonths.begin()) + 1;
}

// Takes one field up to the next hyphen, and the hyphen; an empty field ends the whole scan.
std::wstring_view TakeField(std::wstring_view& date) {
  const std::wstring_view field = date.substr(0, date.find(L'-'));
  date.remove_prefix(field.empty() ? date.size() : std::min(field.size() + 1, date.size()));
  return field;
}

}  // namespace

bool IsMassLynxHeader(const platform::File& file) {
  const std::string text = ReadTextBytes(file, 2 * kFirstLineBuffer);
  ByteLineReader reader(text, kFirstLineBuffer);
  std::string_view line;
  return reader.Next(line) && (line.find("$$ Version") != std::string_view::npos ||
                               line.find("$$ Acquired Name") != std::string_view::npos);
}

HeaderLines::HeaderLines(std::string text) : text_(std::make_unique<const std::string>(std::move(text))) {
  std::string_view line;
  // A file of nothing but line feeds would need three times the memory if the list grew line by line.
  std::size_t count = 1;
  for (ByteLineReader counted(*text_, kLineBuffer); counted.Next(line);) ++count;
  lines_.reserve(count);
  ByteLineReader reader(*text_, kLineBuffer);
  line = {};
  // Deliberate: the result of a read is ignored, so the read that meets the end adds the line before it
  // again.
  while (!reader.MetEnd()) {
    reader.Next(line);
    lines_.push_back(line);
  }
}

HeaderLines ReadHeaderLines(const platform::File& file) { return HeaderLines(ReadTextBytes(file)); }

void LookupHeaderValue(const std::vector<std::string_view>& lines, std::string_view key,
                       std::wstring& value) {
  const std::string prefix = "$$ " + std::string(key) + ": ";
  const auto line = std::find_if(lines.begin(), lines.end(),
                                 [&](std::string_view candidate) { return candidate.starts_with(prefix); });
  if (line != lines.end()) value = FromBytes(Trim(line->substr(prefix.size())));
}

std::wstring AnalysisDateTime(std::wstring_view date, std::wstring_view time) {
  const std::wstring_view day = TakeField(date);
  const std::wstring_view month = TakeField(date);
  const std::wstring_view year = TakeField(date);
  std::wstring text(year);
  text += L'-' + ZeroPadded(MonthNumber(month), 2) + L'-';
  text.append(day).append(L"T").append(time).append(L"+00:00");
  text.resize(std::min(text.size(), kDateTimeBuffer - 1));
  return text;
}

}  // namespace zrml::masslynx
