// "_HEADER.TXT": lines of the form "$$ Key: value", and the metadata items of the interface made from them.
// docs/header.md
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "common/platform/platform.h"

namespace zrml::masslynx {

/// Whether the first line of the header identifies a MassLynx acquisition.
bool IsMassLynxHeader(const platform::File& file);

/// The lines of a header with their line feeds, one byte per character, at most 9,999 each (a longer line
/// continues in the next one). They are views of a text that the object owns.
class HeaderLines {
 public:
  HeaderLines() = default;
  explicit HeaderLines(std::string text);

  const std::vector<std::string_view>& All() const { return lines_; }

 private:
  std::unique_ptr<const std::string> text_;
  std::vector<std::string_view> lines_;
};

/// The last line deliberately appears twice when it ends with a line feed. An empty file has one empty line.
HeaderLines ReadHeaderLines(const platform::File& file);

/// Sets `value` to what follows "$$ <key>: " in the first line with that beginning, trimmed. Without such a
/// line it is unchanged.
void LookupHeaderValue(const std::vector<std::string_view>& lines, std::string_view key, std::wstring& value);

/// "14-Nov-2026" and "09:15:00" as "2026-11-14T09:15:00+00:00". The day is kept as written, an unknown month
/// is 00, and the zone is always +00:00, whatever the local time was. At most 79 characters.
std::wstring AnalysisDateTime(std::wstring_view date, std::wstring_view time);

}  // namespace zrml::masslynx
