#include "tools/zrml/check/report_check.h"

#include <cstdint>
#include <string_view>

#include "openlynx/report_format.h"
#include "openlynx/report_stream.h"
#include "tools/zrml/convert/native_path.h"

namespace zrml {

std::vector<Finding> CheckReport(const std::wstring& path) {
  ReportStream stream = ReportStream::Open(path);
  std::uint64_t depth = 0;
  for (std::string_view line; stream.NextMarked(line);) {
    if (line.front() == report_format::kOpen) ++depth;
    if (line.front() == report_format::kClose && depth > 0) --depth;
  }
  if (depth == 0) return {};
  const std::wstring problem =
      L"ends inside " + std::to_wstring(depth) + (depth == 1 ? L" block" : L" blocks");
  return {{WidePath(NativePath(path).filename()), problem, true, {}}};
}

}  // namespace zrml
