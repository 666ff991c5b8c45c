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

struct Walked {
  std::int64_t depth = 0;     // braces that are open behind the block
  bool isMarkerAlone = true;  // nothing follows the marker
};

// Walks through the block of the sample whose marker is at the stream's position. The stream is then behind
// the block, or at the marker of the next sample where that lies in it.
Walked WalkThrough(ReportStream& stream) {
  const std::uint64_t position = stream.Position();
  BlockWalk walk(stream, position);
  Walked walked;
  for (std::string_view line; walk.NextMarked(line);) {
    if (walk.Position() == position) continue;
    walked.isMarkerAlone = false;
    if (!line.starts_with(report_format::kSample)) continue;
    stream.Seek(walk.Position());
    break;
  }
  walked.depth = walk.Depth();
  return walked;
}

std::wstring EndProblem(std::int64_t depth) {
  if (depth == 0) return L"ends where its last sample begins";
  return L"ends inside " + std::to_wstring(depth) + (depth == 1 ? L" block" : L" blocks");
}

}  // namespace

std::vector<Finding> CheckReport(const std::wstring& path) {
  const std::wstring name = WidePath(NativePath(path).filename());
  const std::uint64_t size = platform::File::Open(path).Size();
  ReportStream stream = ReportStream::Open(path);
  std::vector<Finding> findings;
  for (int sample = 1; stream.Find(report_format::kSample); ++sample) {
    const Walked walked = WalkThrough(stream);
    if (walked.depth <= 0 && !walked.isMarkerAlone) continue;
    const bool isLast = !stream.Find(report_format::kSample);
    if (isLast && stream.Position() < size) break;  // the report is not cut: its disk fails
    const Concern concern = {Concern::Kind::kSample, sample};
    const std::wstring next = L"has no end of sample " + std::to_wstring(sample);
    findings.push_back({name, isLast ? EndProblem(walked.depth) : next, true, concern});
  }
  return findings;
}

}  // namespace zrml
