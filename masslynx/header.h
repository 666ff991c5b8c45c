// "_HEADER.TXT": lines of the form "$$ Key: value", and what the interface's metadata items take from them.
// docs/header.md
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "common/platform/platform.h"

namespace zrml {

/// Whether the first line of the header marks a MassLynx acquisition.
bool IsMassLynxHeader(const platform::File& file);

/// The lines with their line feeds, at most 9,999 characters each (a longer line continues in the next one).
/// The last line deliberately stands twice when it ends with a line feed. An empty file has one empty line.
std::vector<std::wstring> ReadHeaderLines(const platform::File& file);

/// Sets `value` to what follows "$$ <key>: " in the first line that begins so, trimmed. Without such a line:
/// unchanged.
void LookupHeaderValue(const std::vector<std::wstring>& lines, std::wstring_view key, std::wstring& value);

/// "14-Nov-2026" and "09:15:00" as "2026-11-14T09:15:00+00:00". The day is kept as written, an unknown month
/// is 00, and the zone is always +00:00, whatever the local time was. At most 79 characters.
std::wstring AnalysisDateTime(std::wstring_view date, std::wstring_view time);

}  // namespace zrml
