#include "tools/zrml/convert_target.h"

#include <filesystem>

#include "convert/error.h"
#include "convert/native_path.h"
#include "convert/source_files.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/host_system.h"

namespace zrml::tool {

std::string TargetPath(const ConvertRequest& request, source::Source& source, int sample) {
  if (!request.file.empty()) return request.file;
  std::string folder = request.folder;
  if (convert::NativePath(folder).has_filename()) folder += '/';
  return folder + convert::RunName(source, sample) + ExtensionOf(request.conversion.format) +
         (request.isGzipped ? ".gz" : "");
}

void RefuseAsTarget(const std::string& path, source::Source& source) {
  std::error_code ignored;
  const std::filesystem::path target = convert::NativePath(path);
  if (std::filesystem::exists(target, ignored) && !std::filesystem::is_regular_file(target, ignored))
    throw Failure(ExitStatus::kWrongUsage, path + " exists and is not a regular file");
  if (convert::IsPartOf(source, path))
    throw Failure(ExitStatus::kWrongUsage, path + " is a part of the source");
}

void StandardOutput::Write(std::string_view bytes) {
  std::string error;
  const WriteResult result = WriteStream(Stream::kOutput, bytes, error);
  if (result == WriteResult::kWritten) return;
  if (result == WriteResult::kInterrupted) throw source::Cancelled();
  if (result == WriteResult::kReaderGone) error = "its reader is gone";
  throw convert::Error(convert::ErrorKind::kTargetUnwritable,
                       "cannot write to standard output (" + error + ")");
}

}  // namespace zrml::tool
