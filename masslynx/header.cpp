#include "masslynx/header.h"

#include <algorithm>
#include <array>

#include "common/text.h"
#include "common/text_file.h"

namespace zrml {
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
  const std::wstring text = ReadText(file, 2 * kFirstLineBuffer);
  LineReader reader(text, kFirstLineBuffer);
  std::wstring_view line;
  return reader.Next(line) && (line.find(L"$$ Version") != std::wstring_view::npos ||
                               line.find(L"$$ Acquired Name") != std::wstring_view::npos);
}

std::vector<std::wstring> ReadHeaderLines(const platform::File& file) {
  const std::wstring text = ReadText(file);
  std::vector<std::wstring> lines;
  // A file of nothing but line feeds would need three times the memory if the list grew as it comes.
  lines.reserve(static_cast<std::size_t>(std::count(text.begin(), text.end(), L'\n')) + 2);
  LineReader reader(text, kLineBuffer);
  std::wstring_view line;
  // Deliberate: the result of a read is not looked at, so the read that meets the end adds the line before it
  // again.
  while (!reader.MetEnd()) {
    reader.Next(line);
    lines.emplace_back(line);
  }
  return lines;
}

void LookupHeaderValue(const std::vector<std::wstring>& lines, std::wstring_view key, std::wstring& value) {
  const std::wstring prefix = L"$$ " + std::wstring(key) + L": ";
  const auto line = std::find_if(lines.begin(), lines.end(), [&](const std::wstring& candidate) {
    return candidate.starts_with(prefix);
  });
  if (line != lines.end()) value = Trim(std::wstring_view(*line).substr(prefix.size()));
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

}  // namespace zrml
