#include "tools/zrml/check/source_check.h"

#include "tools/zrml/check/raw_check.h"
#include "tools/zrml/check/report_check.h"

namespace zrml {

std::vector<Finding> CheckSource(const std::wstring& path, bool isReport) {
  if (isReport) return CheckReport(path);
  std::wstring folder;
  return IsRawDirectory(path, folder) ? CheckRawDirectory(folder, path) : std::vector<Finding>();
}

}  // namespace zrml
