#include "tools/zrml/convert_target.h"

#include <filesystem>

#include "convert/error.h"
#include "convert/native_path.h"
#include "convert/source_files.h"
#include "tools/zrml/format.h"
#include "tools/zrml/host_system.h"

namespace zrml::tool {
namespace {

// A source must survive its conversion, also when files may be replaced.
void RefuseSourceAsTarget(const std::string& path, source::Source& source) {
  std::error_code ignored;
  const std::filesystem::path target = convert::NativePath(path);
  if (std::filesystem::exists(target, ignored) && !std::filesystem::is_regular_file(target, ignored))
    throw Failure(ExitStatus::kWrongUsage, path + " exists and is not a regular file");
  if (convert::IsPartOf(source, path))
    throw Failure(ExitStatus::kWrongUsage, path + " is a part of the source");
}

}  // namespace

std::string Targets::PathOf(const std::string& name) const {
  if (!request_.file.empty()) return request_.file;
  std::string folder = request_.folder;
  if (convert::NativePath(folder).has_filename()) folder += '/';
  return folder + name + request_.extension + (request_.isGzipped ? ".gz" : "");
}

std::string Targets::PathFor(source::Source& source, int sample) const {
  const std::string path = PathOf(convert::RunName(source, sample));
  if (made_.contains(path)) {
    throw Failure(ExitStatus::kUnreadable,
                  source.Path() + " would replace " + path + ", already written from another source");
  }
  RefuseSourceAsTarget(path, source);
  return path;
}

void StandardOutput::Write(std::string_view bytes) {
  std::string error;
  switch (WriteStream(Stream::kOutput, bytes, error)) {
    case WriteResult::kWritten:
      return;
    case WriteResult::kReaderGone:
      error = "its reader is gone";
      break;
    case WriteResult::kInterrupted:
      throw source::Cancelled();
    case WriteResult::kFailed:
      break;
  }
  throw convert::Error(convert::ErrorKind::kTargetUnwritable,
                       "cannot write to standard output (" + error + ")");
}

void PathPrinter::Print(const std::string& path) {
  if (isOver_) return;
  try {
    out_.Text(VisibleText(path) + "\n");
    out_.Finish();
  } catch (const ReaderGone&) {
    isOver_ = true;
  } catch (const Failure& failure) {
    isOver_ = true;
    problem_ = failure;
  }
}

}  // namespace zrml::tool
