#include "tools/zrml/check/report_check.h"

#include <cstdint>
#include <string_view>

#include "common/platform/platform.h"
#include "openlynx/report_block.h"
#include "openlynx/report_format.h"
#include "openlynx/report_stream.h"
#include "tools/zrml/convert/native_path.h"

namespace zrml {
namespace {

// Walks through the block of the sample whose marker is at the stream's position, and gives how many braces
// are open behind it. The stream is then behind the block, or at the marker of the next sample where that
// lies in it.
std::int64_t WalkThrough(ReportStream& stream) {
  const std::uint64_t position = stream.Position();
  BlockWalk walk(stream, position);
  for (std::string_view line; walk.NextMarked(line);) {
    if (walk.Position() == position || !line.starts_with(report_format::kSample)) continue;
    stream.Seek(walk.Position());
    break;
  }
  return walk.Depth();
}

std::wstring EndProblem(std::int64_t depth) {
  return L"ends inside " + std::to_wstring(depth) + (depth == 1 ? L" block" : L" blocks");
}

}  // namespace

std::vector<Finding> CheckReport(const std::wstring& path) {
  const std::wstring name = WidePath(NativePath(path).filename());
  const std::uint64_t size = platform::File::Open(path).Size();
  ReportStream stream = ReportStream::Open(path);
  std::vector<Finding> findings;
  for (int sample = 1; stream.Find(report_format::kSample); ++sample) {
    const std::int64_t depth = WalkThrough(stream);
    if (depth <= 0) continue;
    const bool isLast = !stream.Find(report_format::kSample);
    if (isLast && stream.Position() < size) break;  // the report is not cut: its disk fails
    const Concern concern = {Concern::Kind::kSample, sample};
    const std::wstring next = L"has no end of sample " + std::to_wstring(sample);
    findings.push_back({name, isLast ? EndProblem(depth) : next, true, concern});
  }
  return findings;
}

}  // namespace zrml
